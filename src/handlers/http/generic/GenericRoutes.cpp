#include "kelo/handlers/http/generic/GenericRoutes.h"

#include "kelo/handlers/http/generic/CommandHandler.h"
#include "kelo/handlers/http/generic/DeleteResourceHandler.h"
#include "kelo/handlers/http/generic/GetResourceHandler.h"
#include "kelo/handlers/http/generic/PostResourceHandler.h"
#include "kelo/handlers/http/generic/PutResourceHandler.h"

namespace halvor::kelo {

void GenericRoutes::registerGenericRoutes(web::HttpAppFramework& application) {
  GetResourceHandler::registerRoute(application, "/api/resource", {web::Get}, "GetResourceHandler");
  PostResourceHandler::registerRoute(application, "/api/resource", {web::Post},
                                     "PostResourceHandler");
  PutResourceHandler::registerRoute(application, "/api/resource", {web::Put}, "PutResourceHandler");
  // Deleting a resource is reached under the command URL, and only there.
  CommandHandler::registerRoute(application, "/api/command", {web::Put}, "CommandHandler");
  DeleteResourceHandler::registerRoute(application, "/api/command", {web::Delete},
                                       "DeleteResourceHandler");
}

}  // namespace halvor::kelo
