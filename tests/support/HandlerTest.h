#pragma once

#include <gtest/gtest.h>
#include <json/value.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/WebKeloInterface.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/web/HttpAppFramework.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/HttpResponse.h"
#include "support/FakePluginInfo.h"
#include "support/RecordingHost.h"
#include "support/Requests.h"
#include "support/TestApplication.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo::test {

// A handler called directly, as the frame would call it, with a fresh response each time;
// `host` answers by path and records what reaches it.
template <class Handler>
class HandlerTest : public ::testing::Test {
 protected:
  web::HttpResponsePtr call(tavelabi::ITavel& tavel, web::HttpMethod method, std::string path,
                            std::string query, std::string body, const std::string& sessionId) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.processHttpRequest(
        makeRequest(method, std::move(path), std::move(query), std::move(body)), resp, &tavel,
        &info, sessionId);
    return resp;
  }

  // A member serving a route with path parameters, called as its wrapper would call it.
  template <class Operation, class... Params>
  web::HttpResponsePtr callMember(Operation operation, const web::HttpRequestPtr& req,
                                  const std::string& sessionId, Params&&... params) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    (handler.*operation)(req, resp, &host, &info, sessionId,
                         std::string(std::forward<Params>(params))...);
    return resp;
  }

  RecordingHost host;
  FakePluginInfo info;
  Handler handler;
};

// Makes the process-wide application carry a WebKeloInterface that points at `tavel`, so that
// requests can go through the whole frame. The application is not started: every client counts
// as local by its loopback address alone.
inline void installHost(tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info) {
  loadTestApplication();
  WebKeloInterface* plugin = web::app().getPlugin<WebKeloInterface>();
  plugin->tavel = tavel;
  plugin->pluginInfo = info;
}

// Runs the controller's frame on req and returns the response it answered with.
template <class Controller>
web::HttpResponsePtr throughFrame(Controller& controller, const web::HttpRequestPtr& req) {
  web::HttpResponsePtr answered;
  controller.asyncHandleHttpRequest(
      req, [&answered](const web::HttpResponsePtr& resp) { answered = resp; });
  if (!answered) {
    throw std::logic_error("the frame did not answer");
  }
  return answered;
}

// The message a response body holds, parsed strictly; fails the test on a bad body.
inline protobuf::Resource parseBody(const std::string& body) {
  protobuf::Resource message;
  const auto status = JsonOptions::fromJson(body, message);
  if (!status.ok()) {
    throw std::runtime_error("not Resource JSON: " + body + " (" + status.ToString() + ")");
  }
  return message;
}

}  // namespace halvor::kelo::test
