#include "kelo/handlers/http/meters/GetMetersDashboard.h"

#include <utility>

#include "halvor/factories/MonitoringFactories.h"
#include "kelo/handlers/http/meters/MeterEndpointHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetMetersDashboard::processHttpRequest(const web::HttpRequestPtr& req,
                                            web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                            tavelabi::IPluginInfo* info, std::string sessionId) {
  // Listing resources is the plug-in's own business, so the list runs under its own session;
  // the collections are then read under the client's, with the client's rights.
  KeloResourceAction list(tavelabi::CCRUD::Command, "/resource/list",
                          tavelabi::Resource("value", tavelabi::ResourceValue("/meters/**/list")),
                          info, info->getSessionId(), req);
  const tavelabi::Resource paths = tavel->processResourceAction(list);

  protobuf::HalvorPbFactory2MeterCollectionList collections;
  for (const tavelabi::ResourceValue& path : paths.values.at("value").getListValue()) {
    *collections.overrides().add_collections() =
        std::move(*MeterEndpointHelperClass::getCurrentMeterCollectionInfo(
            req, tavel, info, path.getStringValue(), sessionId, false));
  }
  JsonReplies::reply(resp, *collections.release(nullptr));
}

}  // namespace halvor::kelo
