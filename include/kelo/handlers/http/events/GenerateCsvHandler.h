#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// POST "/1/api/events/generateCsv": has the host write the event log, sorted and filtered by
// the query ("type", "ordering"), as a CSV file. The file is the host's: nothing is answered
// but the status.
class GenerateCsvHandler : public web::KeloHttpController<GenerateCsvHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/events/generateCsv", web::Post)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
