#include "kelo/handlers/http/snmp/PutSnmpSettingsHandler.h"

#include <memory>
#include <vector>

#include "halvor/protobuf/Snmp.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/snmp/SnmpSettingsHelperClass.h"
#include "kelo/handlers/toolkit/BackgroundConfirmation.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutSnmpSettingsHandler::putSnmpSettings(const web::HttpRequestPtr& req,
                                             web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                             tavelabi::IPluginInfo* info, std::string sessionId,
                                             web::ResponseCallback callback) {
  // The converter's status is not looked at: what does not parse stays at its default.
  protobuf::SNMPSettings settings;
  (void)JsonOptions::fromJson(std::string(req->body()), settings);
  SnmpSettingsHelperClass::setSnmpSettings(req, tavel, info, sessionId, &settings);
  // Which resources are confirmed is the one state of the loop; only its task touches it.
  auto done = std::make_shared<std::vector<bool>>();
  BackgroundConfirmation::start(
      {req, resp, std::move(callback)}, kConfirmationPeriod, [req, tavel, info, sessionId, done] {
        return SnmpSettingsHelperClass::confirmPass(req, tavel, info, sessionId, *done);
      });
}

}  // namespace halvor::kelo
