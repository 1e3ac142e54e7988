#include "kelo/handlers/http/events/GenerateCsvHandler.h"

#include "kelo/handlers/http/events/EventEndpointHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

namespace {

constexpr const char* kGenerateCsvCommand = "/command/eventlog/generateCsv";

}  // namespace

void GenerateCsvHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                            web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                            tavelabi::IPluginInfo* info, std::string sessionId) {
  using Helper = EventEndpointHelperClass;
  Helper::QueryMap query = QueryParameters::undecoded(req);
  const Helper::Ordering ordering = Helper::getRequestedOrdering(query);
  const unsigned int type = Helper::getQueryParameterUint(query, "type");

  const tavelabi::Resource request = Helper::eventSelection(ordering, type);
  KeloResourceAction action(tavelabi::CCRUD::Command, kGenerateCsvCommand, request, info, sessionId,
                            req);
  // The host writes the file where it keeps its files; the client fetches it from there.
  (void)tavel->processResourceAction(action);
  resp->setStatusCode(web::k200OK);
}

}  // namespace halvor::kelo
