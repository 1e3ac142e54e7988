#pragma once

#include <string>
#include <vector>

#include "kelo/common/MeterReadings.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// Prints a meter tree as read from the host (collections, groups, meters) as the JSON of the
// MeterCollectionList that the meter factories would make of it, character for character, but
// straight from the host's resources: the dashboard reads about a hundred meters per request,
// and making, printing and destroying their messages cost more than reading them.
//
// It prints only what it knows to be plain: a resource whose every key the factories read has
// the type they take (texts STRING, "min" and "max" FLOAT, DOUBLE or INT32, "digitsToDisplay"
// INT32, a meter's "value" a BOOL, FLOAT, DOUBLE, INT32 or STRING, "deviceId" only beside a
// "deviceName", both STRING). Anything else (a resource the factories would refuse, a text or
// number that JsonText leaves to protobuf's printer) is left to the message path: the isPlain
// checks say false, tryPrint gives up.
class MeterResourceJsonWriter {
 public:
  MeterResourceJsonWriter() = delete;

  // True when the resource is plain, as above: the factories take it without an error.
  static bool isPlainMeter(const tavelabi::Resource& meter);
  static bool isPlainGroup(const tavelabi::Resource& group);
  static bool isPlainCollection(const tavelabi::Resource& collection);

  // Appends the MeterCollectionList's JSON of the plain tree to out; false, with out in an
  // unspecified state, where the message path is needed.
  static bool tryPrint(const std::vector<MeterCollectionReading>& collections, std::string& out);

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

  // The values of the keys the factories read, found in one pass over the resource.
  struct Keys {
    const tavelabi::ResourceValue* guid = nullptr;
    const tavelabi::ResourceValue* path = nullptr;
    const tavelabi::ResourceValue* value = nullptr;
    const tavelabi::ResourceValue* units = nullptr;
    const tavelabi::ResourceValue* min = nullptr;
    const tavelabi::ResourceValue* max = nullptr;
    const tavelabi::ResourceValue* label = nullptr;
    const tavelabi::ResourceValue* digitsToDisplay = nullptr;
    const tavelabi::ResourceValue* deviceName = nullptr;
    const tavelabi::ResourceValue* deviceId = nullptr;
  };

  static Keys keysOf(const tavelabi::Resource& resource);
  static bool isPlainMeter(const Keys& keys);
  static bool isPlainGroup(const Keys& keys);
  static bool isPlainCollection(const Keys& keys);
  static bool printCollection(const MeterCollectionReading& collection, std::string& out);
  static bool printGroup(const MeterGroupReading& group, std::string& out);
  static bool printMeter(const tavelabi::Resource& meter, std::string& out);
  static bool printReading(const tavelabi::ResourceValue& reading, std::string& out);
  static bool printDevice(const Keys& keys, std::string& out);
  // The member as a text or a number, when the resource has its key (value not nullptr).
  static bool printText(const tavelabi::ResourceValue* value, const char* quotedNameAndColon,
                        Members& members);
  static bool printNumber(const tavelabi::ResourceValue* value, const char* quotedNameAndColon,
                          Members& members);
};

}  // namespace halvor::kelo
