#pragma once

#include <string>
#include <vector>

namespace halvor::sim {

// One meter of the demo transmitter: what it measures, how it is shown, and how its reading
// moves. Numbers drift around `nominal` by about `step` per update, never leaving [min, max].
struct MeterDefinition {
  enum class Kind { Double, Int32, Bool, Text };

  std::string path;
  std::string label;
  std::string units;
  Kind kind = Kind::Double;
  double nominal = 0.0;
  double step = 0.0;
  double min = 0.0;
  double max = 0.0;
  int digitsToDisplay = 0;
  // Empty: the meter names no device (or only a device name when deviceId is empty).
  std::string deviceName;
  std::string deviceId;
  // The reading of a Bool or Text meter.
  bool flag = false;
  std::string text;
};

// A group of meters; its meters may lie more than one level below the group's path.
struct MeterGroupDefinition {
  std::string path;
  std::string label;
  std::vector<MeterDefinition> meters;
};

// A collection; `path` ends in "/list" and its groups lie below the same folder.
struct MeterCollectionDefinition {
  std::string path;
  std::string label;
  std::vector<MeterGroupDefinition> groups;
};

// The meter tree of the demo transmitter: RF output, exciters, amplifiers, power supplies,
// cooling, audio, the cabinet, and a collection whose only group has no meters.
class MeterTree {
 public:
  MeterTree() = delete;

  static const std::vector<MeterCollectionDefinition>& demo();
  // Every meter of demo(), in list order.
  static std::vector<const MeterDefinition*> meters();
  // A stable GUID for a path, in the 8-4-4-4-12 hex form the transmitter uses.
  static std::string guidOf(const std::string& path);
};

}  // namespace halvor::sim
