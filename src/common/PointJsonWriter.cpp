#include "kelo/common/PointJsonWriter.h"

#include "kelo/common/JsonText.h"
#include "kelo/common/MessageJsonWriter.h"
#include "kelo/common/UnknownFields.h"

namespace halvor::kelo {

namespace {

// About the length of a point's text, so that a long list is not copied as its text grows.
constexpr std::size_t kPointText = 32;

}  // namespace

bool PointJsonWriter::tryPrint(const google::protobuf::RepeatedFieldRef<protobuf::Point>& points,
                               int depth, std::string& out) {
  out.reserve(out.size() + static_cast<std::size_t>(points.size()) * kPointText);
  out += '[';
  bool first = true;
  for (const protobuf::Point& point : points) {
    if (!first) {
      out += ',';
    }
    first = false;
    if (!tryPrint(point, depth, out)) {
      return false;
    }
  }
  out += ']';
  return true;
}

bool PointJsonWriter::tryPrint(const protobuf::Point& point, int depth, std::string& out) {
  // A point holds wrappers, one level deeper.
  if (depth + 1 > MessageJsonWriter::kMaxNesting || UnknownFields::any(point)) {
    return false;
  }
  out += '{';
  if (point.has_y()) {
    if (UnknownFields::any(point.y())) {
      return false;
    }
    out += "\"y\":";
    if (!JsonText::appendDouble(point.y().value(), out)) {
      return false;
    }
  }
  if (point.has_x()) {
    if (UnknownFields::any(point.x())) {
      return false;
    }
    out += point.has_y() ? ",\"x\":" : "\"x\":";
    if (!JsonText::appendDouble(point.x().value(), out)) {
      return false;
    }
  }
  out += '}';
  return true;
}

}  // namespace halvor::kelo
