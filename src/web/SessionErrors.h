#pragma once

#include <boost/beast/core/error.hpp>
#include <string_view>

namespace halvor::kelo::web {

// The one place that decides which socket errors are worth a log line.
class SessionErrors {
 public:
  // Ends of connections that happen all the time: the peer went away, we closed, a timeout.
  static bool isHarmless(const boost::beast::error_code& ec);
  // Logs `what` and the error (at warning level) unless it is harmless.
  static void fail(const boost::beast::error_code& ec, std::string_view what);
};

}  // namespace halvor::kelo::web
