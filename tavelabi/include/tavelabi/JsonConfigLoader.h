#pragma once

#include <json/value.h>

#include <string>

namespace halvor::tavelabi {

class JsonConfigLoader {
 public:
  // Reads a JSON file (comments allowed). A file that cannot be opened throws
  // JsonParserException, a text that does not parse BadlyFormedJsonStringException; both
  // name the file.
  static Json::Value loadJsonConfigFile(std::string path);
};

}  // namespace halvor::tavelabi
