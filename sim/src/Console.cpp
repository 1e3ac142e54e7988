#include "sim/Console.h"

#include <cstdio>
#include <mutex>

namespace halvor::sim {

namespace {
std::mutex& consoleMutex() {
  static std::mutex mutex;
  return mutex;
}

void writeLine(std::FILE* stream, const std::string& text) {
  std::lock_guard lock(consoleMutex());
  std::fwrite(text.data(), 1, text.size(), stream);
  std::fputc('\n', stream);
  std::fflush(stream);
}
}  // namespace

void Console::line(const std::string& text) { writeLine(stdout, text); }

void Console::errorLine(const std::string& text) { writeLine(stderr, text); }

}  // namespace halvor::sim
