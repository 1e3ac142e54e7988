#pragma once

#include <string>

#include "halvor/protobuf/Users.pb.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

class RoleHelperClass {
 public:
  RoleHelperClass() = delete;

  // Every role of "/role/list/all", in key order; each entry must hold "guid", "roleName" and
  // "visible" (std::out_of_range "map::at" otherwise).
  static protobuf::RoleList getRoles(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                     tavelabi::IPluginInfo* info, std::string sessionId);
};

}  // namespace halvor::kelo
