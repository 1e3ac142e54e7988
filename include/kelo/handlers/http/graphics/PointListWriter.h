#pragma once

#include <google/protobuf/message.h>

#include <initializer_list>
#include <string>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/handlers/http/graphics/GraphicsColumns.h"

namespace halvor::kelo {

// The replies of the graphs of many points, written straight from the decoded numbers instead of
// a Point message (with two wrapper messages) per entry. A graph's message is given as its lists
// of points and `rest`, the message with every other member set and the lists left empty; the
// text and the bytes are exactly what protobuf's JSON printer and serialiser give for the whole
// message, every point a Point with y and x set. The lists' field numbers must lie below those of
// every member of `rest`, as in every graph: both forms put the members in field number order.
class PointListWriter {
 public:
  PointListWriter() = delete;

  // One list of points: the field of the graph's message it fills (a repeated Point) and its
  // numbers.
  struct List {
    int fieldNumber;
    const PointColumns& points;
  };

  // The JSON text, as the shared print options print the whole message.
  static std::string json(std::initializer_list<List> lists, const google::protobuf::Message& rest);
  // The binary form, as the WebSocket pushes serialise the whole message.
  static std::string wire(std::initializer_list<List> lists, const google::protobuf::Message& rest);

  // The whole message, for what the direct text cannot print (numbers that are not finite).
  static void fill(std::initializer_list<List> lists, google::protobuf::Message& whole);

 private:
  static bool tryAppendJson(const PointColumns& points, std::string& out);
  static void appendWire(int fieldNumber, const PointColumns& points, std::string& out);
};

}  // namespace halvor::kelo
