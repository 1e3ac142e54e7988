#include "kelo/handlers/http/session/AuthenticatedHandler.h"

#include <boost/exception/diagnostic_information.hpp>
#include <optional>

#include "kelo/KeloLog.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/users/EndpointHelpers.h"
#include "kelo/handlers/http/users/UserHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

namespace {

std::string sessionPath(const std::string& sessionId) {
  std::string path = "/session/sessions/<sessionId>";
  const std::string placeholder = "<sessionId>";
  return path.replace(path.find(placeholder), placeholder.size(), sessionId);
}

// Steps 1 to 5: the session's user, read without counting as activity.
void answerLiveSession(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                       tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                       const std::string& sessionId) {
  KeloResourceAction action(tavelabi::CCRUD::Read, sessionPath(sessionId),
                            HostReads::activityFlag(true), info, sessionId, req);
  KELO_LOG(INFO, info->getLoggerId()) << "Checking authentication for session " << sessionId;
  const tavelabi::Resource session = tavel->processResourceAction(action);
  const std::string path =
      UserHandlerHelpers::makeUserResourcePath(session.values.at("username").getStringValue());
  resp->setBody(JsonOptions::toJson(
      *EndpointHelpers::getCurrentUserInfo(req, tavel, info, sessionId, path, true)));
  resp->setStatusCode(200);
}

// Steps 8 and 9: a new session that the host logs in on its own for the request's "host", or
// nothing after an Error line.
std::optional<std::pair<std::string, std::string>> autoLogin(const web::HttpRequestPtr& req,
                                                             tavelabi::ITavel* tavel,
                                                             tavelabi::IPluginInfo* info) {
  std::string newSessionId;
  try {
    KeloResourceAction action(tavelabi::CCRUD::Command, "/session/command/newSession", info,
                              info->getSessionId(), req);
    newSessionId = tavel->processResourceAction(action).values.at("sessionId").getStringValue();
  } catch (...) {
    KELO_LOG(ERROR, info->getLoggerId()) << "Error creating new auto login session: "
                                         << boost::current_exception_diagnostic_information(true);
    return std::nullopt;
  }
  try {
    KeloResourceAction action(
        tavelabi::CCRUD::Command, "/user/command/autoLogin",
        tavelabi::Resource("host", tavelabi::ResourceValue(req->getHeader("host"))), info,
        newSessionId, req);
    const tavelabi::Resource answer = tavel->processResourceAction(action);
    return std::make_pair(newSessionId, answer.values.at("username").getStringValue());
  } catch (...) {
    KELO_LOG(ERROR, info->getLoggerId()) << "Error attemping to auto login: "
                                         << boost::current_exception_diagnostic_information(true);
    return std::nullopt;
  }
}

}  // namespace

void AuthenticatedHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                              web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                              tavelabi::IPluginInfo* info, std::string sessionId) {
  try {
    answerLiveSession(req, resp, tavel, info, sessionId);
  } catch (...) {
    KELO_LOG(INFO, info->getLoggerId()) << "Failed session renewal. Checking for auto login.";
    // The client is told why its session failed, not why the auto login did.
    const std::string sessionFailure = boost::current_exception_diagnostic_information(true);
    const auto loggedIn = autoLogin(req, tavel, info);
    if (!loggedIn) {
      resp->setBody(sessionFailure);
      resp->setStatusCode(440);
      resp->setContentTypeCode(web::CT_TEXT_PLAIN);
      resp->setCloseConnection(true);
      return;
    }
    const auto& [newSessionId, username] = *loggedIn;
    // Not caught here: a failure to show the new user goes to the frame.
    const std::string path = UserHandlerHelpers::makeUserResourcePath(username);
    resp->setBody(JsonOptions::toJson(
        *EndpointHelpers::getCurrentUserInfo(req, tavel, info, newSessionId, path, false)));
    resp->setStatusCode(201);
    sessionId = newSessionId;
    KELO_LOG(INFO, info->getLoggerId()) << "Successfully auto logged in as " << username;
  }
  resp->setContentTypeCode(web::CT_APPLICATION_JSON);
  resp->removeCookie("SessionID");
  resp->addCookie("SessionID", sessionId + "; Path=/");
}

}  // namespace halvor::kelo
