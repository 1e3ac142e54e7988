#include "kelo/handlers/http/files/GetFileUploadTargets.h"

#include "kelo/handlers/http/files/FileHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetFileUploadTargets::processHttpRequest(const web::HttpRequestPtr& req,
                                              web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                              tavelabi::IPluginInfo* info, std::string sessionId) {
  const std::string fileType = QueryParameters::required(req, "fileType");
  JsonReplies::reply(resp, *FileHandlerHelpers::getStorageVolumesForFileType(req, tavel, info,
                                                                             sessionId, fileType));
}

}  // namespace halvor::kelo
