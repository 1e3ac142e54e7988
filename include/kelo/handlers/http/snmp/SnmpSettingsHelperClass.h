#pragma once

#include <memory>
#include <string>
#include <vector>

#include "halvor/protobuf/Snmp.pb.h"
#include "kelo/KeloLog.h"
#include "kelo/handlers/http/KeloResourceAction.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// The SNMP agent's settings and trap receivers under the host's "/snmp".
class SnmpSettingsHelperClass {
 public:
  SnmpSettingsHelperClass() = delete;

  static constexpr const char* kAgentPort = "/snmp/agentPort";
  static constexpr const char* kReadCommunity = "/snmp/readCommunity";
  static constexpr const char* kWriteCommunity = "/snmp/writeCommunity";
  static constexpr const char* kTrapsEnabled = "/snmp/trapsEnabled";
  static constexpr const char* kTrapSettings = "/snmp/trapSettings";
  static constexpr const char* kTrapValidations = "/snmp/trapSettings/validations";
  static constexpr const char* kTrapList = "/snmp/trapSettings/list";
  static constexpr const char* kNewTrapCommand = "/snmp/command/newTrapSetting";
  static constexpr const char* kDeleteTrapCommand = "/snmp/command/deleteTrapSetting";

  // The five resources a PUT of the settings writes, in the order they are confirmed.
  static const std::vector<std::string>& confirmedPaths();

  static std::string makeTrapSettingResourcePath(const std::string& guid);
  static protobuf::SNMPTrapSettings getTrapSettingFromResource(tavelabi::Resource resource);
  static tavelabi::Resource getTrapSettingResourceFromProtobuf(
      const protobuf::SNMPTrapSettings& settings);

  static std::shared_ptr<protobuf::SNMPSettings> getSnmpSettings(const web::HttpRequestPtr& req,
                                                                 tavelabi::ITavel* tavel,
                                                                 tavelabi::IPluginInfo* info,
                                                                 const std::string& sessionId);
  static std::shared_ptr<protobuf::SNMPTrapSettingsList> getListOfAllTrapSettings(
      const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
      const std::string& sessionId);
  static void setSnmpSettings(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                              tavelabi::IPluginInfo* info, const std::string& sessionId,
                              const protobuf::SNMPSettings* settings);

  // Writes `value` as "set_value" of `path` together with what the host holds there: the
  // resource is read first, and a failed read is only logged (the write goes on with the one
  // key). T is int, bool or std::vector<std::string>.
  template <class T>
  static void updateResource(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                             tavelabi::IPluginInfo* info, const std::string& sessionId,
                             const std::string& path, T value) {
    tavelabi::Resource resource;
    try {
      KeloResourceAction read(tavelabi::CCRUD::Read, path, info, sessionId, req);
      resource = tavel->processResourceAction(read);
    } catch (...) {
      KELO_LOG(ERROR, info->getLoggerId()) << "Failed to read resource = " << path;
    }
    resource.values["set_value"] = tavelabi::ResourceValue(value);
    KeloResourceAction update(tavelabi::CCRUD::Update, path, resource, info, sessionId, req);
    (void)tavel->processResourceAction(update);
  }

  // One pass of the confirmation: reads each path of confirmedPaths() not yet in `done` and
  // adds it there when its "value" equals its "set_value". True when all are done.
  static bool confirmPass(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                          tavelabi::IPluginInfo* info, const std::string& sessionId,
                          std::vector<bool>& done);
};

}  // namespace halvor::kelo
