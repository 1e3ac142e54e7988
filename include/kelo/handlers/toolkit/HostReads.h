#pragma once

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// The reads that handlers of every family make on the client's behalf, each a KeloResourceAction
// under the client's session. Host failures pass through.
class HostReads {
 public:
  HostReads() = delete;

  static constexpr const char* kBypassKey = "byPassSessionActivityTimerUpdate";

  // A Read of `path` with no request values.
  static tavelabi::Resource read(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                 tavelabi::IPluginInfo* info, const std::string& sessionId,
                                 const std::string& path);
  // A Read whose request holds kBypassKey = byPass. With true the host does not count the read
  // as user activity, so that polls and pushes do not keep an idle session alive.
  static tavelabi::Resource readFlagged(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                        tavelabi::IPluginInfo* info, const std::string& sessionId,
                                        const std::string& path, bool byPass);
  static tavelabi::Resource readBypassingActivity(const web::HttpRequestPtr& req,
                                                  tavelabi::ITavel* tavel,
                                                  tavelabi::IPluginInfo* info,
                                                  const std::string& sessionId,
                                                  const std::string& path) {
    return readFlagged(req, tavel, info, sessionId, path, true);
  }
  // The request resource of readFlagged.
  static tavelabi::Resource activityFlag(bool byPass);

  // The texts of the list under "value" of `path`, in order. An answer without "value" throws
  // std::out_of_range; an element that is not text throws as its getter does.
  static std::vector<std::string> readTexts(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                            tavelabi::IPluginInfo* info,
                                            const std::string& sessionId,
                                            const std::string& listPath);
  // readTexts(listPath), then `readEntry(text)` for each text in order: the results in that
  // order. The first failure ends the walk.
  template <class ReadEntry>
  static auto readEach(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                       tavelabi::IPluginInfo* info, const std::string& sessionId,
                       const std::string& listPath, ReadEntry&& readEntry) {
    using Entry = std::decay_t<std::invoke_result_t<ReadEntry&, const std::string&>>;
    std::vector<Entry> entries;
    for (const std::string& text : readTexts(req, tavel, info, sessionId, listPath)) {
      entries.push_back(readEntry(text));
    }
    return entries;
  }
};

}  // namespace halvor::kelo
