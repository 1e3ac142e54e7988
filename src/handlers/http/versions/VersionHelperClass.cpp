#include "kelo/handlers/http/versions/VersionHelperClass.h"

#include "halvor/factories/VersionFactories.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

std::shared_ptr<protobuf::Version> VersionHelperClass::readVersion(const web::HttpRequestPtr& req,
                                                                   tavelabi::ITavel* tavel,
                                                                   tavelabi::IPluginInfo* info,
                                                                   const std::string& sessionId,
                                                                   const std::string& path) {
  const tavelabi::Resource read = HostReads::read(req, tavel, info, sessionId, path);
  protobuf::HalvorPbFactory2Version factory;
  factory.setOverride("version", read.values.at("value"));
  const std::string prefix(kPrefix);
  factory.overrides().mutable_name()->set_value(
      path.compare(0, prefix.size(), prefix) == 0 ? path.substr(prefix.size()) : path);
  return factory.build(nullptr);
}

tavelabi::Resource VersionHelperClass::remoteSupportResource(
    const protobuf::SkyRunRemoteSupport& support) {
  tavelabi::Resource values;
  if (support.has_isenabled()) values.values["isEnabled"] = support.isenabled().value();
  if (support.has_port()) values.values["port"] = support.port().value();
  if (support.has_connectionid()) values.values["connectionId"] = support.connectionid().value();
  if (support.has_url()) values.values["url"] = support.url().value();
  if (support.has_timeout()) values.values["timeout"] = support.timeout().value();
  return values;
}

bool VersionHelperClass::remoteSupportCommand(
    const web::HttpRequestPtr& req, web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
    tavelabi::IPluginInfo* info, const std::string& sessionId, const std::string& command,
    const tavelabi::Resource& values, tavelabi::Resource& answer) {
  KeloResourceAction action(tavelabi::CCRUD::Command, command, values, info, sessionId, req);
  answer = tavel->processResourceAction(action);
  const auto refusal = answer.values.find("errorMessage");
  if (refusal == answer.values.end()) return true;
  resp->setStatusCode(web::k500InternalServerError);
  resp->setBody(refusal->second.getStringValue());
  return false;
}

}  // namespace halvor::kelo
