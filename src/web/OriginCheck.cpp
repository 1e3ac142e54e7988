#include "OriginCheck.h"

#include <algorithm>
#include <cctype>
#include <optional>

namespace halvor::kelo::web {

namespace {

std::string lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

struct Site {
  std::string scheme;
  std::string authority;  // host[:port], without the scheme's default port
};

// "https://Example.org:443/" -> {"https", "example.org"}; nothing for a text that is no origin.
std::optional<Site> siteOf(const std::string& origin) {
  const std::string text = lowered(origin);
  const std::size_t separator = text.find("://");
  if (separator == std::string::npos || separator == 0) return std::nullopt;
  Site site{text.substr(0, separator), text.substr(separator + 3)};
  while (!site.authority.empty() && site.authority.back() == '/') site.authority.pop_back();
  if (site.authority.empty() || site.authority.find('/') != std::string::npos) return std::nullopt;
  const std::string defaultPort = site.scheme == "https" || site.scheme == "wss" ? ":443" : ":80";
  if (site.authority.size() > defaultPort.size() &&
      site.authority.compare(site.authority.size() - defaultPort.size(), defaultPort.size(),
                             defaultPort) == 0) {
    site.authority.resize(site.authority.size() - defaultPort.size());
  }
  return site;
}

// The Host header in the form of an origin's authority: its port is dropped when it is the
// default port of the origin's scheme.
std::string hostAuthority(const std::string& host, const std::string& scheme) {
  std::optional<Site> site = siteOf(scheme + "://" + host);
  return site ? site->authority : std::string();
}

bool isTrusted(const Site& site, const std::vector<std::string>& trusted) {
  for (const std::string& entry : trusted) {
    if (entry == "*") return true;
    std::optional<Site> trustedSite = siteOf(entry);
    if (trustedSite && trustedSite->scheme == site.scheme &&
        trustedSite->authority == site.authority) {
      return true;
    }
  }
  return false;
}

}  // namespace

bool OriginCheck::allows(const std::string& origin, const std::string& host,
                         const std::vector<std::string>& trusted) {
  if (origin.empty()) return true;
  std::optional<Site> site = siteOf(origin);
  if (!site) return std::find(trusted.begin(), trusted.end(), "*") != trusted.end();
  if (!host.empty() && site->authority == hostAuthority(host, site->scheme)) return true;
  return isTrusted(*site, trusted);
}

}  // namespace halvor::kelo::web
