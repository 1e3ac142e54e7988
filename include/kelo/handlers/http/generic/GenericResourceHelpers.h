#pragma once

#include <string>

#include "kelo/web/HttpRequest.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// The steps that the five generic endpoints share: the resource path from the query, the
// resource from the body, and the answer as JSON.
class GenericResourceHelpers {
 public:
  GenericResourceHelpers() = delete;

  // The query parameter "path", percent-decoded and taken as it stands: an empty decoding is a
  // path like any other. Throws RequestMissingQueryParameter("path") when there is none.
  static std::string resourcePath(const web::HttpRequestPtr& req);
  // The body parsed as Resource JSON with the shared parse options. The parse status is
  // ignored on purpose: an empty, non-JSON or partly wrong body gives whatever got into the
  // message, so the host sees an empty or partial resource.
  static tavelabi::Resource bodyResource(const web::HttpRequestPtr& req);
  // The host's answer as Resource JSON, as the shared print options print it (through
  // ResourceJsonWriter, which gives the same text faster).
  static std::string answerJson(tavelabi::Resource answer);
};

}  // namespace halvor::kelo
