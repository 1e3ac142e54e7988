#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kelo/web/HttpTypes.h"

namespace halvor::kelo::web {

// Path patterns to route numbers. Knows nothing of sockets or HTTP messages: paths in, route
// numbers and parameters out. Empty segments do not count ("//a///b/" is "/a/b"); a segment
// "{name}" matches any one non-empty segment and hands it out as a parameter.
class Router {
 public:
  enum class Outcome { Found, NotFound, MethodNotAllowed };
  struct Match {
    Outcome outcome = Outcome::NotFound;
    std::size_t target = 0;
    // Methods of the routes whose pattern matched, for an Allow header (with MethodNotAllowed).
    std::uint32_t allowedMethods = 0;
  };

  // `methods` is a mask of methodBit(); 0 admits every method. Throws std::invalid_argument on
  // a pattern that does not start with "/" or has a malformed "{...}" segment, and on a route
  // that collides with one already added: the same segments, parameters at the same places
  // whatever their names, and a method in common.
  void add(const std::string& pattern, std::uint32_t methods, std::size_t target);
  // Literal routes win over routes with parameters; among those, the first registered wins.
  // HEAD is admitted where GET is. `parameters` receives the parameter values when Found.
  Match match(std::string_view path, HttpMethod method, std::vector<std::string>& parameters) const;
  // True when some route's pattern matches `path`, whatever the method.
  bool knowsPath(std::string_view path) const;

  static constexpr std::uint32_t methodBit(HttpMethod method) { return 1u << method; }
  static std::uint32_t maskOf(const std::vector<HttpMethod>& methods);
  // "GET, HEAD, POST" for a mask (HEAD added where GET is).
  static std::string allowHeader(std::uint32_t mask);
  static std::size_t countParameters(std::string_view pattern);
  // "//a///b/" -> "/a/b"; "" -> "/".
  static std::string normalize(std::string_view path);

 private:
  struct Segment {
    std::string text;
    bool parameter = false;
  };
  struct Route {
    std::string pattern;
    std::vector<Segment> segments;
    std::uint32_t methods = 0;
    std::size_t target = 0;
  };

  static bool admits(std::uint32_t methods, HttpMethod method);
  static bool sameShape(const Route& left, const Route& right);
  void refuseCollision(const Route& added, const std::string& pattern) const;
  static bool isNormalized(std::string_view path);
  bool matchesSegments(const Route& route, const std::vector<std::string_view>& segments) const;

  std::vector<Route> routes_;
  std::unordered_map<std::string, std::vector<std::size_t>> literalRoutes_;
  std::vector<std::size_t> parameterRoutes_;
};

}  // namespace halvor::kelo::web
