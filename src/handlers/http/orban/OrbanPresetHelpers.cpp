#include "kelo/handlers/http/orban/OrbanPresetHelpers.h"

#include <json/reader.h>
#include <json/value.h>

#include "halvor/factories/ProcessorFactories.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

std::string OrbanPresetHelpers::presetPath(const std::string& name) {
  return std::string(kPresetList) + "/" + name;
}

std::string OrbanPresetHelpers::activeNamePath() { return std::string(kActivePreset) + "/name"; }

std::string OrbanPresetHelpers::activeUpdatedPath() {
  return std::string(kActivePreset) + "/updated";
}

std::string OrbanPresetHelpers::controlPath(const std::string& label) {
  return std::string(kActivePreset) + "/" + "controls" + "/" + label;
}

std::shared_ptr<protobuf::OrbanPresetName> OrbanPresetHelpers::presetOf(Resource& resource) {
  protobuf::HalvorPbFactory2OrbanPresetName factory;
  return factory.build(&resource);
}

std::vector<std::string> OrbanPresetHelpers::presetNames(const web::HttpRequestPtr& req,
                                                         tavelabi::ITavel* tavel,
                                                         tavelabi::IPluginInfo* info,
                                                         const std::string& sessionId) {
  return HostReads::readTexts(req, tavel, info, sessionId, kPresetList);
}

void OrbanPresetHelpers::savePreset(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                    tavelabi::IPluginInfo* info, const std::string& sessionId,
                                    const protobuf::OrbanPresetName& preset) {
  command(req, tavel, info, sessionId, kSave, Resource(presetValue(preset)));
}

ResourceValue OrbanPresetHelpers::presetValue(const protobuf::OrbanPresetName& preset) {
  // Only the fields the client gave: the host completes the rest as it keeps presets.
  ResourceValue::Map fields;
  if (preset.has_name()) fields["name"] = ResourceValue(preset.name().value());
  const auto flag = [&fields](const char* key, bool present, bool value) {
    if (present) fields[key] = ResourceValue(value);
  };
  flag("isFactory", preset.has_isfactory(), preset.isfactory().value());
  flag("isLessMoreAvailable", preset.has_islessmoreavailable(),
       preset.islessmoreavailable().value());
  flag("isLessMoreUnvailable", preset.has_islessmoreunvailable(),
       preset.islessmoreunvailable().value());
  flag("isLowLatency", preset.has_islowlatency(), preset.islowlatency().value());
  flag("isModifiable", preset.has_ismodifiable(), preset.ismodifiable().value());
  flag("isMultiband", preset.has_ismultiband(), preset.ismultiband().value());
  flag("isTwoband", preset.has_istwoband(), preset.istwoband().value());
  flag("isUser", preset.has_isuser(), preset.isuser().value());
  return ResourceValue(fields);
}

Resource OrbanPresetHelpers::command(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                     tavelabi::IPluginInfo* info, const std::string& sessionId,
                                     const std::string& path, const Resource& payload) {
  KeloResourceAction action(CCRUD::Command, path, payload, info, sessionId, req);
  return tavel->processResourceAction(action);
}

void OrbanPresetHelpers::update(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                tavelabi::IPluginInfo* info, const std::string& sessionId,
                                const std::string& path, const Resource& payload) {
  KeloResourceAction action(CCRUD::Update, path, payload, info, sessionId, req);
  tavel->processResourceAction(action);
}

std::string OrbanPresetHelpers::requestedName(const std::string& body) {
  Json::Reader reader;
  Json::Value json;
  const bool parsed = reader.parse(body, json);
  if (body.empty()) {
    throw RequestMissingFormData("orban preset name");
  }
  if (!parsed) {
    throw tavelabi::JsonParserException("Error! Could not parse json file: " +
                                        reader.getFormattedErrorMessages());
  }
  // A body without "name" asks for "" (jsoncpp's null as text); one that is no object throws.
  return json["name"].asString();
}

BackgroundConfirmation::GiveUp OrbanPresetHelpers::communicationFailure() {
  return {kListRetries, 500, kCommunicationFailure};
}

bool OrbanPresetHelpers::activationPass(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                        tavelabi::IPluginInfo* info, const std::string& sessionId,
                                        const Waits& waits, Activation& progress) {
  if (!progress.presetNamed) {
    const Resource active = HostReads::read(req, tavel, info, sessionId, activeNamePath());
    const std::string& name = active.values.at("name").getStringValue();
    const std::string& asked = active.values.at("set_value").getStringValue();
    // A search, not an equality: the processor may decorate the name it reports.
    if (name.find(asked) == std::string::npos) return false;
    progress.presetNamed = true;
  }
  const Resource updated = HostReads::read(req, tavel, info, sessionId, activeUpdatedPath());
  if (updated.values.at("value").getBoolValue()) {
    // The processor reports the preset taken some time before it can be used.
    BackgroundConfirmation::pause(waits.settle);
    return true;
  }
  if (progress.updatedWaits < kUpdatedRetries) {
    ++progress.updatedWaits;
    return false;
  }
  // A processor that never reports the flag only delays the answer; nothing is reported.
  return true;
}

bool OrbanPresetHelpers::controlApplied(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                        tavelabi::IPluginInfo* info, const std::string& sessionId,
                                        const std::string& path) {
  const Resource control = HostReads::read(req, tavel, info, sessionId, path);
  return control.values.at("value").getIntValue() == control.values.at("set_value").getIntValue();
}

}  // namespace halvor::kelo
