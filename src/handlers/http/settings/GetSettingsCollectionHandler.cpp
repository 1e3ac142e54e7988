#include "kelo/handlers/http/settings/GetSettingsCollectionHandler.h"

#include "kelo/handlers/http/settings/SettingCollectionHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetSettingsCollectionHandler::getSetting(const web::HttpRequestPtr& req,
                                              web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                              tavelabi::IPluginInfo* info, std::string sessionId,
                                              std::string name) {
  JsonReplies::reply(resp,
                     SettingCollectionHelpers::readCollection(req, tavel, info, sessionId, name));
}

}  // namespace halvor::kelo
