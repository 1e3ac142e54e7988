#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// PUT "/1/api/command": runs the command at the query's path with the body's resource and answers
// the host's answer as JSON, with no content type of its own.
class CommandHandler : public web::KeloHttpController<CommandHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/command", web::Put)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
