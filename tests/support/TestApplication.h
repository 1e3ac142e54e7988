#pragma once

#include <json/value.h>

#include "kelo/BackgroundTaskQueue.h"
#include "kelo/WebKeloInterface.h"
#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo::test {

// The process-wide application as the unit tests configure it, loaded once per test program:
// the plug-in's interface to the host and the background queue, neither started. One program
// holds tests that need the one beside tests that need the other, and loading a configuration
// replaces every plug-in of the one before: a configuration for each alone would take the
// other's plug-in away from the tests that run after.
inline void loadTestApplication() {
  static const bool loaded = [] {
    web::app().registerPluginType<WebKeloInterface>("WebKeloInterface");
    web::app().registerPluginType<BackgroundTaskQueue>("BackgroundTaskQueue");
    Json::Value root;
    root["plugins"][0]["name"] = "WebKeloInterface";
    root["plugins"][0]["config"] = Json::objectValue;
    root["plugins"][1]["name"] = "BackgroundTaskQueue";
    root["plugins"][1]["config"] = Json::objectValue;
    web::app().loadConfigJson(root);
    return true;
  }();
  (void)loaded;
}

}  // namespace halvor::kelo::test
