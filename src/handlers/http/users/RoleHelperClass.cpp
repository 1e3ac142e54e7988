#include "kelo/handlers/http/users/RoleHelperClass.h"

#include "kelo/handlers/toolkit/HostReads.h"

namespace halvor::kelo {

protobuf::RoleList RoleHelperClass::getRoles(const web::HttpRequestPtr& req,
                                             tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                             std::string sessionId) {
  const tavelabi::Resource answer = HostReads::read(req, tavel, info, sessionId, "/role/list/all");
  protobuf::RoleList roles;
  for (const auto& [key, value] : answer.values) {
    const tavelabi::ResourceValue::Map& entry = value.getMapValue();
    protobuf::Role* role = roles.add_roles();
    role->mutable_guid()->set_value(entry.at("guid").getStringValue());
    role->mutable_rolename()->set_value(entry.at("roleName").getStringValue());
    role->mutable_visible()->set_value(entry.at("visible").getBoolValue());
  }
  return roles;
}

}  // namespace halvor::kelo
