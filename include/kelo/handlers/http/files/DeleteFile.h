#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// DELETE "/1/api/files/{guid}": asks the host to delete the file; the plug-in does not touch the
// disk.
class DeleteFile : public web::HttpController<DeleteFile, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(deleteFile, "/api/files/{guid}", web::Delete)
  KELO_ROUTES_END

  virtual void deleteFile(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId, std::string guid);
};

}  // namespace halvor::kelo
