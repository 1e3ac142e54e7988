#pragma once

#include <string>
#include <vector>

#include "kelo/handlers/toolkit/HostReads.h"
#include "support/RecordingHost.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::kelo::test {

// Host resources of users as the host gives them, and the reads that show one.
struct UserResources {
  // A user record with every key a reply shows, and the two it must never show.
  static tavelabi::Resource user(const std::string& name) {
    tavelabi::Resource resource;
    resource.values["username"] = tavelabi::ResourceValue(name);
    resource.values["password"] = tavelabi::ResourceValue(std::string("clear-" + name));
    resource.values["guid"] = tavelabi::ResourceValue(std::string("guid-" + name));
    resource.values["firstName"] = tavelabi::ResourceValue(std::string("First"));
    resource.values["autoLogin"] = tavelabi::ResourceValue(true);
    resource.values["loginTimeout"] = tavelabi::ResourceValue(300);
    resource.values["activities"] =
        tavelabi::ResourceValue(std::vector<std::string>{"viewStatus", "manageUsers"});
    tavelabi::ResourceValue::Map role{{"guid", tavelabi::ResourceValue(std::string("r1"))},
                                      {"roleName", tavelabi::ResourceValue(std::string("admin"))},
                                      {"visible", tavelabi::ResourceValue(true)}};
    resource.values["roles"] = tavelabi::ResourceValue(
        tavelabi::ResourceValue::Map{{"r1", tavelabi::ResourceValue(role)}});
    return resource;
  }

  // The validation types and one record, so that a user can be shown.
  static void answerValidations(RecordingHost& host) {
    host.answer("/user/validations/validationTypes",
                tavelabi::Resource(tavelabi::ResourceValue(std::vector<std::string>{"password"})));
    tavelabi::Resource limits("minLength", tavelabi::ResourceValue(8));
    limits.values["required"] = tavelabi::ResourceValue(true);
    host.answer("/user/validations/password", limits);
  }

  // The activity flag a read carried: true or false, or -1 when it carried none.
  static int flagOf(const tavelabi::ResourceAction& action) {
    const auto flag = action.resource.values.find(HostReads::kBypassKey);
    if (flag == action.resource.values.end()) return -1;
    return flag->second.getBoolValue() ? 1 : 0;
  }
};

}  // namespace halvor::kelo::test
