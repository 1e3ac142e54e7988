#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace halvor::kelo::web {

class HttpRequest;
class HttpResponse;
using HttpRequestPtr = std::shared_ptr<HttpRequest>;
using HttpResponsePtr = std::shared_ptr<HttpResponse>;

// The answer path of a handler. It may be called from any thread, once; the layer posts the
// response to the connection's own I/O thread.
using ResponseCallback = std::function<void(const HttpResponsePtr&)>;
// Pre-routing advice callbacks: the first answers the request at once, the second lets it go on.
using AdviceCallback = std::function<void(const HttpResponsePtr&)>;
using AdviceChainCallback = std::function<void()>;

// The numbering is part of the interface: route listings print it.
enum HttpMethod : int {
  Get = 0,
  Post = 1,
  Head = 2,
  Put = 3,
  Delete = 4,
  Options = 5,
  Patch = 6,
  Invalid = 7
};

// "GET", "POST", ..., "INVALID".
std::string_view toString(HttpMethod method);
// Exact, case-sensitive method token to HttpMethod; Invalid for anything else.
HttpMethod parseHttpMethod(std::string_view token);

// Any value in 100..999 can be sent (440 included); the named ones are the usual ones.
enum HttpStatusCode : int {
  kUnknown = 0,
  k100Continue = 100,
  k101SwitchingProtocols = 101,
  k200OK = 200,
  k201Created = 201,
  k202Accepted = 202,
  k204NoContent = 204,
  k206PartialContent = 206,
  k301MovedPermanently = 301,
  k302Found = 302,
  k304NotModified = 304,
  k400BadRequest = 400,
  k401Unauthorized = 401,
  k403Forbidden = 403,
  k404NotFound = 404,
  k405MethodNotAllowed = 405,
  k408RequestTimeout = 408,
  k409Conflict = 409,
  k413RequestEntityTooLarge = 413,
  k415UnsupportedMediaType = 415,
  k431RequestHeaderFieldsTooLarge = 431,
  k500InternalServerError = 500,
  k501NotImplemented = 501,
  k503ServiceUnavailable = 503
};

// Reason phrase for a status line; "Unknown" for codes without a well-known phrase.
std::string_view statusReason(int code);

enum ContentType : int {
  CT_NONE = 0,
  CT_APPLICATION_JSON,
  CT_TEXT_PLAIN,
  CT_TEXT_HTML,
  CT_APPLICATION_X_FORM,
  CT_APPLICATION_X_JAVASCRIPT,
  CT_TEXT_CSS,
  CT_TEXT_XML,
  CT_APPLICATION_XML,
  CT_TEXT_XSL,
  CT_APPLICATION_WASM,
  CT_APPLICATION_OCTET_STREAM,
  CT_APPLICATION_X_FONT_TRUETYPE,
  CT_APPLICATION_X_FONT_OPENTYPE,
  CT_APPLICATION_FONT_WOFF,
  CT_APPLICATION_FONT_WOFF2,
  CT_APPLICATION_VND_MS_FONTOBJ,
  CT_APPLICATION_PDF,
  CT_IMAGE_SVG_XML,
  CT_IMAGE_PNG,
  CT_IMAGE_WEBP,
  CT_IMAGE_AVIF,
  CT_IMAGE_JPG,
  CT_IMAGE_GIF,
  CT_IMAGE_XICON,
  CT_IMAGE_ICNS,
  CT_IMAGE_BMP,
  CT_MULTIPART_FORM_DATA,
  CT_CUSTOM
};

// The Content-Type header value of a code ("application/json; charset=utf-8", ...); empty for
// CT_NONE and CT_CUSTOM.
std::string_view contentTypeString(ContentType type);
// Content type of a file extension without the dot ("html", "png"); CT_APPLICATION_OCTET_STREAM
// for unknown extensions.
ContentType contentTypeForExtension(std::string_view extension);

enum class WebSocketMessageType { Text, Binary, Ping, Pong, Close, Unknown };

// WebSocket close codes; any uint16_t code can be sent with WebSocketConnection::shutdown.
enum CloseCode : std::uint16_t {
  kNormalClosure = 1000,
  kEndpointGone = 1001,
  kProtocolError = 1002,
  kInvalidMessage = 1003,
  kNone = 1005,
  kAbnormally = 1006,
  kWrongMessageContent = 1007,
  kViolation = 1008,
  kMessageTooBig = 1009,
  kNeedMoreExtensions = 1010,
  kUnexpectedCondition = 1011
};

}  // namespace halvor::kelo::web
