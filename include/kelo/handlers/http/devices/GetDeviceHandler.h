#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// GET "/1/api/devices/{deviceGUID}": the device that the GUID names, taken apart at its first
// "-". The host is not asked: any text gives an answer, whether such a device exists or not.
class GetDeviceHandler : public web::HttpController<GetDeviceHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(getDevice, "/api/devices/{deviceGUID}", web::Get)
  KELO_ROUTES_END

  virtual void getDevice(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                         std::string sessionId, std::string deviceGuid);
};

}  // namespace halvor::kelo
