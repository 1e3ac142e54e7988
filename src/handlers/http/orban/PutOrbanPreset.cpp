#include "kelo/handlers/http/orban/PutOrbanPreset.h"

#include "kelo/handlers/http/orban/OrbanPresetHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutOrbanPreset::putOrbanPreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                    tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                    std::string sessionId) {
  // A change of a preset that exists: nothing to wait for, the host keeps it as saved.
  OrbanPresetHelpers::savePreset(req, tavel, info, sessionId,
                                 RequestBodies::message<protobuf::OrbanPresetName>(req));
  resp->setContentTypeCode(web::CT_APPLICATION_JSON);
  resp->setStatusCode(web::k200OK);
}

}  // namespace halvor::kelo
