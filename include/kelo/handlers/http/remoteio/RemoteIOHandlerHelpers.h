#pragma once

#include <memory>
#include <string>
#include <vector>

#include "halvor/factories/RemoteIoFactories.h"
#include "halvor/protobuf/RemoteIo.pb.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo {

// Remote inputs, outputs, analog outputs and site controls under the host's "/remoteio/": host
// resources into messages, the front end's JSON back into flat host resources, and the waits
// that follow a save. A read gives "set_value" and "polarityMask" as integers; a write sends
// them as decimal text.
class RemoteIOHandlerHelpers {
 public:
  RemoteIOHandlerHelpers() = delete;

  static constexpr const char* kPrefix = "/remoteio/";
  static constexpr const char* kSiteControlPrefix = "/remoteio/siteControl/";
  static constexpr const char* kAnalogPrefix = "/remoteio/analog/";
  static constexpr const char* kDeletedText = "Successfully deleted Site Control.";

  static std::shared_ptr<protobuf::AnalogOutput> makeRemoteIoAnalogOutput(
      tavelabi::Resource resource);
  static std::shared_ptr<protobuf::SiteControl> makeRemoteIoSiteControl(
      tavelabi::Resource resource);
  static std::shared_ptr<protobuf::RemoteIoRule> makeRemoteIoRule(tavelabi::Resource resource,
                                                                  protobuf::RemoteIoType type);
  static protobuf::RemoteIoAction makeRemoteIoAction(int channelId, std::string label,
                                                     protobuf::RemoteIoType type,
                                                     std::vector<std::string> names,
                                                     std::vector<int> masks);

  static tavelabi::Resource makeRemoteRuleResource(std::string json);
  static tavelabi::Resource makeRemoteAnalogOutputResource(std::string json);
  static tavelabi::Resource makeRemoteSiteControlResource(std::string json);

  // Each repeats `action` until the host's answer holds "transitioning" = false, with no pause
  // and no limit, and returns the settled object as JSON.
  static std::string waitForRuleSave(tavelabi::ResourceAction action, protobuf::RemoteIoType type,
                                     tavelabi::ITavel* tavel);
  static std::string waitForSiteControlSave(tavelabi::ResourceAction action,
                                            tavelabi::ITavel* tavel);
  static std::string waitForAnalogSave(tavelabi::ResourceAction action, tavelabi::ITavel* tavel);
  // A site control saved by Command `commandPath` (create or update) with the request's body, then
  // waited for under the guid that the Command's answer holds; the settled object as JSON.
  static std::string saveSiteControl(const std::string& commandPath, const web::HttpRequestPtr& req,
                                     tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                     const std::string& sessionId);
  // Repeats the read until the host says the object does not exist; other failures pass.
  static std::string waitForSiteControlDelete(tavelabi::ResourceAction action,
                                              tavelabi::ITavel* tavel);

  // INPUT when the text holds "input", otherwise OUTPUT.
  static protobuf::RemoteIoType typeOfGuid(const std::string& guid);

 private:
  // Polls until "transitioning" is there and false; the last answer.
  static tavelabi::Resource settled(tavelabi::ResourceAction& action, tavelabi::ITavel* tavel);
  static bool isSettled(const tavelabi::Resource& answer);
};

}  // namespace halvor::kelo
