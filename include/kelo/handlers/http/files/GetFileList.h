#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// GET "/1/api/files/{fileType}": the host's list of the files of a type word, as a FileList.
class GetFileList : public web::HttpController<GetFileList, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(getFileList, "/api/files/{fileType}", web::Get)
  KELO_ROUTES_END

  virtual void getFileList(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                           tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                           std::string sessionId, std::string fileType);
};

}  // namespace halvor::kelo
