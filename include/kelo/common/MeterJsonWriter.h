#pragma once

#include <google/protobuf/message.h>

#include <string>

#include "halvor/protobuf/Monitoring.pb.h"

namespace halvor::kelo {

// Prints the meter tree (MeterCollectionList, MeterCollection, MeterGroup, Meter) as JSON,
// character for character as JsonOptions::print() prints it with protobuf's printer, with the
// messages' own accessors: the dashboard prints about a hundred meters per request, which costs
// protobuf's printer, and a walk by reflection still, several times what reading them costs.
// Members come in field number order, members at their default left out, wrappers as bare
// values; a meter's reading goes to ResourceJsonWriter. Like MessageJsonWriter, whose rules and
// nesting limit it follows, it gives up (false, out unspecified) where protobuf's printer is
// needed: unknown fields, texts that need other escapes, non-finite numbers, readings nested too
// deeply.
class MeterJsonWriter {
 public:
  MeterJsonWriter() = delete;

  // Each appends the message's text to out; depth is the number of messages around it.
  static bool tryPrint(const protobuf::MeterCollectionList& list, int depth, std::string& out);
  static bool tryPrint(const protobuf::MeterCollection& collection, int depth, std::string& out);
  static bool tryPrint(const protobuf::MeterGroup& group, int depth, std::string& out);
  static bool tryPrint(const protobuf::Meter& meter, int depth, std::string& out);

 private:
  // Writes ',' before every member but the first of an object.
  class Members {
   public:
    explicit Members(std::string& out) : out_(out) {}
    std::string& next(const char* quotedNameAndColon);

   private:
    std::string& out_;
    bool first_ = true;
  };

  static bool tryPrint(const protobuf::Device& device, std::string& out);
  static bool writeText(const google::protobuf::StringValue& text, std::string& out);
  static bool writeNumber(const google::protobuf::DoubleValue& number, std::string& out);
  static bool writeNumber(const google::protobuf::Int32Value& number, std::string& out);
};

}  // namespace halvor::kelo
