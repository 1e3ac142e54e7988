#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/events/paged": one page of the event log, sorted and filtered by the query
// ("page", "page_size", "type", "ordering"), with links to the next and the previous page.
class GetEventLogsHandler : public web::KeloHttpController<GetEventLogsHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/events/paged", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
