#pragma once

#include <boost/core/demangle.hpp>
#include <memory>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "kelo/controllers/KeloFrame.h"
#include "kelo/web/HttpAppFramework.h"
#include "kelo/web/HttpResponse.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

// The routes that one handler class declares, registered on an application under the version
// prefix with the names the start-up log shows: the class name for the simple form and for
// WebSocket endpoints, "Class::memberWrapper" for a member serving a route with path
// parameters. A class declares them with the macros below, between KELO_ROUTES_BEGIN and
// KELO_ROUTES_END; FamilyRoutes::add registers them.
template <class T>
class RouteTable {
 public:
  // The operation of a route with path parameters: the frame's arguments, then one text per
  // "{name}" segment of the path, in order.
  template <class... Params>
  using Operation = void (T::*)(const web::HttpRequestPtr&, web::HttpResponsePtr&,
                                tavelabi::ITavel*, tavelabi::IPluginInfo*, std::string, Params...);

  explicit RouteTable(web::HttpAppFramework& application) : application_(application) {}

  // `path` served by the simple form's frame around T::processHttpRequest.
  void addSimple(const std::string& path, const std::vector<web::HttpMethod>& methods) {
    application_.registerHttpSimpleController(KeloFrame::versionedPath(path),
                                              application_.template sharedInstance<T>(), methods,
                                              className());
  }

  // `path` served by the frame around `operation`, which gets the path's parameters.
  template <class... Params>
  void addMember(Operation<Params...> operation, const std::string& memberName,
                 const std::string& path, const std::vector<web::HttpMethod>& methods) {
    application_.registerHandler(KeloFrame::versionedPath(path),
                                 wrapperOf(application_.template sharedInstance<T>(), operation),
                                 methods, className() + "::" + memberName + "Wrapper");
  }

  // The wrapper that the router calls for `operation`: the frame of the path-parameter form
  // around the operation. Made here, so that no class writes one by hand.
  template <class... Params>
  static auto wrapperOf(std::shared_ptr<T> handler, Operation<Params...> operation) {
    return [handler = std::move(handler), operation](
               const web::HttpRequestPtr& req, web::ResponseCallback&& callback, Params... params) {
      KeloFrame::handle(req, callback, KeloFrame::Form::PathParameters,
                        [&](web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                            tavelabi::IPluginInfo* info, const std::string& sessionId) {
                          ((*handler).*operation)(req, resp, tavel, info, sessionId,
                                                  std::move(params)...);
                        });
    };
  }

  // The operation of a route that answers later (KeloFrame::handleDeferred): the frame's
  // arguments, the callback to answer through, then one text per "{name}" segment.
  template <class... Params>
  using DeferredOperation = void (T::*)(const web::HttpRequestPtr&, web::HttpResponsePtr&,
                                        tavelabi::ITavel*, tavelabi::IPluginInfo*, std::string,
                                        web::ResponseCallback, Params...);

  // `path` served by the deferred frame around `operation`.
  template <class... Params>
  void addDeferredMember(DeferredOperation<Params...> operation, const std::string& memberName,
                         const std::string& path, const std::vector<web::HttpMethod>& methods) {
    application_.registerHandler(
        KeloFrame::versionedPath(path),
        deferredWrapperOf(application_.template sharedInstance<T>(), operation), methods,
        className() + "::" + memberName + "Wrapper");
  }

  template <class... Params>
  static auto deferredWrapperOf(std::shared_ptr<T> handler,
                                DeferredOperation<Params...> operation) {
    return [handler = std::move(handler), operation](
               const web::HttpRequestPtr& req, web::ResponseCallback&& callback, Params... params) {
      KeloFrame::handleDeferred(
          req, callback, KeloFrame::Form::PathParameters,
          [&](web::HttpResponsePtr& resp, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
              const std::string& sessionId, const web::ResponseCallback& answer) {
            ((*handler).*operation)(req, resp, tavel, info, sessionId, answer,
                                    std::move(params)...);
          });
    };
  }

  // A WebSocket endpoint at `path`, GET only, served by the application's one T object.
  void addWebSocket(const std::string& path) {
    application_.registerWebSocketController(KeloFrame::versionedPath(path),
                                             application_.template sharedInstance<T>(), {web::Get},
                                             className());
  }

  // T's name without its namespaces: "GetResourceHandler".
  static std::string className() {
    const std::string qualified = boost::core::demangle(typeid(T).name());
    const auto colons = qualified.rfind("::");
    return colons == std::string::npos ? qualified : qualified.substr(colons + 2);
  }

 private:
  web::HttpAppFramework& application_;
};

}  // namespace halvor::kelo

// Inside a handler class's public section. `Self` is the class, named by its controller base.
#define KELO_ROUTES_BEGIN static void declareRoutes(::halvor::kelo::RouteTable<Self>& routes) {
#define KELO_ROUTES_END }
// The simple form: the class's processHttpRequest serves `routePath` for the given methods.
#define KELO_PATH(routePath, ...) routes.addSimple(routePath, {__VA_ARGS__});
// A route with path parameters served by the member `operation`, logged as
// "Class::operationWrapper".
#define KELO_ROUTE(operation, routePath, ...) \
  routes.addMember(&Self::operation, #operation, routePath, {__VA_ARGS__});
// A route whose member answers later through the callback it is handed (KeloFrame's deferred
// form), logged as "Class::operationWrapper".
#define KELO_DEFERRED_ROUTE(operation, routePath, ...) \
  routes.addDeferredMember(&Self::operation, #operation, routePath, {__VA_ARGS__});
// The common case in one line: the simple form serving one path.
#define KELO_SIMPLE_ROUTE(routePath, ...) \
  KELO_ROUTES_BEGIN                       \
  KELO_PATH(routePath, __VA_ARGS__)       \
  KELO_ROUTES_END
