#include "kelo/handlers/http/network/PutNetworkHandler.h"

#include "halvor/protobuf/Platform.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/network/NetworkHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutNetworkHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                           web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                           tavelabi::IPluginInfo* info, std::string sessionId) {
  // The converter's status is not looked at: what does not parse stays at its default.
  protobuf::NetworkSettings settings;
  (void)JsonOptions::fromJson(std::string(req->body()), settings);
  const google::protobuf::Descriptor* descriptor = settings.GetDescriptor();
  for (const NetworkHelperClass::Entry& entry : NetworkHelperClass::controllerWrites()) {
    const auto& wrapper =
        settings.GetReflection()->GetMessage(settings, descriptor->FindFieldByName(entry.key));
    KeloResourceAction write(
        tavelabi::CCRUD::Update, entry.path,
        tavelabi::Resource("set_value", NetworkHelperClass::wrappedValue(wrapper)), info, sessionId,
        req);
    (void)tavel->processResourceAction(write);
  }
  resp->setStatusCode(web::k200OK);
}

}  // namespace halvor::kelo
