#include "kelo/handlers/http/files/FileRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/files/DeleteFile.h"
#include "kelo/handlers/http/files/FileHandlerHelpers.h"
#include "kelo/handlers/http/files/GetFileList.h"
#include "kelo/handlers/http/files/GetFileUploadTargets.h"
#include "kelo/handlers/http/files/PostFiles.h"

namespace halvor::kelo {

void FileRoutes::registerFileRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetFileUploadTargets, GetFileList, PostFiles, DeleteFile>(application);
  // Uploads stream onto the file system of their target, to be moved into place.
  application.registerUploadDirectory(&FileHandlerHelpers::uploadSpoolDirectory);
}

}  // namespace halvor::kelo
