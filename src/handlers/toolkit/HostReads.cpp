#include "kelo/handlers/toolkit/HostReads.h"

#include "kelo/handlers/http/KeloResourceAction.h"

namespace halvor::kelo {

tavelabi::Resource HostReads::read(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                   tavelabi::IPluginInfo* info, const std::string& sessionId,
                                   const std::string& path) {
  KeloResourceAction action(tavelabi::CCRUD::Read, path, info, sessionId, req);
  return tavel->processResourceAction(action);
}

tavelabi::Resource HostReads::readFlagged(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                          tavelabi::IPluginInfo* info, const std::string& sessionId,
                                          const std::string& path, bool byPass) {
  KeloResourceAction action(tavelabi::CCRUD::Read, path, activityFlag(byPass), info, sessionId,
                            req);
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
