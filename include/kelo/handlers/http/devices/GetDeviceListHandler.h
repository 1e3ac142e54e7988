#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/devices": every device of the transmitter as a DeviceList, walking "/device/list"
// (one path per device name) and "/device/<name>/list" (one path per device of that name).
class GetDeviceListHandler : public web::KeloHttpController<GetDeviceListHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/devices", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
