#pragma once

#include <functional>
#include <string>

namespace halvor::kelo::web {

// Levels of the layer's log lines; setLogLevel(4) keeps errors only.
enum LogLevel : int { kTrace = 0, kDebug = 1, kInfo = 2, kWarn = 3, kError = 4, kFatal = 5 };

using LogSink = std::function<void(int level, const std::string& line)>;

// Where the layer's log lines go, process-wide (none by default: lines are dropped). The sink is
// called from I/O threads and must be thread safe. Set it before run().
void setLogSink(LogSink sink);
// Lines below this level are not formatted nor passed on. Default kError.
void setLogThreshold(int level);
int logThreshold();
bool logEnabled(int level);
void logLine(int level, const std::string& line);

}  // namespace halvor::kelo::web
