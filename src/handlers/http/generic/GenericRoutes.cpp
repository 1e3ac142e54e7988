#include "kelo/handlers/http/generic/GenericRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/generic/CommandHandler.h"
#include "kelo/handlers/http/generic/DeleteResourceHandler.h"
#include "kelo/handlers/http/generic/GetResourceHandler.h"
#include "kelo/handlers/http/generic/PostResourceHandler.h"
#include "kelo/handlers/http/generic/PutResourceHandler.h"

namespace halvor::kelo {

void GenericRoutes::registerGenericRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetResourceHandler, PostResourceHandler, PutResourceHandler, CommandHandler,
                    DeleteResourceHandler>(application);
}

}  // namespace halvor::kelo
