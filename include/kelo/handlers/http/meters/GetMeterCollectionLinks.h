#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/meters/collections/links": a link (path and label) to each collection that has at
// least one meter, in the order of the host's collection list.
class GetMeterCollectionLinks : public web::KeloHttpController<GetMeterCollectionLinks, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/meters/collections/links", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
