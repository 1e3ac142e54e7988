#pragma once

#include <string>
#include <vector>

namespace halvor::kelo::web {

// Whether a browser page may open a WebSocket to us. A page of another site would otherwise
// open the operator's live connections with his cookie, since browsers send cookies with
// WebSocket upgrades whatever page asks for them.
class OriginCheck {
 public:
  OriginCheck() = delete;

  // True when `origin` is empty (clients that are no browser send none), names the same site
  // as the request's `host` (scheme's default port or none alike), or is one of `trusted`
  // ("*" trusts every origin). "null" and texts that are no origin are refused.
  static bool allows(const std::string& origin, const std::string& host,
                     const std::vector<std::string>& trusted);
};

}  // namespace halvor::kelo::web
