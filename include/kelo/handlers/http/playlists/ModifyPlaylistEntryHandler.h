#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// PUT "/1/api/playlists/{operationType}/{guid}": "add_entry", "remove_entry" or "reorder" an entry,
// with form fields; another operation goes to the host with an empty path, which refuses it.
class ModifyPlaylistEntryHandler : public web::HttpController<ModifyPlaylistEntryHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(modifyPlaylistEntry, "/api/playlists/{operationType}/{guid}", web::Put)
  KELO_ROUTES_END

  virtual void modifyPlaylistEntry(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                   tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                   std::string sessionId, std::string operationType,
                                   std::string guid);
};

}  // namespace halvor::kelo
