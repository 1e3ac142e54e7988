#pragma once

#include <json/reader.h>

#include <memory>
#include <string>

#include "halvor/protobuf/Resource.pb.h"

namespace halvor::kelo::test {

// Resources for the tests of nesting depth and key order.
class NestedResources {
 public:
  NestedResources() = delete;

  enum class Through { Lists, Maps, Both };

  // One value "deep" that is `depth` values deep: lists or maps of one element each (taking
  // turns for Both) around an innermost string, whose wrapper is one more nested message.
  static protobuf::Resource deep(int depth, Through through) {
    protobuf::Resource message;
    protobuf::ResourceValue* value = &(*message.mutable_values())["deep"];
    for (int level = 1; level < depth; ++level) {
      const bool list = through == Through::Lists || (through == Through::Both && level % 2 == 1);
      value->set_type(list ? protobuf::ResourceValue::LIST_VALUE
                           : protobuf::ResourceValue::MAP_VALUE);
      value = list ? value->add_listvalue() : &(*value->mutable_mapvalue())["k"];
    }
    value->set_type(protobuf::ResourceValue::STRING);
    value->mutable_stringvalue()->set_value("bottom");
    return message;
  }

  // Integer values under `keys`, inserted in the order given, at the top and again in a map
  // value "nested".
  static protobuf::Resource keyed(const std::string& keys) {
    protobuf::Resource message;
    auto& values = *message.mutable_values();
    protobuf::ResourceValue& nested = values["nested"];
    nested.set_type(protobuf::ResourceValue::MAP_VALUE);
    for (const char key : keys) {
      values[std::string(1, key)] = integer(key);
      (*nested.mutable_mapvalue())[std::string(1, key)] = integer(key);
    }
    return message;
  }

  // Whether text is one whole JSON document (jsoncpp follows far deeper nesting than protobuf).
  static bool isJson(const std::string& text) {
    Json::CharReaderBuilder builder;
    builder["failIfExtra"] = true;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value root;
    std::string errors;
    return reader->parse(text.data(), text.data() + text.size(), &root, &errors);
  }

  static protobuf::ResourceValue integer(int number) {
    protobuf::ResourceValue value;
    value.set_type(protobuf::ResourceValue::INT32);
    value.mutable_intvalue()->set_value(number);
    return value;
  }
};

}  // namespace halvor::kelo::test
