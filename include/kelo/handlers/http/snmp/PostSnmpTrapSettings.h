#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// POST "/1/api/snmp_trap_settings": a new trap receiver from an SNMPTrapSettings body; the answer
// is the receiver the host made, found by the list's "previouslyAdded". Limits are the host's to
// check.
class PostSnmpTrapSettings : public web::KeloHttpController<PostSnmpTrapSettings, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/snmp_trap_settings", web::Post)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
