#include "kelo/handlers/http/generic/GenericResourceHelpers.h"

#include <string>
#include <utility>

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/common/ResourceConverter.h"

namespace halvor::kelo {

tavelabi::Resource GenericResourceHelpers::bodyResource(const web::HttpRequestPtr& req) {
  const std::string body(req->body());
  protobuf::Resource message;
  (void)JsonOptions::fromJson(body, message);
  return ResourceConverter::toTavelAbiResource(std::move(message));
}

}  // namespace halvor::kelo
