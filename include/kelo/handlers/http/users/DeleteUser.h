#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// DELETE "/1/api/users/{username}": removes the user; 200 with no body.
class DeleteUser : public web::HttpController<DeleteUser, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(deleteUser, "/api/users/{username}", web::Delete)
  KELO_ROUTES_END

  virtual void deleteUser(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId, std::string username);
};

}  // namespace halvor::kelo
