#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// PUT "/1/api/notifications/{guid}": renames when the title differs, then replaces the addresses
// and alarms whole: every stored link is removed and every link of the body added, even when the
// two agree. No transaction: a failure between the commands leaves the notification half written.
class PutNotificationHandler : public web::HttpController<PutNotificationHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(putNotification, "/api/notifications/{guid}", web::Put)
  KELO_ROUTES_END

  virtual void putNotification(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                               tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                               std::string sessionId, std::string guid);
};

}  // namespace halvor::kelo
