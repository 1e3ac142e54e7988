#include "kelo/handlers/http/session/LoginHandler.h"

#include "halvor/protobuf/Users.pb.h"
#include "kelo/Exceptions.h"
#include "kelo/handlers/http/session/LoginThrottle.h"
#include "kelo/handlers/http/users/EndpointHelpers.h"
#include "kelo/handlers/http/users/UserHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

namespace {

// An address that failed too often waits, and the host is not asked at all.
bool refuseWhileThrottled(const std::string& address, web::HttpResponsePtr& resp) {
  const std::uint32_t wait = LoginThrottle::shared().secondsToWait(address);
  if (wait == 0) return false;
  resp->setStatusCode(429);
  resp->addHeader("Retry-After", std::to_string(wait));
  resp->setContentTypeCode(web::CT_TEXT_PLAIN);
  resp->setBody("Too many failed logins from this address; try again in " + std::to_string(wait) +
                " s.");
  return true;
}

std::string newSession(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                       tavelabi::IPluginInfo* info) {
  KeloResourceAction action(tavelabi::CCRUD::Command, "/session/command/newSession", info,
                            info->getSessionId(), req);
  return tavel->processResourceAction(action).values.at("sessionId").getStringValue();
}

}  // namespace

void LoginHandler::processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                      tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                      std::string /*sessionId*/) {
  const std::string address = req->peerAddr().toIp();
  if (refuseWhileThrottled(address, resp)) return;
  // Body failures come before any call to the host.
  const auto login = RequestBodies::message<protobuf::Login>(req);
  if (!login.has_username()) throw RequestMissingQueryParameter("username");
  if (!login.has_password()) throw RequestMissingQueryParameter("password");

  const std::string sessionId = newSession(req, tavel, info);
  // Replaces the frame's cookie; this text has a blank after the semicolon.
  resp->removeCookie("SessionID");
  resp->addCookie("SessionID", sessionId + "; Path=/");

  tavelabi::Resource credentials;
  credentials.values["username"] = tavelabi::ResourceValue(login.username().value());
  credentials.values["password"] = tavelabi::ResourceValue(login.password().value());
  KeloResourceAction action(tavelabi::CCRUD::Command, "/user/command/login", credentials, info,
                            sessionId, req);
  try {
    (void)tavel->processResourceAction(action);
  } catch (...) {
    // The refusal goes on to the frame; the cookie of the unused session stays on the reply.
    LoginThrottle::shared().recordFailure(address);
    throw;
  }
  const std::string path = UserHandlerHelpers::makeUserResourcePath(login.username().value());
  JsonReplies::reply(
      resp, *EndpointHelpers::getCurrentUserInfo(req, tavel, info, sessionId, path, false));
}

}  // namespace halvor::kelo
