#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/alarms": every alarm of the transmitter, list by list: the plug-in's own session asks
// the host which alarm lists there are ("/alarms/**/list"), then each list and each alarm is read
// under the client's session. An alarm listed twice appears twice.
class GetAllAlarms : public web::KeloHttpController<GetAllAlarms, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/alarms", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
