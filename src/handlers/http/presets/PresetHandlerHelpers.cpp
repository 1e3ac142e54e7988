#include "kelo/handlers/http/presets/PresetHandlerHelpers.h"

#include <utility>

#include "kelo/common/JsonOptions.h"
#include "kelo/common/ResourceConverter.h"
#include "kelo/handlers/http/presets/UnableToCompletePresetAction.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {

using tavelabi::Resource;
using tavelabi::ResourceValue;

protobuf::BroadcastPreset PresetHandlerHelpers::makeBroadcastPreset(
    ResourceValue guid, std::map<std::string, ResourceValue> sections) {
  protobuf::BroadcastPreset preset;
  auto& resources = *preset.mutable_resources();
  for (const auto& [name, section] : sections) {
    Resource hostSection;
    for (const auto& [key, value] : section.getMapValue()) {
      hostSection.values[key] = value;
    }
    resources[name] = ResourceConverter::toHalvorPbResource(std::move(hostSection));
  }
  preset.mutable_guid()->set_value(guid.getStringValue());
  return preset;
}

protobuf::BroadcastPreset PresetHandlerHelpers::presetOf(const Resource& answer) {
  const ResourceValue::Map& sections = answer.values.at("value").getMapValue();
  return makeBroadcastPreset(answer.values.at("guid"), std::map<std::string, ResourceValue>(
                                                           sections.begin(), sections.end()));
}

protobuf::BroadcastPresetList PresetHandlerHelpers::presetListOf(const ResourceValue& list) {
  protobuf::BroadcastPresetList presets;
  for (const ResourceValue& element : list.getListValue()) {
    const ResourceValue::Map& entry = element.getMapValue();
    const ResourceValue::Map& sections = entry.at("value").getMapValue();
    *presets.add_presets() = makeBroadcastPreset(
        entry.at("guid"), std::map<std::string, ResourceValue>(sections.begin(), sections.end()));
  }
  return presets;
}

void PresetHandlerHelpers::throwIfFailed(const Resource& answer) {
  // Only the key counts: "errorOccurred" = false fails the action all the same.
  if (answer.values.count("errorOccurred") != 0) {
    throw UnableToCompletePresetAction(answer.values.at("errorMessage").getStringValue());
  }
}

std::string PresetHandlerHelpers::waitForBroadcastPreset(tavelabi::ResourceAction action,
                                                         tavelabi::ITavel* host) {
  // The host writes its answer into the action; the returned copy is not needed.
  (void)host->processResourceAction(action);
  throwIfFailed(action.resource);
  const Resource poll("checkProgress", ResourceValue(true));
  while (true) {
    action.resource.values = poll.values;
    (void)host->processResourceAction(action);
    // Only the presence of "actionCompleted" ends the wait, whatever its value.
    if (action.resource.values.count("actionCompleted") != 0) break;
    throwIfFailed(action.resource);
    BackgroundConfirmation::pause(kPollPeriod);
  }
  return JsonOptions::toJson(presetOf(action.resource));
}

Resource PresetHandlerHelpers::makeBroadcastPresetResource(std::string json) {
  // The parse status is not looked at: a body that does not parse leaves the guid empty.
  protobuf::BroadcastPreset preset;
  (void)JsonOptions::fromJson(json, preset);
  if (preset.guid().value().empty()) {
    throw tavelabi::BadlyFormedJsonStringException("invalid broadcast preset");
  }
  Resource resource("guid", ResourceValue(preset.guid().value()));
  ResourceValue::Map sections;
  for (const auto& [name, section] : preset.resources()) {
    const Resource hostSection = ResourceConverter::toTavelAbiResource(section);
    sections[name] =
        ResourceValue(ResourceValue::Map(hostSection.values.begin(), hostSection.values.end()));
  }
  resource.values["value"] = ResourceValue(sections);
  return resource;
}

void PresetHandlerHelpers::answerWithPreset(BackgroundConfirmation::Reply reply,
                                            tavelabi::ITavel* host,
                                            std::function<tavelabi::ResourceAction()> makeAction) {
  web::HttpResponsePtr resp = reply.resp;
  // One pass holds the whole wait: the preset's own loop polls at its own period.
  BackgroundConfirmation::start(
      std::move(reply), kPollPeriod, [resp, host, makeAction = std::move(makeAction)] {
        const std::string json = waitForBroadcastPreset(makeAction(), host);
        resp->setContentTypeCode(web::CT_APPLICATION_JSON);
        resp->setBody(json);
        return true;
      });
}

}  // namespace halvor::kelo
