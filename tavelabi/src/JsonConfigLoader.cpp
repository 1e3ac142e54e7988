#include "tavelabi/JsonConfigLoader.h"

#include <json/reader.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "tavelabi/Exceptions.h"

namespace halvor::tavelabi {

namespace {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

[[noreturn]] void throwUnreadable(const std::string& path, int error) {
  throw JsonParserException("Unable to read JSON file " + path + ": " + std::strerror(error));
}

// The whole file as text; a directory or an unreadable file throws with the system's reason.
std::string readWholeFile(const std::string& path) {
  errno = 0;
  std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
  if (!file) throwUnreadable(path, errno);
  std::string text;
  char buffer[8192];
  size_t count = 0;
  while ((count = std::fread(buffer, 1, sizeof buffer, file.get())) > 0) {
    text.append(buffer, count);
  }
  if (std::ferror(file.get())) throwUnreadable(path, errno != 0 ? errno : EIO);
  return text;
}

}  // namespace

Json::Value JsonConfigLoader::loadJsonConfigFile(std::string path) {
  const std::string text = readWholeFile(path);
  Json::CharReaderBuilder builder;
  builder["allowComments"] = true;
  // Text after the closing brace is a broken file, not something to ignore silently.
  builder["failIfExtra"] = true;
  std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value root;
  std::string errors;
  if (!reader->parse(text.data(), text.data() + text.size(), &root, &errors)) {
    throw BadlyFormedJsonStringException(path + ": " + errors);
  }
  return root;
}

}  // namespace halvor::tavelabi
