#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/users": every user of "/user/users/list/all", in list order.
class GetUserList : public web::KeloHttpController<GetUserList, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/users", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
