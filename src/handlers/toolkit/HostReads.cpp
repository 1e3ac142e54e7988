#include "kelo/handlers/toolkit/HostReads.h"

#include "kelo/handlers/http/KeloResourceAction.h"

namespace halvor::kelo {

namespace {

// Every flagged read copies one of the two into its action; they are made once, each as
// HostReads::activityFlag makes it.
const tavelabi::Resource& sharedActivityFlag(bool byPass) {
  static const tavelabi::Resource kCounted = HostReads::activityFlag(false);
  static const tavelabi::Resource kBypassed = HostReads::activityFlag(true);
  return byPass ? kBypassed : kCounted;
}

}  // namespace

tavelabi::Resource HostReads::read(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                   tavelabi::IPluginInfo* info, const std::string& sessionId,
                                   const std::string& path) {
  KeloResourceAction action(tavelabi::CCRUD::Read, path, info, sessionId, req);
  return tavel->processResourceAction(action);
}

tavelabi::Resource HostReads::readFlagged(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                          tavelabi::IPluginInfo* info, const std::string& sessionId,
                                          const std::string& path, bool byPass) {
  KeloResourceAction action(tavelabi::CCRUD::Read, path, sharedActivityFlag(byPass), info,
                            sessionId, req);
  return tavel->processResourceAction(action);
}

tavelabi::Resource HostReads::activityFlag(bool byPass) {
  return tavelabi::Resource(kBypassKey, tavelabi::ResourceValue(byPass));
}

std::vector<std::string> HostReads::readTexts(const web::HttpRequestPtr& req,
                                              tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                              const std::string& sessionId,
                                              const std::string& listPath) {
  const tavelabi::Resource answer = read(req, tavel, info, sessionId, listPath);
  std::vector<std::string> texts;
  for (const tavelabi::ResourceValue& element : answer.values.at("value").getListValue()) {
    texts.push_back(element.getStringValue());
  }
  return texts;
}

}  // namespace halvor::kelo
