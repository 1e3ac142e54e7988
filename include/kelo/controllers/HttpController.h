#pragma once

#include "kelo/controllers/RouteTable.h"

namespace halvor::kelo::web {

// The controller form for routes with path parameters. Each route is a virtual member
// xxx(req, resp, tavel, info, sessionId, param...) declared with KELO_ROUTE; the frame around it
// is made at registration and logged as "T::xxxWrapper".
template <class T, bool AutoCreation = true>
class HttpController {
 public:
  using Self = T;

  virtual ~HttpController() = default;
};

}  // namespace halvor::kelo::web
