#include "kelo/handlers/http/remoteio/RemoteIoRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/remoteio/DeleteRemoteIOSiteControl.h"
#include "kelo/handlers/http/remoteio/GetRemoteIOAnalogOutputs.h"
#include "kelo/handlers/http/remoteio/GetRemoteIOInputActions.h"
#include "kelo/handlers/http/remoteio/GetRemoteIOInputRules.h"
#include "kelo/handlers/http/remoteio/GetRemoteIOOutputActions.h"
#include "kelo/handlers/http/remoteio/GetRemoteIOOutputRules.h"
#include "kelo/handlers/http/remoteio/GetRemoteIORule.h"
#include "kelo/handlers/http/remoteio/GetRemoteIOSiteControls.h"
#include "kelo/handlers/http/remoteio/PostRemoteIOSiteControl.h"
#include "kelo/handlers/http/remoteio/PutRemoteIOAnalogOutput.h"
#include "kelo/handlers/http/remoteio/PutRemoteIORule.h"
#include "kelo/handlers/http/remoteio/PutRemoteIOSiteControl.h"
#include "kelo/handlers/http/remoteio/RemoteIOSiteControlReset.h"

namespace halvor::kelo {

void RemoteIoRoutes::registerRemoteIoRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetRemoteIOAnalogOutputs, PutRemoteIOAnalogOutput, GetRemoteIOInputRules,
                    GetRemoteIOOutputRules, GetRemoteIORule, PutRemoteIORule,
                    GetRemoteIOInputActions, GetRemoteIOOutputActions, GetRemoteIOSiteControls,
                    PostRemoteIOSiteControl, PutRemoteIOSiteControl, DeleteRemoteIOSiteControl,
                    RemoteIOSiteControlReset>(application);
}

}  // namespace halvor::kelo
