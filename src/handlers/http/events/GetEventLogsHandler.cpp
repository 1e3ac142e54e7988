#include "kelo/handlers/http/events/GetEventLogsHandler.h"

#include <ctime>
#include <memory>
#include <vector>

#include "kelo/handlers/http/events/EventEndpointHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

namespace {

constexpr const char* kGetEventsCommand = "/command/eventlog/getEvents";

}  // namespace

void GetEventLogsHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                             web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                             tavelabi::IPluginInfo* info, std::string sessionId) {
  using Helper = EventEndpointHelperClass;
  Helper::QueryMap query = QueryParameters::undecoded(req);
  // In this order, so that of several bad parameters the page is the one reported.
  const Helper::Ordering ordering = Helper::getRequestedOrdering(query);
  const unsigned int page = Helper::getQueryParameterUint(query, "page");
  const unsigned int pageSize = Helper::getQueryParameterUint(query, "page_size");
  const unsigned int type = Helper::getQueryParameterUint(query, "type");

  tavelabi::Resource request = Helper::eventSelection(ordering, type);
  request.addValue("page", static_cast<int>(page));
  request.addValue("pageSize", static_cast<int>(pageSize));
  KeloResourceAction action(tavelabi::CCRUD::Command, kGetEventsCommand, request, info, sessionId,
                            req);
  const tavelabi::Resource answer = tavel->processResourceAction(action);

  // Both keys are required of the host: a missing one is std::out_of_range for the frame.
  std::vector<tavelabi::ResourceValue> records = answer.values.at("value").getListValue();
  const std::int32_t total = answer.values.at("count").getIntValue();
  const std::time_t answeredAt = std::time(nullptr);
  Helper::totalNumberOfEvents.store(total);
  Helper::timeStamp.store(answeredAt);

  std::vector<protobuf::LoggedEvent> events = Helper::buildLoggedEventPbVector(records);
  // The request's own count and time, not the shared latest ones another request may have
  // written meanwhile.
  const std::shared_ptr<protobuf::PagedEvents> paged =
      Helper::buildPagedEventPb(events, page, pageSize, req, query, total, answeredAt);
  JsonReplies::reply(resp, *paged);
}

}  // namespace halvor::kelo
