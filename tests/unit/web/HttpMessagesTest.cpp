#include <gtest/gtest.h>

#include "ResponseSerializer.h"
#include "UrlCodec.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/HttpResponse.h"
#include "kelo/web/InetAddress.h"

using namespace halvor::kelo::web;

namespace {

TEST(HttpRequestTest, HeadersAreCaseInsensitive) {
  auto req = HttpRequest::newHttpRequest();
  req->addHeader("Content-Type", "application/json; charset=utf-8");
  req->addHeader("X-Token", "a");
  EXPECT_EQ(req->getHeader("content-type"), "application/json; charset=utf-8");
  EXPECT_EQ(req->getHeader("X-TOKEN"), "a");
  EXPECT_EQ(req->getHeader("missing"), "");
  EXPECT_EQ(req->contentType(), CT_APPLICATION_JSON);
  EXPECT_EQ(req->headers().size(), 2u);
}

TEST(HttpRequestTest, CookiesFromTheCookieHeader) {
  auto req = HttpRequest::newHttpRequest();
  req->addHeader("Cookie", "SessionID=abc123; theme=\"dark\";  empty=; bad");
  EXPECT_EQ(req->getCookie("SessionID"), "abc123");
  EXPECT_EQ(req->getCookie("theme"), "dark");
  EXPECT_EQ(req->getCookie("empty"), "");
  EXPECT_EQ(req->getCookie("sessionid"), "");  // cookie names are case-sensitive
  EXPECT_EQ(req->getCookie("absent"), "");
  EXPECT_EQ(req->cookies().size(), 3u);
}

TEST(HttpRequestTest, QueryParametersAreDecoded) {
  auto req = HttpRequest::newHttpRequest();
  req->setQuery("path=%2Fpresets%2Factive&SessionID=a+b&flag");
  EXPECT_EQ(req->query(), "path=%2Fpresets%2Factive&SessionID=a+b&flag");
  EXPECT_EQ(req->getParameter("path"), "/presets/active");
  EXPECT_EQ(req->getParameter("SessionID"), "a b");
  EXPECT_EQ(req->getParameter("flag"), "");
  EXPECT_EQ(req->getParameter("none"), "");
}

TEST(HttpRequestTest, ResetKeepsNothing) {
  auto req = HttpRequest::newHttpRequest();
  req->setMethod(Post);
  req->setPath("/x");
  req->addHeader("Cookie", "a=1");
  req->setBody("body");
  req->routingParameters().push_back("p");
  req->reset();
  EXPECT_EQ(req->method(), Invalid);
  EXPECT_EQ(req->path(), "");
  EXPECT_TRUE(req->headers().empty());
  EXPECT_EQ(req->getCookie("a"), "");
  EXPECT_EQ(req->body(), "");
  EXPECT_TRUE(req->routingParameters().empty());
}

TEST(HttpResponseTest, DefaultsAndCookies) {
  auto resp = HttpResponse::newHttpResponse();
  EXPECT_EQ(resp->statusCode(), k200OK);
  resp->setStatusCode(440);
  EXPECT_EQ(resp->statusCode(), 440);
  resp->addCookie("SessionID", ";Path=/");
  resp->addCookie("Other", "1");
  EXPECT_EQ(resp->getCookie("SessionID"), ";Path=/");
  resp->removeCookie("SessionID");
  EXPECT_EQ(resp->getCookie("SessionID"), "");
  EXPECT_EQ(resp->cookies().size(), 1u);
  resp->addHeader("Allow", "GET");
  EXPECT_EQ(resp->getHeader("allow"), "GET");
  resp->removeHeader("ALLOW");
  EXPECT_EQ(resp->getHeader("Allow"), "");
}

TEST(HttpTypesTest, ReasonPhrases) {
  EXPECT_EQ(statusReason(200), "OK");
  EXPECT_EQ(statusReason(440), "Login Time-out");
  EXPECT_EQ(statusReason(299), "Unknown");
}

TEST(HttpResponseTest, AddHeaderReplacesAFieldOfTheSameName) {
  HttpResponse resp;
  resp.addHeader("Access-Control-Allow-Credentials", "true");
  resp.addHeader("access-control-allow-credentials", "false");
  resp.addHeader("Allow", "GET");
  ASSERT_EQ(resp.headers().size(), 2u);
  EXPECT_EQ(resp.headers()[0].first, "Access-Control-Allow-Credentials");
  EXPECT_EQ(resp.getHeader("Access-Control-Allow-Credentials"), "false");
}

TEST(ResponseSerializerTest, StatusLineHeadersAndCookies) {
  HttpResponse resp;
  resp.setStatusCode(440);
  resp.setContentTypeCode(CT_APPLICATION_JSON);
  resp.setBody("{}");
  resp.addHeader("Access-Control-Allow-Origin", "http://a");
  resp.addHeader("Content-Length", "999");  // owned by the server, ignored
  resp.addCookie("SessionID", "abc;Path=/");
  std::string out;
  ResponseSerializer::writeHead(resp, {}, out);
  EXPECT_EQ(out.rfind("HTTP/1.1 440 Login Time-out\r\n", 0), 0u) << out;
  EXPECT_NE(out.find("\r\nContent-Length: 2\r\n"), std::string::npos);
  EXPECT_EQ(out.find("999"), std::string::npos);
  EXPECT_NE(out.find("\r\nContent-Type: application/json; charset=utf-8\r\n"), std::string::npos);
  EXPECT_NE(out.find("\r\nDate: "), std::string::npos);
  EXPECT_NE(out.find("\r\nAccess-Control-Allow-Origin: http://a\r\n"), std::string::npos);
  EXPECT_NE(out.find("\r\nSet-Cookie: SessionID=abc;Path=/; HttpOnly\r\n"), std::string::npos);
  EXPECT_EQ(out.find("Connection:"), std::string::npos);
  EXPECT_EQ(out.substr(out.size() - 4), "\r\n\r\n");
}

TEST(ResponseSerializerTest, CloseAndInjectedLineBreaks) {
  HttpResponse resp;
  resp.addHeader("X-Evil", "a\r\nSet-Cookie: x=y");
  std::string out;
  ResponseSerializer::Options options;
  options.close = true;
  ResponseSerializer::writeHead(resp, options, out);
  EXPECT_NE(out.find("\r\nConnection: close\r\n"), std::string::npos);
  EXPECT_EQ(out.find("\r\nSet-Cookie"), std::string::npos);
  EXPECT_NE(out.find("\r\nContent-Length: 0\r\n"), std::string::npos);
}

TEST(ResponseSerializerTest, DateLineHasTheHttpForm) {
  const std::string& line = ResponseSerializer::dateLine();
  ASSERT_GT(line.size(), 30u);
  EXPECT_EQ(line.rfind("Date: ", 0), 0u);
  EXPECT_EQ(line.substr(line.size() - 6), " GMT\r\n");
}

TEST(UrlCodecTest, DecodesAndRejectsBadEscapes) {
  std::string out;
  EXPECT_TRUE(UrlCodec::decode("/a%20b/%2e%2E", false, out));
  EXPECT_EQ(out, "/a b/..");
  out.clear();
  EXPECT_TRUE(UrlCodec::decode("a+b", false, out));
  EXPECT_EQ(out, "a+b");
  out.clear();
  EXPECT_FALSE(UrlCodec::decode("%", false, out));
  out.clear();
  EXPECT_FALSE(UrlCodec::decode("%4", false, out));
  out.clear();
  EXPECT_FALSE(UrlCodec::decode("%zz", false, out));
}

TEST(InetAddressTest, TextForms) {
  InetAddress v4("10.0.0.5", 41312);
  EXPECT_EQ(v4.toIp(), "10.0.0.5");
  EXPECT_EQ(v4.toIpPort(), "10.0.0.5:41312");
  EXPECT_FALSE(v4.isLoopbackIp());
  EXPECT_TRUE(InetAddress("127.0.0.1", 1).isLoopbackIp());
  EXPECT_TRUE(InetAddress("127.8.0.1", 1).isLoopbackIp());
  InetAddress v6("::1", 8000);
  EXPECT_TRUE(v6.isIpV6());
  EXPECT_TRUE(v6.isLoopbackIp());
  EXPECT_EQ(v6.toIpPort(), "[::1]:8000");
  InetAddress mapped("::ffff:127.0.0.1", 5);
  EXPECT_EQ(mapped.toIp(), "127.0.0.1");
  EXPECT_TRUE(mapped.isLoopbackIp());
}

TEST(HttpTypesTest, MethodNumbersAndNames) {
  EXPECT_EQ(Get, 0);
  EXPECT_EQ(Post, 1);
  EXPECT_EQ(Head, 2);
  EXPECT_EQ(Put, 3);
  EXPECT_EQ(Delete, 4);
  EXPECT_EQ(Options, 5);
  EXPECT_EQ(Patch, 6);
  EXPECT_EQ(Invalid, 7);
  EXPECT_EQ(parseHttpMethod("DELETE"), Delete);
  EXPECT_EQ(parseHttpMethod("delete"), Invalid);
  EXPECT_EQ(toString(Options), "OPTIONS");
}

}  // namespace
