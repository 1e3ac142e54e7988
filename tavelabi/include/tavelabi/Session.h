#pragma once

#include <string>

#include "tavelabi/Resource.h"

namespace halvor::tavelabi {

// The host's session record. Plug-ins read only the identifier.
struct Session {
  std::string sessionId;
  std::string username;
  std::string host;
  std::string created;

  // From a session resource: "sessionId" is required (std::out_of_range without it), the keys
  // "username", "host" and "created" are taken when present.
  static Session convertResourceToSession(Resource resource);
};

}  // namespace halvor::tavelabi
