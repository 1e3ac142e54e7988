#include "kelo/web/HttpTypes.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>

namespace halvor::kelo::web {

std::string_view toString(HttpMethod method) {
  switch (method) {
    case Get:
      return "GET";
    case Post:
      return "POST";
    case Head:
      return "HEAD";
    case Put:
      return "PUT";
    case Delete:
      return "DELETE";
    case Options:
      return "OPTIONS";
    case Patch:
      return "PATCH";
    case Invalid:
      break;
  }
  return "INVALID";
}

HttpMethod parseHttpMethod(std::string_view token) {
  static constexpr std::array<HttpMethod, 7> kMethods = {Get,    Post,    Head, Put,
                                                         Delete, Options, Patch};
  for (HttpMethod method : kMethods) {
    if (toString(method) == token) return method;
  }
  return Invalid;
}

std::string_view statusReason(int code) {
  switch (code) {
    case 100:
      return "Continue";
    case 101:
      return "Switching Protocols";
    case 200:
      return "OK";
    case 201:
      return "Created";
    case 202:
      return "Accepted";
    case 204:
      return "No Content";
    case 206:
      return "Partial Content";
    case 301:
      return "Moved Permanently";
    case 302:
      return "Found";
    case 304:
      return "Not Modified";
    case 400:
      return "Bad Request";
    case 401:
      return "Unauthorized";
    case 403:
      return "Forbidden";
    case 404:
      return "Not Found";
    case 405:
      return "Method Not Allowed";
    case 408:
      return "Request Timeout";
    case 409:
      return "Conflict";
    case 413:
      return "Request Entity Too Large";
    case 415:
      return "Unsupported Media Type";
    case 431:
      return "Request Header Fields Too Large";
    case 440:
      // The status by which the front end learns that its session is gone.
      return "Login Time-out";
    case 500:
      return "Internal Server Error";
    case 501:
      return "Not Implemented";
    case 503:
      return "Service Unavailable";
    default:
      return "Unknown";
  }
}

std::string_view contentTypeString(ContentType type) {
  switch (type) {
    case CT_APPLICATION_JSON:
      return "application/json; charset=utf-8";
    case CT_TEXT_PLAIN:
      return "text/plain; charset=utf-8";
    case CT_TEXT_HTML:
      return "text/html; charset=utf-8";
    case CT_APPLICATION_X_FORM:
      return "application/x-www-form-urlencoded";
    case CT_APPLICATION_X_JAVASCRIPT:
      return "application/javascript; charset=utf-8";
    case CT_TEXT_CSS:
      return "text/css; charset=utf-8";
    case CT_TEXT_XML:
      return "text/xml; charset=utf-8";
    case CT_APPLICATION_XML:
      return "application/xml; charset=utf-8";
    case CT_TEXT_XSL:
      return "text/xsl; charset=utf-8";
    case CT_APPLICATION_WASM:
      return "application/wasm";
    case CT_APPLICATION_OCTET_STREAM:
      return "application/octet-stream";
    case CT_APPLICATION_X_FONT_TRUETYPE:
      return "application/x-font-truetype";
    case CT_APPLICATION_X_FONT_OPENTYPE:
      return "application/x-font-opentype";
    case CT_APPLICATION_FONT_WOFF:
      return "application/font-woff";
    case CT_APPLICATION_FONT_WOFF2:
      return "application/font-woff2";
    case CT_APPLICATION_VND_MS_FONTOBJ:
      return "application/vnd.ms-fontobject";
    case CT_APPLICATION_PDF:
      return "application/pdf";
    case CT_IMAGE_SVG_XML:
      return "image/svg+xml";
    case CT_IMAGE_PNG:
      return "image/png";
    case CT_IMAGE_WEBP:
      return "image/webp";
    case CT_IMAGE_AVIF:
      return "image/avif";
    case CT_IMAGE_JPG:
      return "image/jpeg";
    case CT_IMAGE_GIF:
      return "image/gif";
    case CT_IMAGE_XICON:
      return "image/x-icon";
    case CT_IMAGE_ICNS:
      return "image/icns";
    case CT_IMAGE_BMP:
      return "image/bmp";
    case CT_MULTIPART_FORM_DATA:
      return "multipart/form-data";
    case CT_NONE:
    case CT_CUSTOM:
      break;
  }
  return {};
}

ContentType contentTypeForExtension(std::string_view extension) {
  std::string ext(extension);
  std::transform(ext.begin(), ext.end(), ext.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  struct Entry {
    std::string_view ext;
    ContentType type;
  };
  static constexpr std::array<Entry, 27> kTable = {{
      {"html", CT_TEXT_HTML},
      {"htm", CT_TEXT_HTML},
      {"js", CT_APPLICATION_X_JAVASCRIPT},
      {"mjs", CT_APPLICATION_X_JAVASCRIPT},
      {"css", CT_TEXT_CSS},
      {"xml", CT_TEXT_XML},
      {"xsl", CT_TEXT_XSL},
      {"txt", CT_TEXT_PLAIN},
      {"map", CT_APPLICATION_JSON},
      {"svg", CT_IMAGE_SVG_XML},
      {"ttf", CT_APPLICATION_X_FONT_TRUETYPE},
      {"otf", CT_APPLICATION_X_FONT_OPENTYPE},
      {"woff", CT_APPLICATION_FONT_WOFF},
      {"woff2", CT_APPLICATION_FONT_WOFF2},
      {"eot", CT_APPLICATION_VND_MS_FONTOBJ},
      {"png", CT_IMAGE_PNG},
      {"jpg", CT_IMAGE_JPG},
      {"jpeg", CT_IMAGE_JPG},
      {"gif", CT_IMAGE_GIF},
      {"bmp", CT_IMAGE_BMP},
      {"ico", CT_IMAGE_XICON},
      {"icns", CT_IMAGE_ICNS},
      {"webp", CT_IMAGE_WEBP},
      {"avif", CT_IMAGE_AVIF},
      {"wasm", CT_APPLICATION_WASM},
      {"pdf", CT_APPLICATION_PDF},
      {"json", CT_APPLICATION_JSON},
  }};
  for (const Entry& entry : kTable) {
    if (entry.ext == ext) return entry.type;
  }
  return CT_APPLICATION_OCTET_STREAM;
}

}  // namespace halvor::kelo::web
