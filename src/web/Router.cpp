#include "Router.h"

#include <stdexcept>

namespace halvor::kelo::web {
namespace {

std::vector<std::string_view> splitSegments(std::string_view path) {
  std::vector<std::string_view> segments;
  std::size_t at = 0;
  while (at < path.size()) {
    std::size_t end = path.find('/', at);
    if (end == std::string_view::npos) end = path.size();
    if (end > at) segments.push_back(path.substr(at, end - at));
    at = end + 1;
  }
  return segments;
}

}  // namespace

void Router::add(const std::string& pattern, std::uint32_t methods, std::size_t target) {
  if (pattern.empty() || pattern.front() != '/') {
    throw std::invalid_argument("A route pattern starts with '/': \"" + pattern + "\"");
  }
  Route route;
  route.methods = methods;
  route.target = target;
  bool hasParameter = false;
  for (std::string_view segment : splitSegments(pattern)) {
    bool opens = segment.front() == '{';
    bool closes = segment.back() == '}';
    std::string_view inner = segment.substr(opens ? 1 : 0);
    if (closes) inner.remove_suffix(1);
    if (opens != closes || inner.find_first_of("{}") != std::string_view::npos) {
      throw std::invalid_argument("Malformed parameter in route pattern \"" + pattern + "\"");
    }
    route.segments.push_back(Segment{std::string(opens ? inner : segment), opens});
    hasParameter = hasParameter || opens;
  }
  refuseCollision(route, pattern);
  route.pattern = pattern;
  std::size_t index = routes_.size();
  if (hasParameter) {
    parameterRoutes_.push_back(index);
  } else {
    literalRoutes_[normalize(pattern)].push_back(index);
  }
  routes_.push_back(std::move(route));
}

// Two routes that take the same paths for a common method would leave one of them unreachable:
// a mistake of whoever declared them, found at start rather than by a client.
void Router::refuseCollision(const Route& added, const std::string& pattern) const {
  for (const Route& existing : routes_) {
    const bool sameMethods =
        existing.methods == 0 || added.methods == 0 || (existing.methods & added.methods) != 0;
    if (sameMethods && sameShape(existing, added)) {
      throw std::invalid_argument("Route \"" + pattern + "\" collides with \"" + existing.pattern +
                                  "\"");
    }
  }
}

// Parameter names do not count: "/a/{x}" and "/a/{y}" take the same paths.
bool Router::sameShape(const Route& left, const Route& right) {
  if (left.segments.size() != right.segments.size()) return false;
  for (std::size_t i = 0; i < left.segments.size(); ++i) {
    const Segment& a = left.segments[i];
    const Segment& b = right.segments[i];
    if (a.parameter != b.parameter || (!a.parameter && a.text != b.text)) return false;
  }
  return true;
}

Router::Match Router::match(std::string_view path, HttpMethod method,
                            std::vector<std::string>& parameters) const {
  Match result;
  auto considerLiteral = [&](const std::vector<std::size_t>& candidates) {
    for (std::size_t index : candidates) {
      const Route& route = routes_[index];
      if (admits(route.methods, method)) {
        result.outcome = Outcome::Found;
        result.target = route.target;
        parameters.clear();
        return true;
      }
      result.outcome = Outcome::MethodNotAllowed;
      result.allowedMethods |= route.methods;
    }
    return false;
  };
  // The usual request path is already normalized; only odd ones pay for a copy.
  auto literal = isNormalized(path) ? literalRoutes_.find(std::string(path))
                                    : literalRoutes_.find(normalize(path));
  if (literal != literalRoutes_.end() && considerLiteral(literal->second)) return result;
  if (parameterRoutes_.empty()) return result;

  std::vector<std::string_view> segments = splitSegments(path);
  for (std::size_t index : parameterRoutes_) {
    const Route& route = routes_[index];
    if (!matchesSegments(route, segments)) continue;
    if (!admits(route.methods, method)) {
      result.outcome = Outcome::MethodNotAllowed;
      result.allowedMethods |= route.methods;
      continue;
    }
    parameters.clear();
    for (std::size_t i = 0; i < segments.size(); ++i) {
      if (route.segments[i].parameter) parameters.emplace_back(segments[i]);
    }
    result.outcome = Outcome::Found;
    result.target = route.target;
    return result;
  }
  return result;
}

bool Router::knowsPath(std::string_view path) const {
  if (literalRoutes_.count(normalize(path)) != 0) return true;
  std::vector<std::string_view> segments = splitSegments(path);
  for (std::size_t index : parameterRoutes_) {
    if (matchesSegments(routes_[index], segments)) return true;
  }
  return false;
}

bool Router::matchesSegments(const Route& route,
                             const std::vector<std::string_view>& segments) const {
  if (route.segments.size() != segments.size()) return false;
  for (std::size_t i = 0; i < segments.size(); ++i) {
    if (!route.segments[i].parameter && route.segments[i].text != segments[i]) return false;
  }
  return true;
}

std::uint32_t Router::maskOf(const std::vector<HttpMethod>& methods) {
  std::uint32_t mask = 0;
  for (HttpMethod method : methods) {
    if (method != Invalid) mask |= methodBit(method);
  }
  return mask;
}

std::string Router::allowHeader(std::uint32_t mask) {
  if (mask & methodBit(Get)) mask |= methodBit(Head);
  std::string text;
  for (int method = Get; method < Invalid; ++method) {
    if ((mask & methodBit(static_cast<HttpMethod>(method))) == 0) continue;
    if (!text.empty()) text += ", ";
    text += toString(static_cast<HttpMethod>(method));
  }
  return text;
}

std::size_t Router::countParameters(std::string_view pattern) {
  std::size_t count = 0;
  for (std::string_view segment : splitSegments(pattern)) {
    if (segment.front() == '{') ++count;
  }
  return count;
}

std::string Router::normalize(std::string_view path) {
  std::string result;
  result.reserve(path.size() + 1);
  for (std::string_view segment : splitSegments(path)) {
    result += '/';
    result += segment;
  }
  if (result.empty()) result = "/";
  return result;
}

bool Router::admits(std::uint32_t methods, HttpMethod method) {
  if (methods == 0) return true;
  if (methods & methodBit(method)) return true;
  return method == Head && (methods & methodBit(Get)) != 0;
}

bool Router::isNormalized(std::string_view path) {
  if (path == "/") return true;
  if (path.empty() || path.front() != '/' || path.back() == '/') return false;
  return path.find("//") == std::string_view::npos;
}

}  // namespace halvor::kelo::web
