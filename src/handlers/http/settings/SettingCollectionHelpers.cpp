#include "kelo/handlers/http/settings/SettingCollectionHelpers.h"

#include <google/protobuf/descriptor.h>

#include <algorithm>
#include <stdexcept>

#include "halvor/factories/HalvorPbFactory2.h"
#include "halvor/factories/SettingsFactories.h"
#include "kelo/common/ResourceConverter.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {

namespace {

constexpr const char* kCollectionTemplate = "/collection/<collectionName>";
constexpr const char* kPlaceholder = "<collectionName>";

using Values = std::map<std::string, tavelabi::ResourceValue>;

// Copies `key` into `target` when the host gave it.
void copyIfPresent(const Values& source, const std::string& key,
                   google::protobuf::Map<std::string, protobuf::ResourceValue>& target) {
  const auto found = source.find(key);
  if (found != source.end()) {
    target[key] = ResourceConverter::toHalvorPbResourceValue(found->second);
  }
}

bool flagOf(const Values& values, const std::string& key) {
  const auto found = values.find(key);
  return found != values.end() && found->second.getBoolValue();
}

// "path" of the resource when it has one, else the path it was read from.
void settlePath(protobuf::HalvorPbFactory2Resource& factory, const std::string& readPath) {
  factory.overrides().mutable_path()->set_value(readPath);
}

protobuf::SettingType typeNamed(const std::string& name) {
  const auto* value = protobuf::QuoSetting::SettingType_descriptor()->FindValueByName(name);
  return value == nullptr ? protobuf::QuoSetting::UNDEFINED
                          : static_cast<protobuf::SettingType>(value->number());
}

// The setting's own resource: its value, "scaledInteger" true, the display keys it has.
std::shared_ptr<protobuf::Resource> settingResourceMessage(tavelabi::Resource& setting,
                                                           const std::string& settingPath,
                                                           const Values& entry,
                                                           protobuf::SettingType type) {
  protobuf::HalvorPbFactory2Resource factory;
  settlePath(factory, settingPath);
  auto& values = *factory.overrides().mutable_values();
  values["value"] = ResourceConverter::toHalvorPbResourceValue(setting.values.at("value"));
  values["scaledInteger"] = ResourceConverter::toHalvorPbResourceValue(true);
  for (const char* key : {"units", "scale", "digitsToDisplay", "toFixedDigits"}) {
    copyIfPresent(setting.values, key, values);
  }
  // Only a single choice carries its options this way; a multiple choice has none here.
  if (type == protobuf::QuoSetting::SINGLE_SELECT) {
    values["options"] = ResourceConverter::toHalvorPbResourceValue(entry.at("options"));
  }
  return factory.build(&setting);
}

// The reading beside a setting: like the setting's resource, without "toFixedDigits".
std::shared_ptr<protobuf::Resource> monitorResourceMessage(tavelabi::Resource& monitor,
                                                           const std::string& monitorPath) {
  protobuf::HalvorPbFactory2Resource factory;
  settlePath(factory, monitorPath);
  auto& values = *factory.overrides().mutable_values();
  values["scaledInteger"] = ResourceConverter::toHalvorPbResourceValue(true);
  for (const char* key : {"value", "units", "scale", "digitsToDisplay"}) {
    copyIfPresent(monitor.values, key, values);
  }
  return factory.build(&monitor);
}

void addDependentValidation(protobuf::QuoSetting& setting, const Values& entry) {
  for (const auto& [key, limits] : entry.at("dependentValidation").getMapValue()) {
    tavelabi::Resource limitsResource;
    limitsResource.values = limits.getMapValue();
    protobuf::HalvorPbFactory2Validations factory;
    (*setting.mutable_dependentvalidation())[key] = *factory.build(&limitsResource);
  }
}

// Transition and error state with the page's defaults: not moving means done (100), no error
// means an empty message.
void setStateWithDefaults(protobuf::QuoSetting& setting, const Values& values) {
  const bool transitioning = flagOf(values, "transitioning");
  setting.mutable_transitioning()->set_value(transitioning);
  const auto progress = values.find("progress");
  setting.mutable_progress()->set_value(
      transitioning && progress != values.end() ? progress->second.getIntValue() : 100);
  const bool failed = flagOf(values, "errorOccurred");
  setting.mutable_erroroccurred()->set_value(failed);
  const auto message = values.find("errorMessage");
  setting.mutable_errormessage()->set_value(
      failed && message != values.end() ? message->second.getStringValue() : "");
}

}  // namespace

std::string SettingCollectionHelpers::collectionPath(const std::string& name) {
  std::string path = kCollectionTemplate;
  path.replace(path.find(kPlaceholder), std::string(kPlaceholder).size(), name);
  return path;
}

std::string SettingCollectionHelpers::settingPathOfGuid(const std::string& guid) {
  std::string path = "/" + guid;
  std::replace(path.begin(), path.end(), '-', '/');
  return path;
}

protobuf::QuoSettingCollection SettingCollectionHelpers::readCollection(
    const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
    const std::string& sessionId, const std::string& name) {
  const tavelabi::Resource collection =
      HostReads::read(req, tavel, info, sessionId, collectionPath(name));
  protobuf::HalvorPbFactory2QuoSettingCollection factory;
  factory.overrides().mutable_name()->set_value(name);
  for (const tavelabi::ResourceValue& entry : collection.values.at("settings").getListValue()) {
    std::optional<protobuf::QuoSetting> setting = buildSetting(req, tavel, info, sessionId, entry);
    if (setting) {
      *factory.overrides().add_settings() = std::move(*setting);
    }
  }
  return *factory.release(nullptr);
}

std::optional<protobuf::QuoSetting> SettingCollectionHelpers::buildSetting(
    const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
    const std::string& sessionId, const tavelabi::ResourceValue& entryValue) {
  const Values& entry = entryValue.getMapValue();
  const std::string settingPath = entry.at("settingResource").getStringValue();
  const std::string monitorPath = entry.at("monitorResource").getStringValue();
  const std::string label = entry.at("label").getStringValue();
  const std::string typeName = entry.at("type").getStringValue();
  const std::string dependentLabel = entry.at("dependentValidationLabel").getStringValue();

  protobuf::HalvorPbFactory2QuoSetting factory;
  protobuf::QuoSetting& setting = factory.overrides();
  if (!dependentLabel.empty()) {
    setting.mutable_dependentvalidationlabel()->set_value(dependentLabel);
    addDependentValidation(setting, entry);
  }

  tavelabi::Resource resource;
  try {
    resource = HostReads::read(req, tavel, info, sessionId, settingPath);
  } catch (const tavelabi::NonExistentResourcePathException&) {
    return std::nullopt;  // a setting the host does not have is left off the page
  }
  protobuf::HalvorPbFactory2Validations validationsFactory;
  const auto validations = validationsFactory.build(&resource);
  if (resource.values.count("value") == 0) {
    throw std::out_of_range("Setting " + settingPath + " has no value");
  }
  const protobuf::SettingType type = typeNamed(typeName);

  protobuf::HalvorPbFactory2ValidatedResource validatedFactory;
  *validatedFactory.overrides().mutable_resource() =
      *settingResourceMessage(resource, settingPath, entry, type);
  *validatedFactory.overrides().mutable_validations() = *validations;
  *setting.mutable_settingresource() = *validatedFactory.release(nullptr);

  if (!monitorPath.empty()) {
    tavelabi::Resource monitor = HostReads::read(req, tavel, info, sessionId, monitorPath);
    *setting.mutable_monitorresource() = *monitorResourceMessage(monitor, monitorPath);
  }
  const auto guid = resource.values.find("guid");
  if (guid != resource.values.end()) {
    setting.mutable_guid()->set_value(guid->second.getStringValue());
  }
  setting.mutable_label()->set_value(label);
  setting.set_type(type);
  setStateWithDefaults(setting, resource.values);
  return *factory.release(nullptr);
}

protobuf::QuoSetting SettingCollectionHelpers::pushedSetting(const tavelabi::Resource& setting) {
  const auto value = setting.values.find("value");
  if (value == setting.values.end()) {
    throw std::out_of_range("Setting resource has no value entry");
  }
  protobuf::HalvorPbFactory2QuoSetting factory;
  protobuf::QuoSetting& message = factory.overrides();
  (*message.mutable_settingresource()->mutable_resource()->mutable_values())["value"] =
      ResourceConverter::toHalvorPbResourceValue(value->second);
  const auto transitioning = setting.values.find("transitioning");
  if (transitioning != setting.values.end()) {
    message.mutable_transitioning()->set_value(transitioning->second.getBoolValue());
    const auto progress = setting.values.find("progress");
    if (transitioning->second.getBoolValue() && progress != setting.values.end()) {
      message.mutable_progress()->set_value(progress->second.getIntValue());
    }
  }
  const auto failed = setting.values.find("errorOccurred");
  if (failed != setting.values.end()) {
    message.mutable_erroroccurred()->set_value(failed->second.getBoolValue());
    const auto text = setting.values.find("errorMessage");
    if (failed->second.getBoolValue() && text != setting.values.end()) {
      message.mutable_errormessage()->set_value(text->second.getStringValue());
    }
  }
  return *factory.release(nullptr);
}

}  // namespace halvor::kelo
