#include "kelo/handlers/http/orban/PutOrbanActivePreset.h"

#include <memory>
#include <utility>

#include "kelo/handlers/toolkit/BackgroundConfirmation.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutOrbanActivePreset::putOrbanActivePreset(const web::HttpRequestPtr& req,
                                                web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                                tavelabi::IPluginInfo* info, std::string sessionId,
                                                web::ResponseCallback callback) {
  const std::string body(req->body());
  const std::string name = OrbanPresetHelpers::requestedName(body);
  OrbanPresetHelpers::update(req, tavel, info, sessionId, OrbanPresetHelpers::activeNamePath(),
                             tavelabi::Resource("set_value", tavelabi::ResourceValue(name)));
  // The answer is the request's own body; the wait only decides when it goes out.
  resp->setContentTypeCode(web::CT_APPLICATION_JSON);
  resp->setBody(body);
  auto progress = std::make_shared<OrbanPresetHelpers::Activation>();
  BackgroundConfirmation::start({req, resp, std::move(callback)}, waits_.period,
                                [req, tavel, info, sessionId, waits = waits_, progress] {
                                  return OrbanPresetHelpers::activationPass(
                                      req, tavel, info, sessionId, waits, *progress);
                                });
}

}  // namespace halvor::kelo
