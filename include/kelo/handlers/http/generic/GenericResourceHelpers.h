#pragma once

#include "kelo/web/HttpRequest.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// The step that the generic endpoints with a body share.
class GenericResourceHelpers {
 public:
  GenericResourceHelpers() = delete;

  // The body parsed as Resource JSON with the shared parse options. The parse status is
  // ignored on purpose: an empty, non-JSON or partly wrong body gives whatever got into the
  // message, so the host sees an empty or partial resource.
  static tavelabi::Resource bodyResource(const web::HttpRequestPtr& req);
};

}  // namespace halvor::kelo
