#include "kelo/handlers/http/users/UserHandlerHelpers.h"

#include <json/value.h>
#include <json/writer.h>

#include <regex>

#include "kelo/common/JsonOptions.h"

namespace halvor::kelo {

namespace {

constexpr const char* kUserPathTemplate = "/user/users/<username>";

// The role map's sub-keys, shared with the reader of a user.
constexpr const char* kGuidKey = "guid";
constexpr const char* kRoleNameKey = "roleName";
constexpr const char* kVisibleKey = "visible";

void addText(tavelabi::Resource& resource, const char* key, bool has,
             const google::protobuf::StringValue& value) {
  if (has) resource.values[key] = tavelabi::ResourceValue(value.value());
}

void addPlainFields(const protobuf::User& user, tavelabi::Resource& resource) {
  addText(resource, "guid", user.has_guid(), user.guid());
  addText(resource, "firstName", user.has_firstname(), user.firstname());
  addText(resource, "lastName", user.has_lastname(), user.lastname());
  addText(resource, "email", user.has_email(), user.email());
  addText(resource, "username", user.has_username(), user.username());
  addText(resource, "password", user.has_password(), user.password());
  if (user.has_autologin()) {
    resource.values["autoLogin"] = tavelabi::ResourceValue(user.autologin().value());
  }
  if (user.has_logintimeout()) {
    resource.values["loginTimeout"] = tavelabi::ResourceValue(user.logintimeout().value());
  }
  if (user.has_logintimeoutenabled()) {
    resource.values["loginTimeoutEnabled"] =
        tavelabi::ResourceValue(user.logintimeoutenabled().value());
  }
}

void addActivities(const protobuf::User& user, tavelabi::Resource& resource) {
  if (user.activities().empty()) return;
  std::vector<std::string> activities;
  for (const auto& activity : user.activities()) activities.push_back(activity.value());
  resource.values["activities"] = tavelabi::ResourceValue(activities);
}

void addRoles(const protobuf::User& user, tavelabi::Resource& resource) {
  if (user.roles().empty()) return;
  tavelabi::ResourceValue::Map roles;
  for (const protobuf::Role& role : user.roles()) {
    tavelabi::ResourceValue::Map entry;
    if (role.has_guid()) entry[kGuidKey] = tavelabi::ResourceValue(role.guid().value());
    if (role.has_rolename()) entry[kRoleNameKey] = tavelabi::ResourceValue(role.rolename().value());
    if (role.has_visible()) entry[kVisibleKey] = tavelabi::ResourceValue(role.visible().value());
    roles[role.guid().value()] = tavelabi::ResourceValue(entry);
  }
  resource.values["roles"] = tavelabi::ResourceValue(roles);
}

void addPreferences(const protobuf::User& user, tavelabi::Resource& resource) {
  const protobuf::UserPreferences& preferences = user.userpreferences();
  if (preferences.localepreference() != 0) {
    resource.values["localePreference"] =
        tavelabi::ResourceValue(protobuf::Locale_Name(preferences.localepreference()));
  }
  resource.values["meterPreference"] =
      tavelabi::ResourceValue(UserHandlerHelpers::generateSanitizedMeterPreferenceJsonString(
          preferences.meterpreference()));
  if (preferences.has_dashboardlayoutpreference()) {
    resource.values["dashboardLayoutPreference"] =
        tavelabi::ResourceValue(JsonOptions::toJson(preferences.dashboardlayoutpreference()));
  }
}

// A path entry, left out when the message has none, as a printed message would leave it out.
Json::Value pathsOnly(bool hasPath, const std::string& path) {
  Json::Value entry(Json::objectValue);
  if (hasPath) entry["path"] = path;
  return entry;
}

}  // namespace

std::string UserHandlerHelpers::makeUserResourcePath(const std::string& username) {
  static const std::regex placeholder("<username>");
  // In the replacement "$" is special ("$&", "$1"): doubled, a name goes in as it is written.
  std::string replacement;
  for (char c : username) {
    if (c == '$') replacement += '$';
    replacement += c;
  }
  return std::regex_replace(std::string(kUserPathTemplate), placeholder, replacement);
}

tavelabi::Resource UserHandlerHelpers::buildTavelabiUserResource(const protobuf::User& user,
                                                                 tavelabi::ITavel* /*tavel*/,
                                                                 tavelabi::IPluginInfo* /*info*/,
                                                                 std::string /*sessionId*/) {
  tavelabi::Resource resource;
  if (&user == &protobuf::User::default_instance()) return resource;
  addPlainFields(user, resource);
  addActivities(user, resource);
  addRoles(user, resource);
  addPreferences(user, resource);
  return resource;
}

std::string UserHandlerHelpers::generateSanitizedMeterPreferenceJsonString(
    const protobuf::MeterCollectionList& meters) {
  Json::Value root(Json::objectValue);
  for (const protobuf::MeterCollection& collection : meters.collections()) {
    Json::Value collectionJson = pathsOnly(collection.has_path(), collection.path().value());
    for (const protobuf::MeterGroup& group : collection.groups()) {
      Json::Value groupJson = pathsOnly(group.has_path(), group.path().value());
      for (const protobuf::Meter& meter : group.meters()) {
        groupJson["meters"].append(pathsOnly(meter.has_path(), meter.path().value()));
      }
      collectionJson["meterGroups"].append(groupJson);
    }
    root["values"].append(collectionJson);
  }
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  return Json::writeString(builder, root);
}

}  // namespace halvor::kelo
