#include "kelo/handlers/http/alarms/GetAllAlarms.h"

#include "halvor/factories/MonitoringFactories.h"
#include "kelo/handlers/http/alarms/AlarmEndpointHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

namespace {

// The paths of the alarm lists. The host lists paths for the plug-in's own session, not the
// client's: which lists exist is the plug-in's business, what is in them the client's.
tavelabi::Resource alarmListPaths(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                  tavelabi::IPluginInfo* info) {
  const tavelabi::Resource pattern("value", tavelabi::ResourceValue("/alarms/**/list"));
  KeloResourceAction list(tavelabi::CCRUD::Command, "/resource/list", pattern, info,
                          info->getSessionId(), req);
  return tavel->processResourceAction(list);
}

}  // namespace

void GetAllAlarms::processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                      tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                      std::string sessionId) {
  const tavelabi::Resource lists = alarmListPaths(req, tavel, info);
  protobuf::HalvorPbFactory2AlarmList factory;
  const std::shared_ptr<protobuf::AlarmList> alarms = factory.build(nullptr);
  for (const tavelabi::ResourceValue& listPath : lists.values.at("value").getListValue()) {
    for (const std::string& alarmPath :
         HostReads::readTexts(req, tavel, info, sessionId, listPath.getStringValue())) {
      // Duplicates are kept: an alarm in two lists is answered twice.
      *alarms->add_alarms() =
          *AlarmEndpointHelperClass::getCurrentAlarmInfo(req, tavel, info, sessionId, alarmPath);
    }
  }
  JsonReplies::reply(resp, *alarms);
}

}  // namespace halvor::kelo
