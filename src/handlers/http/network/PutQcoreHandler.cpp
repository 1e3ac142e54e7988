#include "kelo/handlers/http/network/PutQcoreHandler.h"

#include "halvor/protobuf/Platform.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/network/NetworkHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutQcoreHandler::processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                         std::string sessionId) {
  protobuf::QCoreSettings settings;
  (void)JsonOptions::fromJson(std::string(req->body()), settings);
  const google::protobuf::Descriptor* descriptor = settings.GetDescriptor();
  tavelabi::Resource command;
  for (const NetworkHelperClass::Entry& entry : NetworkHelperClass::platformEntries()) {
    const auto& field =
        settings.GetReflection()->GetMessage(settings, descriptor->FindFieldByName(entry.key));
    command.values[entry.key] = field.GetDescriptor() == google::protobuf::Value::descriptor()
                                    ? NetworkHelperClass::connectedToHost(
                                          static_cast<const google::protobuf::Value&>(field))
                                    : NetworkHelperClass::wrappedValue(field);
  }
  KeloResourceAction set(tavelabi::CCRUD::Command, NetworkHelperClass::kSetPlatformCommand, command,
                         info, sessionId, req);
  (void)tavel->processResourceAction(set);
  resp->setStatusCode(web::k200OK);
}

}  // namespace halvor::kelo
