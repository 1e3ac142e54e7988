#pragma once

#include <gtest/gtest.h>
#include <json/value.h>

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/WebKeloInterface.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/web/HttpAppFramework.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/HttpResponse.h"
#include "sim/SimTavel.h"
#include "sim/models/ModelRegistry.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::testing {

// The plug-in's identity as the handlers hand it to the host.
class FakePluginInfo : public tavelabi::IPluginInfo {
 public:
  std::string getName() const override { return "Kelo"; }
  std::string getVersion() const override { return "0"; }
  uint32_t getId() const override { return 1; }
  std::string getLoggerId() const override { return "Kelo1"; }
  std::string getSessionId() const override { return "plugin-session"; }
};

// A host that keeps a copy of every action it is given and answers with `answer`, or runs
// `failure` (which throws) instead.
class RecordingTavel : public tavelabi::ITavel {
 public:
  void setPluginStatus(tavelabi::IPluginInfo*, const tavelabi::PluginStatus&) override {}
  tavelabi::Resource processResourceAction(tavelabi::ResourceAction& action) override {
    actions.push_back(action);
    if (failure) {
      failure();
    }
    action.resource = answer;
    return answer;
  }
  void addResourceListener(tavelabi::IPluginInfo*, tavelabi::IResourceListener*) override {}
  void removeResourceListener(tavelabi::IPluginInfo*, tavelabi::IResourceListener*) override {}
  tavelabi::Resource createPluginSession(tavelabi::IPluginInfo*) override { return {}; }
  tavelabi::Resource loginPlugin(tavelabi::IPluginInfo*, const std::string&, const std::string&,
                                 tavelabi::Session) override {
    return {};
  }

  const tavelabi::ResourceAction& onlyAction() const {
    if (actions.size() != 1) {
      throw std::logic_error("expected one action, got " + std::to_string(actions.size()));
    }
    return actions.front();
  }

  std::vector<tavelabi::ResourceAction> actions;
  tavelabi::Resource answer;
  std::function<void()> failure;
};

// A request as the server would hand it to a handler, from a loopback peer.
inline web::HttpRequestPtr makeRequest(web::HttpMethod method, std::string path, std::string query,
                                       std::string body = {}) {
  web::HttpRequestPtr req = web::HttpRequest::newHttpRequest();
  req->setMethod(method);
  req->setPath(std::move(path));
  req->setQuery(std::move(query));
  req->setBody(std::move(body));
  req->setPeerAddr(web::InetAddress("127.0.0.1", 50000));
  return req;
}

// A handler of the simple form called directly, as the frame would call it, with a fresh
// response each time; `host` records what reaches it.
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

  RecordingTavel host;
  FakePluginInfo info;
  Handler handler;
};

// Makes the process-wide application carry a WebKeloInterface that points at `tavel`, so that
// requests can go through the whole frame. The application is not started: every client counts
// as local by its loopback address alone.
inline void installHost(tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info) {
  static const bool loaded = [] {
    web::app().registerPluginType<WebKeloInterface>("WebKeloInterface");
    Json::Value root;
    root["plugins"][0]["name"] = "WebKeloInterface";
    root["plugins"][0]["config"] = Json::objectValue;
    web::app().loadConfigJson(root);
    return true;
  }();
  (void)loaded;
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

// The simulated host with an administrator and a read-only user, each logged in under a known
// session identifier.
class SimHost {
 public:
  static constexpr const char* kAdminSession = "admin-session";
  static constexpr const char* kViewerSession = "viewer-session";

  SimHost() : tavel(quietOptions()) {
    sim::ModelRegistry::installAll(tavel);
    tavel.addUser({"admin", "admin-pw", "administrator", {}});
    tavel.addUser({"viewer", "viewer-pw", "read-only", {}});
    tavel.openSession("admin", kAdminSession);
    tavel.openSession("viewer", kViewerSession);
  }

  sim::SimTavel tavel;

 private:
  static sim::SimTavelOptions quietOptions() {
    sim::SimTavelOptions options;
    options.echoToConsole = false;
    return options;
  }
};

}  // namespace halvor::kelo::testing
