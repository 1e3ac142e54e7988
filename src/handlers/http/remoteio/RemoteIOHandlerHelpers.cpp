#include "kelo/handlers/http/remoteio/RemoteIOHandlerHelpers.h"

#include <utility>

#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/KeloResourceAction.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {

using tavelabi::Resource;
using tavelabi::ResourceValue;

namespace {

const ResourceValue& at(const Resource& resource, const std::string& key) {
  return resource.values.at(key);
}

bool has(const Resource& resource, const std::string& key) {
  return resource.values.find(key) != resource.values.end();
}

void setText(google::protobuf::StringValue* field, const std::string& text) {
  field->set_value(text);
}

}  // namespace

std::shared_ptr<protobuf::AnalogOutput> RemoteIOHandlerHelpers::makeRemoteIoAnalogOutput(
    Resource resource) {
  // Every key is mandatory and "set_value" feeds setValue: the factory's rules for this message.
  protobuf::HalvorPbFactory2AnalogOutput factory;
  return factory.build(&resource);
}

std::shared_ptr<protobuf::SiteControl> RemoteIOHandlerHelpers::makeRemoteIoSiteControl(
    Resource resource) {
  auto control = std::make_shared<protobuf::SiteControl>();
  setText(control->mutable_guid(), at(resource, "guid").getStringValue());
  setText(control->mutable_name(), at(resource, "name").getStringValue());
  control->set_severity(at(resource, "severity").getIntValue());
  control->set_delay(at(resource, "delay").getIntValue());
  control->mutable_latch()->set_value(at(resource, "latch").getBoolValue());
  control->mutable_log()->set_value(at(resource, "log").getBoolValue());
  // The inputs are masks in the host's resource and triggers in the message.
  setText(control->mutable_input1()->mutable_polaritymask(),
          at(resource, "input1").getStringValue());
  setText(control->mutable_input2()->mutable_polaritymask(),
          at(resource, "input2").getStringValue());
  control->set_logicaloperator(at(resource, "logicalOperator").getIntValue());
  control->mutable_logic1()->set_value(at(resource, "logic1").getBoolValue());
  control->mutable_logic2()->set_value(at(resource, "logic2").getBoolValue());
  control->mutable_state()->set_value(at(resource, "state").getBoolValue());
  if (has(resource, "canBeDeleted")) {
    control->mutable_canbedeleted()->set_value(at(resource, "canBeDeleted").getBoolValue());
  }
  return control;
}

std::shared_ptr<protobuf::RemoteIoRule> RemoteIOHandlerHelpers::makeRemoteIoRule(
    Resource resource, protobuf::RemoteIoType type) {
  auto rule = std::make_shared<protobuf::RemoteIoRule>();
  protobuf::RemoteIoTrigger* trigger = rule->mutable_trigger();
  setText(trigger->mutable_label(), at(resource, "label").getStringValue());
  setText(trigger->mutable_polaritymask(),
          std::to_string(at(resource, "polarityMask").getIntValue()));
  protobuf::RemoteIoAction* action = rule->mutable_action();
  setText(action->mutable_value(), at(resource, "value").getStringValue());
  setText(action->mutable_setvalue(), std::to_string(at(resource, "set_value").getIntValue()));
  action->mutable_triggers();
  setText(rule->mutable_guid(), at(resource, "guid").getStringValue());
  rule->mutable_level()->set_value(at(resource, "level").getBoolValue());
  rule->set_type(type);
  // The user-defined part needs all three of its keys; "canBeDeleted" is optional within it.
  if (has(resource, "name") && has(resource, "severity") && has(resource, "log")) {
    protobuf::RemoteIoCustom* custom = rule->mutable_custom();
    setText(custom->mutable_name(), at(resource, "name").getStringValue());
    custom->set_severity(at(resource, "severity").getIntValue());
    custom->mutable_log()->set_value(at(resource, "log").getBoolValue());
    if (has(resource, "canBeDeleted")) {
      custom->mutable_canbedeleted()->set_value(at(resource, "canBeDeleted").getBoolValue());
    }
  }
  return rule;
}

protobuf::RemoteIoAction RemoteIOHandlerHelpers::makeRemoteIoAction(int channelId,
                                                                    std::string label,
                                                                    protobuf::RemoteIoType /*type*/,
                                                                    std::vector<std::string> names,
                                                                    std::vector<int> masks) {
  protobuf::RemoteIoAction action;
  setText(action.mutable_setvalue(), std::to_string(channelId));
  protobuf::RemoteIoTriggerList* triggers = action.mutable_triggers();
  // An unused channel offers "Unused" first, so that the front end can switch a rule off.
  if (label == "Unused") {
    protobuf::RemoteIoTrigger* unused = triggers->add_triggers();
    setText(unused->mutable_label(), "Unused");
    setText(unused->mutable_polaritymask(), "0");
  }
  setText(action.mutable_value(), label);
  for (std::size_t index = 0; index < names.size(); ++index) {
    // A blank name is a level that the channel does not offer; the others keep their masks.
    if (names[index] == " ") continue;
    protobuf::RemoteIoTrigger* trigger = triggers->add_triggers();
    setText(trigger->mutable_label(), names[index]);
    setText(trigger->mutable_polaritymask(), std::to_string(masks.at(index)));
  }
  return action;
}

Resource RemoteIOHandlerHelpers::makeRemoteRuleResource(std::string json) {
  // The parse status is not looked at: what does not parse stays at its default.
  protobuf::RemoteIoRule rule;
  (void)JsonOptions::fromJson(json, rule);
  Resource resource;
  resource.values["value"] = ResourceValue(rule.action().value().value());
  resource.values["set_value"] = ResourceValue(rule.action().setvalue().value());
  resource.values["guid"] = ResourceValue(rule.guid().value());
  resource.values["label"] = ResourceValue(rule.trigger().label().value());
  resource.values["polarityMask"] = ResourceValue(rule.trigger().polaritymask().value());
  resource.values["level"] = ResourceValue(rule.level().value());
  if (rule.has_custom()) {
    resource.values["name"] = ResourceValue(rule.custom().name().value());
    resource.values["severity"] = ResourceValue(rule.custom().severity());
    resource.values["log"] = ResourceValue(rule.custom().log().value());
  }
  return resource;
}

Resource RemoteIOHandlerHelpers::makeRemoteAnalogOutputResource(std::string json) {
  protobuf::AnalogOutput output;
  (void)JsonOptions::fromJson(json, output);
  Resource resource;
  resource.values["guid"] = ResourceValue(output.guid().value());
  resource.values["label"] = ResourceValue(output.label().value());
  resource.values["maxValue"] = ResourceValue(output.maxvalue().value());
  resource.values["value"] = ResourceValue(output.value().value());
  resource.values["set_value"] = ResourceValue(output.setvalue().value());
  return resource;
}

Resource RemoteIOHandlerHelpers::makeRemoteSiteControlResource(std::string json) {
  protobuf::SiteControl control;
  (void)JsonOptions::fromJson(json, control);
  Resource resource;
  resource.values["guid"] = ResourceValue(control.guid().value());
  resource.values["name"] = ResourceValue(control.name().value());
  resource.values["severity"] = ResourceValue(control.severity());
  resource.values["delay"] = ResourceValue(control.delay());
  resource.values["latch"] = ResourceValue(control.latch().value());
  resource.values["log"] = ResourceValue(control.log().value());
  resource.values["input1"] = ResourceValue(control.input1().polaritymask().value());
  resource.values["input2"] = ResourceValue(control.input2().polaritymask().value());
  resource.values["logicalOperator"] = ResourceValue(control.logicaloperator());
  resource.values["logic1"] = ResourceValue(control.logic1().value());
  resource.values["logic2"] = ResourceValue(control.logic2().value());
  resource.values["state"] = ResourceValue(control.state().value());
  resource.values["canBeDeleted"] = ResourceValue(control.canbedeleted().value());
  return resource;
}

bool RemoteIOHandlerHelpers::isSettled(const Resource& answer) {
  const auto found = answer.values.find("transitioning");
  return found != answer.values.end() && !found->second.getBoolValue();
}

Resource RemoteIOHandlerHelpers::settled(tavelabi::ResourceAction& action,
                                         tavelabi::ITavel* tavel) {
  // A tight loop on purpose: the host answers "transitioning" until the save is done, and each
  // pass is one read and nothing else.
  for (;;) {
    Resource answer = tavel->processResourceAction(action);
    if (isSettled(answer)) return answer;
  }
}

std::string RemoteIOHandlerHelpers::waitForRuleSave(tavelabi::ResourceAction action,
                                                    protobuf::RemoteIoType type,
                                                    tavelabi::ITavel* tavel) {
  return JsonOptions::toJson(*makeRemoteIoRule(settled(action, tavel), type));
}

std::string RemoteIOHandlerHelpers::waitForSiteControlSave(tavelabi::ResourceAction action,
                                                           tavelabi::ITavel* tavel) {
  return JsonOptions::toJson(*makeRemoteIoSiteControl(settled(action, tavel)));
}

std::string RemoteIOHandlerHelpers::waitForAnalogSave(tavelabi::ResourceAction action,
                                                      tavelabi::ITavel* tavel) {
  return JsonOptions::toJson(*makeRemoteIoAnalogOutput(settled(action, tavel)));
}

std::string RemoteIOHandlerHelpers::saveSiteControl(const std::string& commandPath,
                                                    const web::HttpRequestPtr& req,
                                                    tavelabi::ITavel* tavel,
                                                    tavelabi::IPluginInfo* info,
                                                    const std::string& sessionId) {
  KeloResourceAction save(tavelabi::CCRUD::Command, commandPath,
                          makeRemoteSiteControlResource(std::string(req->body())), info, sessionId,
                          req);
  // The guid of the saved object comes back in the answer; it is what the wait reads. A create
  // learns the new object's guid only here.
  const Resource answer = tavel->processResourceAction(save);
  const std::string guid = answer.values.at("guid").getStringValue();
  KeloResourceAction poll(tavelabi::CCRUD::Read, std::string(kSiteControlPrefix) + guid, info,
                          sessionId, req);
  return waitForSiteControlSave(poll, tavel);
}

std::string RemoteIOHandlerHelpers::waitForSiteControlDelete(tavelabi::ResourceAction action,
                                                             tavelabi::ITavel* tavel) {
  // The object's disappearance is the confirmation.
  for (;;) {
    try {
      (void)tavel->processResourceAction(action);
    } catch (const tavelabi::NonExistentResourcePathException&) {
      return kDeletedText;
    }
  }
}

protobuf::RemoteIoType RemoteIOHandlerHelpers::typeOfGuid(const std::string& guid) {
  return guid.find("input") != std::string::npos ? protobuf::RemoteIoEnums::INPUT
                                                 : protobuf::RemoteIoEnums::OUTPUT;
}

}  // namespace halvor::kelo
