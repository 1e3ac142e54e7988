// The JSON printing of the dashboard alone: a MeterCollectionList of one collection, 4 groups
// and 100 meters shaped like the demo's (a Double reading, units, a quarter of them "°C",
// limits, label, digits and device), printed by JsonOptions::toJson (the shared walk) and by
// protobuf's printer (JsonOptions::protobufJson), each on its own. Prints the CPU time per print of
// each, and whether both texts are equal.
//
// Usage: bench-monitoring-print [ROUNDS]   (default 2000; protobuf's printer gets a tenth)
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <string>

#include "halvor/protobuf/Monitoring.pb.h"
#include "kelo/common/JsonOptions.h"

namespace {

using halvor::protobuf::MeterCollectionList;

MeterCollectionList demoShapedList() {
  MeterCollectionList list;
  auto& collection = *list.add_collections();
  collection.mutable_path()->set_value("/meters/main/list");
  collection.mutable_label()->set_value("Main");
  for (int g = 0; g < 4; ++g) {
    auto& group = *collection.add_groups();
    group.mutable_guid()->set_value("group-" + std::to_string(g));
    group.mutable_path()->set_value("/meters/main/group" + std::to_string(g));
    group.mutable_label()->set_value("Group " + std::to_string(g));
    for (int m = 0; m < 25; ++m) {
      auto& meter = *group.add_meters();
      const std::string name = "meter" + std::to_string(g * 25 + m);
      meter.mutable_guid()->set_value(name);
      meter.mutable_path()->set_value("/meters/main/group" + std::to_string(g) + "/" + name);
      auto& reading = (*meter.mutable_value()->mutable_values())["value"];
      reading.mutable_doublevalue()->set_value(123.456 + m * 0.37);
      reading.set_type(halvor::protobuf::ResourceValue::DOUBLE);
      meter.mutable_units()->set_value(g == 3 ? "\u00b0C" : "dBm");
      meter.mutable_min()->set_value(0);
      meter.mutable_max()->set_value(1000);
      meter.mutable_label()->set_value("Forward power " + std::to_string(m));
      meter.mutable_digitstodisplay()->set_value(1);
      meter.mutable_device()->mutable_name()->set_value("Exciter");
      meter.mutable_device()->mutable_guid()->set_value("Exciter1");
    }
  }
  return list;
}

template <class Print>
double cpuMicrosecondsPerPrint(int rounds, Print print) {
  const std::clock_t start = std::clock();
  for (int i = 0; i < rounds; ++i) print();
  return 1e6 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / rounds;
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 2000;
  const MeterCollectionList list = demoShapedList();
  std::string walked = halvor::kelo::JsonOptions::toJson(list);
  std::string printed = halvor::kelo::JsonOptions::protobufJson(list);
  const double walk =
      cpuMicrosecondsPerPrint(rounds, [&] { walked = halvor::kelo::JsonOptions::toJson(list); });
  const double protobuf = cpuMicrosecondsPerPrint(
      rounds / 10 + 1, [&] { printed = halvor::kelo::JsonOptions::protobufJson(list); });
  std::cout << "100 meters, " << walked.size() << " bytes: toJson " << walk
            << " us, protobuf's printer " << protobuf << " us CPU per print, texts "
            << (walked == printed ? "equal" : "DIFFER") << std::endl;
  return walked == printed ? 0 : 1;
}
