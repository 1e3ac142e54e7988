#include "tavelabi/Session.h"

namespace halvor::tavelabi {

namespace {

// An optional text field: taken when the key is there and holds text.
std::string optionalText(const Resource& resource, const std::string& key) {
  auto found = resource.values.find(key);
  if (found == resource.values.end() || found->second.getType() != ResourceValueType::STRING) {
    return {};
  }
  return found->second.getStringValue();
}

}  // namespace

Session Session::convertResourceToSession(Resource resource) {
  Session session;
  session.sessionId = resource.values.at("sessionId").getStringValue();
  session.username = optionalText(resource, "username");
  session.host = optionalText(resource, "host");
  session.created = optionalText(resource, "created");
  return session;
}

}  // namespace halvor::tavelabi
