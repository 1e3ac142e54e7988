#include "sim/models/MeterTree.h"

#include <cstdint>
#include <cstdio>

namespace halvor::sim {

namespace {

using Kind = MeterDefinition::Kind;

MeterDefinition number(std::string path, std::string label, std::string units, double nominal,
                       double step, double min, double max, int digits) {
  MeterDefinition meter;
  meter.path = std::move(path);
  meter.label = std::move(label);
  meter.units = std::move(units);
  meter.kind = Kind::Double;
  meter.nominal = nominal;
  meter.step = step;
  meter.min = min;
  meter.max = max;
  meter.digitsToDisplay = digits;
  return meter;
}

MeterDefinition count(std::string path, std::string label, std::string units, int nominal, int step,
                      int min, int max) {
  MeterDefinition meter =
      number(std::move(path), std::move(label), std::move(units), nominal, step, min, max, 0);
  meter.kind = Kind::Int32;
  return meter;
}

MeterDefinition status(std::string path, std::string label, bool flag) {
  MeterDefinition meter = number(std::move(path), std::move(label), "", 0, 0, 0, 1, 0);
  meter.kind = Kind::Bool;
  meter.flag = flag;
  return meter;
}

MeterDefinition text(std::string path, std::string label, std::string value) {
  MeterDefinition meter = number(std::move(path), std::move(label), "", 0, 0, 0, 0, 0);
  meter.kind = Kind::Text;
  meter.text = std::move(value);
  return meter;
}

MeterDefinition ofDevice(MeterDefinition meter, std::string name, std::string id) {
  meter.deviceName = std::move(name);
  meter.deviceId = std::move(id);
  return meter;
}

// Names the device of every meter of the group that names none yet.
MeterGroupDefinition ofDevice(MeterGroupDefinition group, const std::string& name,
                              const std::string& id) {
  for (MeterDefinition& meter : group.meters) {
    if (meter.deviceName.empty()) meter = ofDevice(std::move(meter), name, id);
  }
  return group;
}

MeterCollectionDefinition rfOutput() {
  const std::string g = "/meters/rf/output";
  MeterGroupDefinition output{
      g,
      "Transmitter output",
      {number(g + "/forwardPower", "Forward power", "W", 5000, 15, 0, 6000, 0),
       number(g + "/reflectedPower", "Reflected power", "W", 40, 2, 0, 500, 1),
       number(g + "/vswr", "VSWR", "", 1.18, 0.01, 1, 3, 2),
       number(g + "/efficiency", "Efficiency", "%", 72, 0.3, 0, 100, 1),
       number(g + "/powerConsumption", "Power consumption", "kW", 6.9, 0.03, 0, 10, 2),
       ofDevice(number(g + "/frequency", "Frequency", "MHz", 98.1, 0.0002, 87.5, 108, 2), "exciter",
                "1"),
       status(g + "/rfOn", "RF on", true), text(g + "/operatingMode", "Operating mode", "Normal")}};
  // The output as a whole belongs to the amplifier chain, not to one amplifier.
  output = ofDevice(output, "amplifier", "");
  return {"/meters/rf/list", "RF output", {output}};
}

MeterGroupDefinition exciter(int n) {
  const std::string id = std::to_string(n);
  const std::string g = "/meters/exciters/exciter" + id;
  return ofDevice({g,
                   "Exciter " + id,
                   {number(g + "/outputPower", "Output power", "W", 30, 0.2, 0, 50, 1),
                    number(g + "/temperature", "Temperature", "\u00b0C", 38, 0.2, 0, 90, 1),
                    number(g + "/supplyVoltage", "Supply voltage", "V", 28, 0.05, 0, 32, 2),
                    status(g + "/pllLocked", "PLL locked", true),
                    count(g + "/gps/satellites", "GPS satellites", "", 9, 1, 0, 16)}},
                  "exciter", id);
}

MeterGroupDefinition amplifier(int n) {
  const std::string id = std::to_string(n);
  const std::string g = "/meters/amplifiers/amplifier" + id;
  MeterGroupDefinition group{
      g, "Amplifier " + id, {number(g + "/outputPower", "Output power", "W", 1250, 5, 0, 1600, 0)}};
  for (const std::string module : {"1", "2"}) {
    const std::string m = g + "/module" + module;
    group.meters.push_back(
        number(m + "/voltage", "Module " + module + " PA voltage", "V", 48, 0.1, 0, 55, 1));
    group.meters.push_back(
        number(m + "/current", "Module " + module + " PA current", "A", 14, 0.1, 0, 25, 1));
    group.meters.push_back(number(m + "/temperature", "Module " + module + " temperature",
                                  "\u00b0C", 52, 0.2, 0, 100, 1));
  }
  group.meters.push_back(
      number(g + "/temperature/inlet", "Inlet temperature", "\u00b0C", 28, 0.1, 0, 70, 1));
  group.meters.push_back(
      number(g + "/temperature/heatsink", "Heatsink temperature", "\u00b0C", 55, 0.2, 0, 100, 1));
  group.meters.push_back(status(g + "/ok", "Amplifier OK", true));
  return ofDevice(group, "amplifier", id);
}

MeterGroupDefinition powerSupply(int n) {
  const std::string id = std::to_string(n);
  const std::string g = "/meters/powersupplies/powersupply" + id;
  return ofDevice(
      {g,
       "Power supply " + id,
       {number(g + "/acVoltage", "AC voltage", "V", 400, 1, 0, 480, 0),
        number(g + "/dcVoltage", "DC voltage", "V", 50, 0.05, 0, 56, 1),
        number(g + "/current", "Current", "A", 60, 0.4, 0, 120, 1),
        number(g + "/temperature", "Temperature", "\u00b0C", 45, 0.2, 0, 100, 1),
        status(g + "/ok", "Power supply OK", true), text(g + "/state", "State", "Running")}},
      "powersupply", id);
}

MeterGroupDefinition fan(int n) {
  const std::string id = std::to_string(n);
  const std::string g = "/meters/fans/fan" + id;
  return ofDevice({g,
                   "Fan " + id,
                   {count(g + "/speed", "Speed", "rpm", 3200, 15, 0, 6000),
                    number(g + "/current", "Current", "A", 1.2, 0.01, 0, 3, 2),
                    status(g + "/running", "Running", true)}},
                  "fan", id);
}

MeterGroupDefinition stereoInput(const std::string& name, const std::string& label) {
  const std::string g = "/meters/audio/" + name;
  return {g,
          label,
          {number(g + "/left", "Left", "dBFS", -18, 1.5, -60, 0, 1),
           number(g + "/right", "Right", "dBFS", -18, 1.5, -60, 0, 1)}};
}

MeterCollectionDefinition audio() {
  const std::string g = "/meters/audio/mpx";
  MeterGroupDefinition mpx{g,
                           "MPX",
                           {number(g + "/deviation", "Total deviation", "kHz", 68, 1.5, 0, 100, 1),
                            number(g + "/pilot", "Pilot injection", "%", 9, 0.05, 0, 12, 1),
                            number(g + "/rds", "RDS injection", "%", 4, 0.05, 0, 10, 1),
                            number(g + "/power", "MPX power", "dBr", 0, 0.2, -12, 6, 1)}};
  MeterCollectionDefinition collection{
      "/meters/audio/list",
      "Audio",
      {stereoInput("analog", "Analog input"), stereoInput("aes1", "AES 1"),
       stereoInput("aes2", "AES 2"), mpx}};
  for (MeterGroupDefinition& group : collection.groups) group = ofDevice(group, "exciter", "1");
  return collection;
}

// Readings of the cabinet name no device at all.
MeterCollectionDefinition cabinet() {
  const std::string g = "/meters/cabinet/environment";
  return {
      "/meters/cabinet/list",
      "Cabinet",
      {{g,
        "Environment",
        {number(g + "/ambientTemperature", "Ambient temperature", "\u00b0C", 24, 0.1, -10, 50, 1),
         number(g + "/humidity", "Humidity", "%", 40, 0.2, 0, 100, 0),
         number(g + "/mainsFrequency", "Mains frequency", "Hz", 50, 0.01, 45, 55, 2),
         status(g + "/doorClosed", "Door closed", true)}}}};
}

template <class Make>
MeterCollectionDefinition numbered(std::string path, std::string label, int count, Make make) {
  MeterCollectionDefinition collection{std::move(path), std::move(label), {}};
  for (int n = 1; n <= count; ++n) collection.groups.push_back(make(n));
  return collection;
}

std::uint64_t fnv1a(const std::string& text, std::uint64_t hash) {
  for (unsigned char c : text) {
    hash ^= c;
    hash *= 1099511628211ULL;
  }
  return hash;
}

}  // namespace

const std::vector<MeterCollectionDefinition>& MeterTree::demo() {
  static const std::vector<MeterCollectionDefinition> tree{
      rfOutput(),
      numbered("/meters/exciters/list", "Exciters", 2, exciter),
      numbered("/meters/amplifiers/list", "Power amplifiers", 4, amplifier),
      numbered("/meters/powersupplies/list", "Power supplies", 2, powerSupply),
      numbered("/meters/fans/list", "Cooling", 4, fan),
      audio(),
      cabinet(),
      // Reserved for options the demo transmitter does not have: listed, but without meters.
      {"/meters/diagnostics/list",
       "Diagnostics",
       {{"/meters/diagnostics/reserved", "Reserved", {}}}},
  };
  return tree;
}

std::vector<const MeterDefinition*> MeterTree::meters() {
  std::vector<const MeterDefinition*> all;
  for (const MeterCollectionDefinition& collection : demo()) {
    for (const MeterGroupDefinition& group : collection.groups) {
      for (const MeterDefinition& meter : group.meters) all.push_back(&meter);
    }
  }
  return all;
}

std::string MeterTree::guidOf(const std::string& path) {
  const std::uint64_t high = fnv1a(path, 14695981039346656037ULL);
  const std::uint64_t low = fnv1a(path, high);
  char text[37];
  std::snprintf(text, sizeof text, "%08x-%04x-%04x-%04x-%012llx", static_cast<unsigned>(high >> 32),
                static_cast<unsigned>((high >> 16) & 0xffff), static_cast<unsigned>(high & 0xffff),
                static_cast<unsigned>(low >> 48),
                static_cast<unsigned long long>(low & 0xffffffffffffULL));
  return text;
}

}  // namespace halvor::sim
