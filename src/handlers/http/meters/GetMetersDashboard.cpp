#include "kelo/handlers/http/meters/GetMetersDashboard.h"

#include <string>
#include <utility>
#include <vector>

#include "halvor/factories/MonitoringFactories.h"
#include "kelo/common/MeterResourceJsonWriter.h"
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

  std::vector<MeterCollectionReading> collections;
  for (const tavelabi::ResourceValue& path : paths.values.at("value").getListValue()) {
    collections.push_back(MeterEndpointHelperClass::readMeterCollection(
        req, tavel, info, path.getStringValue(), sessionId, false));
  }
  // The tree is printed straight from the host's resources; what that cannot print as the
  // messages would print goes through the messages.
  std::string json;
  if (MeterResourceJsonWriter::tryPrint(collections, json)) {
    JsonReplies::replyJson(resp, std::move(json));
    return;
  }
  protobuf::HalvorPbFactory2MeterCollectionList messages;
  for (MeterCollectionReading& collection : collections) {
    *messages.overrides().add_collections() =
        std::move(*MeterEndpointHelperClass::toMessage(std::move(collection)));
  }
  JsonReplies::reply(resp, *messages.release(nullptr));
}

}  // namespace halvor::kelo
