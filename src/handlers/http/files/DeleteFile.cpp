#include "kelo/handlers/http/files/DeleteFile.h"

#include "kelo/handlers/http/files/FileHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void DeleteFile::deleteFile(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                            tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                            std::string sessionId, std::string guid) {
  // Deleting is the host's: it knows where the file lies and remounts the stick itself.
  tavelabi::Resource request;
  request.addValue("fileGuid", tavelabi::ResourceValue(guid));
  KeloResourceAction action(tavelabi::CCRUD::Command, FileHandlerHelpers::kDeleteCommandPath,
                            request, info, sessionId, req);
  (void)tavel->processResourceAction(action);
  resp->setStatusCode(200);
}

}  // namespace halvor::kelo
