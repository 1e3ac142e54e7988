#pragma once

#include <cstddef>
#include <string>

namespace halvor::kelo {

// The plug-in's log file rolls when it reaches the size the log configuration gives with
// MAX_LOG_FILE_SIZE (the logging library's own setting; 0 or absent: it never rolls). The full
// file becomes "<name>.1", the one before "<name>.2" and so on; with the current file, at most
// kKeptFiles files stay, so that a flood of lines cannot fill the disk.
class LogFileRoller {
 public:
  static constexpr int kKeptFiles = 5;

  // Makes the logging library check the size on every line and roll with rollOut.
  static void install();
  // Called by the logging library, with the full file `fileName` closed, just before it starts
  // the file anew.
  static void rollOut(const char* fileName, std::size_t size);
  // "<fileName>.<index>".
  static std::string rolledName(const std::string& fileName, int index);
};

}  // namespace halvor::kelo
