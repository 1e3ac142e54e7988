#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// GET "/1/api/users/{username}": the user of that name.
class GetUser : public web::HttpController<GetUser, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(getUser, "/api/users/{username}", web::Get)
  KELO_ROUTES_END

  virtual void getUser(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                       tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info, std::string sessionId,
                       std::string username);
};

}  // namespace halvor::kelo
