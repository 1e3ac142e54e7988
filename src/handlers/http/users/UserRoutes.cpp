#include "kelo/handlers/http/users/UserRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/users/DeleteUser.h"
#include "kelo/handlers/http/users/GetRoleListHandler.h"
#include "kelo/handlers/http/users/GetUser.h"
#include "kelo/handlers/http/users/GetUserList.h"
#include "kelo/handlers/http/users/PostChangeUserPassword.h"
#include "kelo/handlers/http/users/PostUser.h"
#include "kelo/handlers/http/users/PutUser.h"

namespace halvor::kelo {

void UserRoutes::registerUserRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetRoleListHandler, GetUserList, PostUser, GetUser, PutUser, DeleteUser,
                    PostChangeUserPassword>(application);
}

}  // namespace halvor::kelo
