#include "kelo/handlers/http/files/GetFileList.h"

#include "kelo/handlers/http/files/FileHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetFileList::getFileList(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                              tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                              std::string sessionId, std::string fileType) {
  const std::string listPath = FileHandlerHelpers::getPathToList(fileType);
  JsonReplies::reply(resp, *FileHandlerHelpers::getFileList(req, tavel, info, sessionId, listPath));
}

}  // namespace halvor::kelo
