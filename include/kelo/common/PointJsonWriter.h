#pragma once

#include <google/protobuf/reflection.h>

#include <string>

#include "halvor/protobuf/Graphics.pb.h"

namespace halvor::kelo {

// Prints the plotted pairs of the graphics messages, thousands at a time, with the messages' own
// accessors instead of reflection, character for character as protobuf's printer does: each
// point an object with "y" and then "x", a member that is set printed as its bare number, also
// when it is 0, a member that is not set left out. What it leaves to protobuf's printer (false,
// out in an unspecified state): unknown fields and numbers that are not finite.
class PointJsonWriter {
 public:
  PointJsonWriter() = delete;

  // The list as a JSON array. `depth` is the nesting of the points themselves.
  static bool tryPrint(const google::protobuf::RepeatedFieldRef<protobuf::Point>& points, int depth,
                       std::string& out);
  static bool tryPrint(const protobuf::Point& point, int depth, std::string& out);
};

}  // namespace halvor::kelo
