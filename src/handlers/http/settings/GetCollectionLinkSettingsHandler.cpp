#include "kelo/handlers/http/settings/GetCollectionLinkSettingsHandler.h"

#include "halvor/factories/SettingsFactories.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetCollectionLinkSettingsHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                          web::HttpResponsePtr& resp,
                                                          tavelabi::ITavel* tavel,
                                                          tavelabi::IPluginInfo* info,
                                                          std::string sessionId) {
  KeloResourceAction list(tavelabi::CCRUD::Command, kListCommand,
                          tavelabi::Resource("value", kCollectionPattern), info, sessionId, req);
  const tavelabi::Resource paths = tavel->processResourceAction(list);
  protobuf::SettingCollectionLinks links;
  for (const tavelabi::ResourceValue& path : paths.values.at("value").getListValue()) {
    const tavelabi::Resource collection =
        HostReads::read(req, tavel, info, sessionId, path.getStringValue());
    if (!collection.values.at("includeAsDynamicSetting").getBoolValue()) {
      continue;
    }
    protobuf::HalvorPbFactory2SettingCollectionLink factory;
    for (const char* key : {"label", "icon", "collectionName"}) {
      factory.setOverride(key, collection.values.at(key));
    }
    *links.add_links() = *factory.release(nullptr);
  }
  JsonReplies::reply(resp, links);
}

}  // namespace halvor::kelo
