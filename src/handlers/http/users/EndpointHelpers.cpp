#include "kelo/handlers/http/users/EndpointHelpers.h"

#include <json/reader.h>

#include <utility>

#include "halvor/factories/SettingsFactories.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/meters/MeterEndpointHelperClass.h"
#include "kelo/handlers/toolkit/HostReads.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {

namespace {

constexpr const char* kValidationTypesPath = "/user/validations/validationTypes";
constexpr const char* kValidationsPath = "/user/validations";

const tavelabi::ResourceValue* optionalValue(const tavelabi::Resource& resource,
                                             const std::string& key) {
  const auto found = resource.values.find(key);
  return found == resource.values.end() ? nullptr : &found->second;
}

protobuf::Role roleOf(const tavelabi::ResourceValue::Map& entry) {
  protobuf::Role role;
  if (const auto guid = entry.find("guid"); guid != entry.end()) {
    role.mutable_guid()->set_value(guid->second.getStringValue());
  }
  if (const auto name = entry.find("roleName"); name != entry.end()) {
    role.mutable_rolename()->set_value(name->second.getStringValue());
  }
  if (const auto visible = entry.find("visible"); visible != entry.end()) {
    role.mutable_visible()->set_value(visible->second.getBoolValue());
  }
  return role;
}

// Step 2: "roles" is a map, in key order, of maps.
void addRoles(const tavelabi::Resource& user, protobuf::User& message) {
  for (const auto& [key, entry] : user.values.at("roles").getMapValue()) {
    *message.add_roles() = roleOf(entry.getMapValue());
  }
}

// Step 3: "activities" is a list of texts.
void addActivities(const tavelabi::Resource& user, protobuf::User& message) {
  for (const tavelabi::ResourceValue& activity : user.values.at("activities").getListValue()) {
    message.add_activities()->set_value(activity.getStringValue());
  }
}

// Step 4: one record per validation type, each read from the host.
void addValidations(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                    tavelabi::IPluginInfo* info, const std::string& sessionId, bool byPass,
                    protobuf::User& message) {
  const tavelabi::Resource types =
      HostReads::readFlagged(req, tavel, info, sessionId, kValidationTypesPath, byPass);
  for (const tavelabi::ResourceValue& type : types.values.at("value").getListValue()) {
    const std::string& name = type.getStringValue();
    tavelabi::Resource limits = HostReads::readFlagged(
        req, tavel, info, sessionId, std::string(kValidationsPath) + "/" + name, byPass);
    protobuf::HalvorPbFactory2Validations factory;
    (*message.mutable_validations())[name] = *factory.build(&limits);
  }
}

// A locale name that the enumeration lacks, and a missing key, are 0.
protobuf::Locale localeOf(const tavelabi::ResourceValue* value) {
  if (value == nullptr) return protobuf::UNKNOWN_LOCALE;
  const auto* known = protobuf::Locale_descriptor()->FindValueByName(value->getStringValue());
  return known == nullptr ? protobuf::UNKNOWN_LOCALE
                          : static_cast<protobuf::Locale>(known->number());
}

// Step 5: the three preferences, each key optional.
void addPreferences(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                    tavelabi::IPluginInfo* info, const std::string& sessionId, bool byPass,
                    const tavelabi::Resource& user, protobuf::User& message) {
  protobuf::UserPreferences* preferences = message.mutable_userpreferences();
  preferences->set_localepreference(localeOf(optionalValue(user, "localePreference")));
  if (const auto* layout = optionalValue(user, "dashboardLayoutPreference")) {
    // The status is not looked at: what parsed is shown.
    (void)JsonOptions::fromJson(layout->getStringValue(),
                                *preferences->mutable_dashboardlayoutpreference());
  }
  if (const auto* meters = optionalValue(user, "meterPreference")) {
    *preferences->mutable_meterpreference() =
        std::move(*EndpointHelpers::generateMeterCollectionListFromJsonString(
            req, tavel, info, sessionId, meters->getStringValue(), byPass));
  }
}

void addOptionalWrappers(const tavelabi::Resource& user, protobuf::User& message) {
  if (const auto* value = optionalValue(user, "firstName")) {
    message.mutable_firstname()->set_value(value->getStringValue());
  }
  if (const auto* value = optionalValue(user, "lastName")) {
    message.mutable_lastname()->set_value(value->getStringValue());
  }
  if (const auto* value = optionalValue(user, "email")) {
    message.mutable_email()->set_value(value->getStringValue());
  }
  if (const auto* value = optionalValue(user, "autoLogin")) {
    message.mutable_autologin()->set_value(value->getBoolValue());
  }
  if (const auto* value = optionalValue(user, "loginTimeoutEnabled")) {
    message.mutable_logintimeoutenabled()->set_value(value->getBoolValue());
  }
  if (const auto* value = optionalValue(user, "loginTimeout")) {
    message.mutable_logintimeout()->set_value(value->getIntValue());
  }
}

}  // namespace

std::shared_ptr<protobuf::User> EndpointHelpers::getCurrentUserInfo(const web::HttpRequestPtr& req,
                                                                    tavelabi::ITavel* tavel,
                                                                    tavelabi::IPluginInfo* info,
                                                                    std::string sessionId,
                                                                    std::string path, bool byPass) {
  tavelabi::Resource user = HostReads::readFlagged(req, tavel, info, sessionId, path, byPass);
  auto message = std::make_shared<protobuf::User>();
  addRoles(user, *message);
  addActivities(user, *message);
  addValidations(req, tavel, info, sessionId, byPass, *message);
  addPreferences(req, tavel, info, sessionId, byPass, user, *message);
  message->mutable_username()->set_value(user.values.at("username").getStringValue());
  // Removed from the local copy, so that nothing below can put them into the reply.
  user.removeValue("guid");
  user.removeValue("password");
  addOptionalWrappers(user, *message);
  return message;
}

std::shared_ptr<protobuf::MeterCollectionList>
EndpointHelpers::generateMeterCollectionListFromJsonString(const web::HttpRequestPtr& req,
                                                           tavelabi::ITavel* tavel,
                                                           tavelabi::IPluginInfo* info,
                                                           std::string sessionId, std::string json,
                                                           bool byPass) {
  Json::Reader reader;
  Json::Value root;
  if (!reader.parse(json, root)) {
    throw tavelabi::JsonParserException(reader.getFormattedErrorMessages());
  }
  auto list = std::make_shared<protobuf::MeterCollectionList>();
  for (const Json::Value& collectionJson : root["values"]) {
    auto collection = MeterEndpointHelperClass::getCollectionMetaData(
        req, tavel, info, collectionJson["path"].asString(), sessionId, byPass);
    for (const Json::Value& groupJson : collectionJson["meterGroups"]) {
      auto group = MeterEndpointHelperClass::getMeterGroupMetaData(
          req, tavel, info, groupJson["path"].asString(), sessionId, byPass);
      for (const Json::Value& meterJson : groupJson["meters"]) {
        *group->add_meters() = std::move(*MeterEndpointHelperClass::getCurrentMeterInfo(
            req, tavel, info, meterJson["path"].asString(), sessionId, byPass));
      }
      *collection->add_groups() = std::move(*group);
    }
    *list->add_collections() = std::move(*collection);
  }
  return list;
}

}  // namespace halvor::kelo
