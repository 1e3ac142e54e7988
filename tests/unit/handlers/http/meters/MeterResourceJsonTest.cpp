#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "halvor/factories/MonitoringFactories.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/common/MeterResourceJsonWriter.h"
#include "kelo/handlers/http/meters/MeterEndpointHelperClass.h"
#include "unit/common/HostValues.h"

namespace halvor::kelo {
namespace {

using Helper = MeterEndpointHelperClass;
using Writer = MeterResourceJsonWriter;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::HostValues;

// Random host resources of a meter tree: each key absent, of the type the factories take (most
// often), or of another type; texts and numbers with the odd cases of JSON printing.
class RandomMeterTree {
 public:
  explicit RandomMeterTree(unsigned seed, int wrongTypePercent)
      : random_(seed), wrongTypePercent_(wrongTypePercent) {}

  Resource meter() {
    Resource meter;
    maybe(meter, "guid", [&] { return text(); });
    maybe(meter, "path", [&] { return text(); });
    maybe(meter, "value", [&] { return reading(); });
    maybe(meter, "units", [&] { return text(); });
    maybe(meter, "min", [&] { return number(); });
    maybe(meter, "max", [&] { return number(); });
    maybe(meter, "label", [&] { return text(); });
    maybe(meter, "digitsToDisplay", [&] { return ResourceValue(integer()); });
    maybe(meter, "deviceName", [&] { return text(); });
    maybe(meter, "deviceId", [&] { return text(); });
    maybe(meter, "extra", [&] { return text(); });
    return meter;
  }

  Resource group() {
    Resource group;
    for (const char* key : {"guid", "path", "label", "extra"}) {
      maybe(group, key, [&] { return text(); });
    }
    return group;
  }

  Resource collection() {
    Resource collection;
    for (const char* key : {"path", "label", "extra"}) {
      maybe(collection, key, [&] { return text(); });
    }
    return collection;
  }

  std::vector<MeterCollectionReading> tree() {
    std::vector<MeterCollectionReading> collections(below(4));
    for (MeterCollectionReading& collection : collections) {
      collection.collection = this->collection();
      collection.groups.resize(below(4));
      for (MeterGroupReading& group : collection.groups) {
        group.group = this->group();
        group.meters.resize(below(5));
        for (Resource& meter : group.meters) meter = this->meter();
      }
    }
    return collections;
  }

 private:
  unsigned below(unsigned bound) { return random_() % bound; }

  // The key is absent one time in four; otherwise a value of the right type, or now and then
  // one of any other type.
  template <typename Make>
  void maybe(Resource& resource, const char* key, const Make& make) {
    if (below(4) == 0) return;
    resource.values[key] = static_cast<int>(below(100)) < wrongTypePercent_ ? anyValue() : make();
  }

  // Texts and numbers: mostly ordinary ones, one in twenty-five with the odd cases of JSON
  // printing (escapes, control characters, three-byte and broken UTF-8, non-finite numbers).
  bool odd() { return below(25) == 0; }

  ResourceValue text() {
    static const std::vector<std::string> kTexts = {"",
                                                    "W",
                                                    "dBm",
                                                    "Forward power",
                                                    "\xc2\xb0"  // with the next line: "°C" in UTF-8
                                                    "C",
                                                    "a\"b\\c",
                                                    "<&>'",
                                                    "/meters/transmitter/amplifier/1/forward",
                                                    std::string(40, 'x')};
    static const std::vector<std::string> kOddTexts = {"tab\there",    "line\nnext", "\x01", "\x7f",
                                                       "\xe6\x97\xa5", "\xff\xfe",   "\xc2"};
    const std::vector<std::string>& texts = odd() ? kOddTexts : kTexts;
    return ResourceValue(texts[below(texts.size())]);
  }

  double plainNumber() {
    static const std::vector<double> kNumbers = {0.0,  -0.0, 2.25,          -17.5, 6000.0, 0.1,
                                                 1e-7, 1e21, 123456789.123, 1e300, 1e-300};
    static const std::vector<double> kOddNumbers = {
        std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
        -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::denorm_min()};
    const std::vector<double>& numbers = odd() ? kOddNumbers : kNumbers;
    return numbers[below(numbers.size())];
  }

  // A float of the number, its largest where the number is beyond a float's range.
  float floatOf(double number) {
    const double largest = std::numeric_limits<float>::max();
    if (std::isfinite(number) && std::fabs(number) > largest) {
      return static_cast<float>(std::copysign(largest, number));
    }
    return static_cast<float>(number);
  }

  int integer() {
    static const std::vector<int> kIntegers = {
        0, 1, -5, 3, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()};
    return kIntegers[below(kIntegers.size())];
  }

  // A number as the factories take it for a DoubleValue: FLOAT, DOUBLE or INT32.
  ResourceValue number() {
    switch (below(3)) {
      case 0:
        return HostValues::floatValue(floatOf(plainNumber()));
      case 1:
        return ResourceValue(plainNumber());
      default:
        return ResourceValue(integer());
    }
  }

  ResourceValue reading() {
    switch (below(5)) {
      case 0:
        return ResourceValue(below(2) == 0);
      case 1:
        return text();
      default:
        return number();
    }
  }

  ResourceValue anyValue() {
    switch (below(9)) {
      case 0:
        return ResourceValue();
      case 1:
        return ResourceValue(below(2) == 1);
      case 2:
        return HostValues::floatValue(0.5f);
      case 3:
        return ResourceValue(plainNumber());
      case 4:
        return ResourceValue(integer());
      case 5:
        return text();
      case 6:
        return HostValues::bytesValue({1, 2, 255});
      case 7:
        return ResourceValue(std::vector<std::string>{"a", "b"});
      default:
        return ResourceValue(ResourceValue::Map{{"k", ResourceValue(1.5)}});
    }
  }

  std::mt19937 random_;
  int wrongTypePercent_;
};

// The answer of the message path: the messages made by the factories, printed with the shared
// print options.
std::string messageJson(std::vector<MeterCollectionReading> collections) {
  protobuf::HalvorPbFactory2MeterCollectionList list;
  for (MeterCollectionReading& collection : collections) {
    *list.overrides().add_collections() = std::move(*Helper::toMessage(std::move(collection)));
  }
  return JsonOptions::toJson(*list.release(nullptr));
}

bool converts(const Resource& meter) {
  try {
    Helper::convertMeterToHalvorPbMeter(meter);
    return true;
  } catch (...) {
    return false;
  }
}

template <typename Factory>
bool builds(Resource resource) {
  try {
    Factory().build(&resource);
    return true;
  } catch (...) {
    return false;
  }
}

TEST(MeterResourceJsonTest, AMeterIsPlainExactlyWhenItsFactoryTakesItAndItsReadingIsAScalar) {
  RandomMeterTree random(1, 15);
  int plain = 0;
  int refused = 0;
  for (int i = 0; i < 20000; ++i) {
    const Resource meter = random.meter();
    const auto reading = meter.values.find("value");
    const bool scalarReading =
        reading == meter.values.end() ||
        (reading->second.getType() != tavelabi::ResourceValueType::UNSPECIFIED_RESOURCE_TYPE &&
         reading->second.getType() != tavelabi::ResourceValueType::UINT8_ARRAY &&
         reading->second.getType() != tavelabi::ResourceValueType::LIST_VALUE &&
         reading->second.getType() != tavelabi::ResourceValueType::MAP_VALUE);
    const bool taken = converts(meter);
    EXPECT_EQ(taken && scalarReading, Writer::isPlainMeter(meter));
    plain += Writer::isPlainMeter(meter) ? 1 : 0;
    refused += taken ? 0 : 1;
  }
  EXPECT_GT(plain, 1000);
  EXPECT_GT(refused, 1000);
}

TEST(MeterResourceJsonTest, AGroupOrCollectionIsPlainExactlyWhenItsFactoryTakesIt) {
  RandomMeterTree random(2, 15);
  int plain = 0;
  for (int i = 0; i < 5000; ++i) {
    const Resource group = random.group();
    EXPECT_EQ(builds<protobuf::HalvorPbFactory2MeterGroup>(group), Writer::isPlainGroup(group));
    const Resource collection = random.collection();
    EXPECT_EQ(builds<protobuf::HalvorPbFactory2MeterCollection>(collection),
              Writer::isPlainCollection(collection));
    plain += Writer::isPlainGroup(group) ? 1 : 0;
  }
  EXPECT_GT(plain, 1000);
  EXPECT_LT(plain, 4900);
}

TEST(MeterResourceJsonTest, RandomPlainTreesPrintAsTheirMessagesPrint) {
  RandomMeterTree random(3, 0);
  int printed = 0;
  int leftToMessages = 0;
  for (int i = 0; i < 5000; ++i) {
    const std::vector<MeterCollectionReading> tree = random.tree();
    std::string json;
    if (Writer::tryPrint(tree, json)) {
      ASSERT_EQ(messageJson(tree), json) << "tree " << i;
      ++printed;
    } else {
      ++leftToMessages;
    }
  }
  // Both ways are taken often: texts and numbers that protobuf's printer must print are common
  // in these trees, and so are trees without them.
  EXPECT_GT(printed, 500);
  EXPECT_GT(leftToMessages, 500);
}

TEST(MeterResourceJsonTest, TreesOfOrdinaryMetersAreAlwaysPrintedDirectly) {
  std::vector<MeterCollectionReading> tree(2);
  tree[0].collection = Resource("label", ResourceValue(std::string("Transmitter")));
  tree[0].collection.values["path"] = ResourceValue(std::string("/meters/tx/list"));
  tree[0].groups.resize(1);
  tree[0].groups[0].group = Resource("guid", ResourceValue(std::string("g-1")));
  Resource meter("value", ResourceValue(47.125));
  meter.values["guid"] = ResourceValue(std::string("m-1"));
  meter.values["label"] = ResourceValue(std::string("Temperature"));
  meter.values["units"] =
      ResourceValue(std::string("\xc2\xb0"
                                "C"));
  meter.values["min"] = ResourceValue(-20);
  meter.values["max"] = HostValues::floatValue(85.5f);
  meter.values["digitsToDisplay"] = ResourceValue(1);
  meter.values["deviceName"] = ResourceValue(std::string("exciter"));
  meter.values["deviceId"] = ResourceValue(std::string("2"));
  tree[0].groups[0].meters = {meter, Resource(), Resource("value", ResourceValue(false))};
  std::string json;
  ASSERT_TRUE(Writer::tryPrint(tree, json));
  EXPECT_EQ(json, R"({"collections":[{"path":"/meters/tx/list","label":"Transmitter","groups":[)"
                  R"({"guid":"g-1","meters":[{"guid":"m-1","value":{"values":{"value":)"
                  R"({"doubleValue":47.125,"type":"DOUBLE"}}},"units":"°C","min":-20,"max":85.5,)"
                  R"("label":"Temperature","digitsToDisplay":1,"device":{"guid":"exciter2",)"
                  R"("name":"exciter"}},{"device":{}},{"value":{"values":{"value":)"
                  R"({"boolValue":false,"type":"BOOL"}}},"device":{}}]}]},{}]})");
  EXPECT_EQ(messageJson(tree), json);
}

TEST(MeterResourceJsonTest, ATreeWithAResourceTheFactoriesRefuseIsNotPrinted) {
  std::vector<MeterCollectionReading> tree(1);
  tree[0].groups.resize(1);
  tree[0].groups[0].meters = {Resource("min", ResourceValue(std::string("low")))};
  std::string json;
  EXPECT_FALSE(Writer::tryPrint(tree, json));
  tree[0].groups[0].meters = {Resource("deviceId", ResourceValue(std::string("7")))};
  EXPECT_FALSE(Writer::tryPrint(tree, json));
  tree[0].groups[0].meters.clear();
  tree[0].groups[0].group = Resource("label", ResourceValue(3));
  EXPECT_FALSE(Writer::tryPrint(tree, json));
  tree[0].groups[0].group = Resource();
  tree[0].collection = Resource("path", ResourceValue(true));
  EXPECT_FALSE(Writer::tryPrint(tree, json));
}

}  // namespace
}  // namespace halvor::kelo
