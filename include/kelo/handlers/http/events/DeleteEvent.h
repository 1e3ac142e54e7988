#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// DELETE "/1/api/events": clears the event log; only the status answers.
class DeleteEvent : public web::HttpController<DeleteEvent, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(deleteEvent, "/api/events", web::Delete)
  KELO_ROUTES_END

  virtual void deleteEvent(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                           tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                           std::string sessionId);
};

}  // namespace halvor::kelo
