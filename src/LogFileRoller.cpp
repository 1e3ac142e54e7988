#include "kelo/LogFileRoller.h"

#include <easylogging++.h>

#include <cstdio>

namespace halvor::kelo {

void LogFileRoller::install() {
  // Without the flag the library checks the size only when a logger is flushed by hand.
  el::Loggers::addFlag(el::LoggingFlag::StrictLogFileSizeCheck);
  el::Helpers::installPreRollOutCallback(&LogFileRoller::rollOut);
}

// Oldest first, so that no rename lands on a file that still has to move. The library calls
// this under its own lock, and then truncates `fileName`, which by then is gone: it starts
// empty.
void LogFileRoller::rollOut(const char* fileName, std::size_t) {
  const std::string current(fileName);
  std::remove(rolledName(current, kKeptFiles - 1).c_str());
  for (int index = kKeptFiles - 2; index >= 1; --index) {
    std::rename(rolledName(current, index).c_str(), rolledName(current, index + 1).c_str());
  }
  std::rename(current.c_str(), rolledName(current, 1).c_str());
}

std::string LogFileRoller::rolledName(const std::string& fileName, int index) {
  return fileName + "." + std::to_string(index);
}

}  // namespace halvor::kelo
