#include "kelo/handlers/http/events/DeleteEvent.h"

#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

namespace {

constexpr const char* kDeleteEventsCommand = "/command/eventlog/deleteEvents";

}  // namespace

void DeleteEvent::deleteEvent(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                              tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                              std::string sessionId) {
  KeloResourceAction action(tavelabi::CCRUD::Command, kDeleteEventsCommand, info, sessionId, req);
  // What the host answers about the cleared log is of no use to the client.
  (void)tavel->processResourceAction(action);
  resp->setStatusCode(web::k200OK);
}

}  // namespace halvor::kelo
