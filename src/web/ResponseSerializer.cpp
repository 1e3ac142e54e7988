#include "ResponseSerializer.h"

#include <charconv>
#include <ctime>

#include "FieldLookup.h"

namespace halvor::kelo::web {
namespace {

void appendNumber(std::string& out, std::uint64_t value) {
  char digits[24];
  auto result = std::to_chars(digits, digits + sizeof(digits), value);
  out.append(digits, result.ptr);
}

bool ownedByServer(const std::string& name) {
  return FieldLookup::equalsIgnoreCase(name, "content-length") ||
         FieldLookup::equalsIgnoreCase(name, "transfer-encoding") ||
         FieldLookup::equalsIgnoreCase(name, "connection") ||
         FieldLookup::equalsIgnoreCase(name, "date");
}

// CR or LF in a header would let a value start a header of its own.
void appendFieldText(std::string& out, const std::string& text) {
  if (text.find_first_of("\r\n") == std::string::npos) {
    out += text;
    return;
  }
  for (char c : text) {
    if (c != '\r' && c != '\n') out += c;
  }
}

}  // namespace

bool ResponseSerializer::statusHasBody(int status) {
  return !(status < 200 || status == 204 || status == 304);
}

const std::string& ResponseSerializer::dateLine() {
  thread_local std::time_t cachedSecond = 0;
  thread_local std::string line;
  std::time_t now = std::time(nullptr);
  if (now != cachedSecond || line.empty()) {
    cachedSecond = now;
    std::tm parts{};
    gmtime_r(&now, &parts);
    char text[64];
    std::size_t length =
        std::strftime(text, sizeof(text), "Date: %a, %d %b %Y %H:%M:%S GMT\r\n", &parts);
    line.assign(text, length);
  }
  return line;
}

void ResponseSerializer::writeHead(const HttpResponse& response, const Options& options,
                                   std::string& out) {
  int status = response.statusCode();
  if (status < 100 || status > 999) status = k500InternalServerError;
  out.clear();
  out += "HTTP/1.1 ";
  appendNumber(out, static_cast<std::uint64_t>(status));
  out += ' ';
  out += statusReason(status);
  out += "\r\n";
  if (statusHasBody(status) || status == 204 || status == 304) {
    if (status != 204 && (status >= 200)) {
      out += "Content-Length: ";
      appendNumber(out, response.bodyView().size());
      out += "\r\n";
    }
  }
  std::string_view contentType = response.contentTypeString();
  if (!contentType.empty()) {
    out += "Content-Type: ";
    out += contentType;
    out += "\r\n";
  }
  out += dateLine();
  if (options.serverHeader) out += "Server: kelo\r\n";
  for (const auto& [name, value] : response.headers()) {
    if (ownedByServer(name)) continue;
    appendFieldText(out, name);
    out += ": ";
    appendFieldText(out, value);
    out += "\r\n";
  }
  for (const auto& [name, value] : response.cookies()) {
    out += "Set-Cookie: ";
    appendFieldText(out, name);
    out += '=';
    appendFieldText(out, value);
    out += "; HttpOnly";
    out += options.cookieAttributes;
    out += "\r\n";
  }
  if (options.close) {
    out += "Connection: close\r\n";
  } else if (options.keepAliveHeader) {
    out += "Connection: keep-alive\r\n";
  }
  out += "\r\n";
}

}  // namespace halvor::kelo::web
