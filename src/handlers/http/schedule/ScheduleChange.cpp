#include "kelo/handlers/http/schedule/ScheduleChange.h"

#include <cerrno>
#include <optional>
#include <utility>

#include "kelo/handlers/http/KeloResourceAction.h"
#include "kelo/handlers/http/schedule/ScheduleHelperClass.h"

namespace halvor::kelo {

int ScheduleChange::ruleNumber(const std::string& ruleId) {
  const int saved = errno;
  try {
    const int number = std::stoi(ruleId);
    errno = saved;
    return number;
  } catch (...) {
    errno = saved;
    throw;
  }
}

void ScheduleChange::send(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                          tavelabi::IPluginInfo* info, const std::string& sessionId,
                          const std::string& path, const tavelabi::ResourceValue& value) {
  KeloResourceAction action(tavelabi::CCRUD::Command, path, tavelabi::Resource(value), info,
                            sessionId, req);
  tavel->processResourceAction(action);
}

void ScheduleChange::confirmInBackground(BackgroundConfirmation::Reply reply,
                                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                         const std::string& sessionId) {
  web::HttpRequestPtr req = reply.req;
  web::HttpResponsePtr resp = reply.resp;
  // One pass holds the whole wait: the status reads have their own period.
  BackgroundConfirmation::startWithVerdict(
      std::move(reply), std::chrono::milliseconds(0),
      [req, resp, tavel, info, sessionId]() mutable -> std::optional<int> {
        ScheduleHelperClass::getHardwareResponseStatus(req, tavel, info, sessionId, resp);
        return resp->statusCode();
      });
}

}  // namespace halvor::kelo
