#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// POST "/1/api/files/{fileType}?targetMountedVolume=<volume>": a multipart upload written to the
// volume, then announced to the host; 200 with no body.
class PostFiles : public web::HttpController<PostFiles, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(uploadFiles, "/api/files/{fileType}", web::Post)
  KELO_ROUTES_END

  virtual void uploadFiles(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                           tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                           std::string sessionId, std::string fileType);
  // The upload itself; the route passes false for skip (true writes nothing, for tests).
  void postFiles(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                 const std::string& fileType, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                 const std::string& sessionId, bool skip);
};

}  // namespace halvor::kelo
