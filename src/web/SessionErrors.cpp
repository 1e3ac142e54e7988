#include "SessionErrors.h"

#include <boost/asio/error.hpp>
#include <boost/asio/ssl/error.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/websocket/error.hpp>
#include <string>

#include "kelo/web/Log.h"

namespace halvor::kelo::web {

bool SessionErrors::isHarmless(const boost::beast::error_code& ec) {
  namespace error = boost::asio::error;
  return ec == error::operation_aborted || ec == error::eof || ec == error::connection_reset ||
         ec == error::broken_pipe || ec == error::not_connected || ec == error::bad_descriptor ||
         ec == error::connection_aborted || ec == error::timed_out ||
         ec == boost::asio::ssl::error::stream_truncated ||
         ec == boost::beast::websocket::error::closed || ec == boost::beast::error::timeout ||
         ec == boost::beast::http::error::end_of_stream ||
         ec == boost::beast::http::error::partial_message;
}

void SessionErrors::fail(const boost::beast::error_code& ec, std::string_view what) {
  if (isHarmless(ec) || !logEnabled(kWarn)) return;
  logLine(kWarn, std::string(what) + ": " + ec.message());
}

}  // namespace halvor::kelo::web
