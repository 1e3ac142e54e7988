#pragma once

#include <easylogging++.h>

#include <string>

// Every line of the plug-in goes to its own logger, named by IPluginInfo::getLoggerId().
// Usage: KELO_LOG(INFO, info->getLoggerId()) << "text";
#define KELO_LOG(LEVEL, loggerId) CLOG(LEVEL, std::string(loggerId).c_str())
