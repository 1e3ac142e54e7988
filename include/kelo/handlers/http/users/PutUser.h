#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// PUT "/1/api/users/{username}": changes the user with the User JSON of the body. A body that
// names another "username" renames the user; the reply reads the URL's name.
class PutUser : public web::HttpController<PutUser, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(putUser, "/api/users/{username}", web::Put)
  KELO_ROUTES_END

  virtual void putUser(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                       tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info, std::string sessionId,
                       std::string username);
};

}  // namespace halvor::kelo
