#include "kelo/handlers/http/notifications/NotificationRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/notifications/DeleteNotificationHandler.h"
#include "kelo/handlers/http/notifications/GetEmailServerSettingsHandler.h"
#include "kelo/handlers/http/notifications/GetNotificationHandler.h"
#include "kelo/handlers/http/notifications/GetNotificationListHandler.h"
#include "kelo/handlers/http/notifications/PostNotificationHandler.h"
#include "kelo/handlers/http/notifications/PutEmailServerSettingsHandler.h"
#include "kelo/handlers/http/notifications/PutNotificationHandler.h"

namespace halvor::kelo {

void NotificationRoutes::registerNotificationRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetNotificationListHandler, PostNotificationHandler, GetNotificationHandler,
                    PutNotificationHandler, DeleteNotificationHandler,
                    GetEmailServerSettingsHandler, PutEmailServerSettingsHandler>(application);
}

}  // namespace halvor::kelo
