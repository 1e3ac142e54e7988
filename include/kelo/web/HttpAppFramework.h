#pragma once

#include <json/value.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <typeindex>
#include <utility>
#include <vector>

#include "kelo/web/HttpRequest.h"
#include "kelo/web/HttpResponse.h"
#include "kelo/web/HttpSimpleControllerBase.h"
#include "kelo/web/HttpTypes.h"
#include "kelo/web/InetAddress.h"
#include "kelo/web/Plugin.h"
#include "kelo/web/TrafficObserver.h"
#include "kelo/web/WebConfig.h"
#include "kelo/web/WebSocketControllerBase.h"

namespace halvor::kelo::web {

// One web application: configuration, routes, advices, plug-ins, listeners and I/O threads.
// app() is the process-wide one; tests make their own instances. Configure it completely
// before run(); registrations after run() are not allowed (std::logic_error).
class HttpAppFramework {
 public:
  // What every route resolves to: the path's "{name}" values are in req->routingParameters().
  using RouteHandler = std::function<void(const HttpRequestPtr&, ResponseCallback&&)>;
  using BeginningAdvice = std::function<void()>;
  using ResponseCreationAdvice = std::function<void(const HttpResponsePtr&)>;
  using PreRoutingAdvice =
      std::function<void(const HttpRequestPtr&, AdviceCallback&&, AdviceChainCallback&&)>;
  // (path pattern, method, description) of one registered route and method.
  using HandlerInfo = std::tuple<std::string, HttpMethod, std::string>;
  // For a multipart/form-data request whose body is streamed by part: the folder its file parts
  // are written to while they arrive (see registerUploadDirectory); "" when it has no opinion.
  using UploadDirectoryChooser = std::function<std::string(const HttpRequest&)>;
  using SslConfCmds = std::vector<std::pair<std::string, std::string>>;

  // The most "{name}" parameters a route may have.
  static constexpr std::size_t kMaxPathParameters = 8;

  HttpAppFramework();
  // Quits (and waits for run() to return) when still running, then shuts the plug-ins down.
  ~HttpAppFramework();
  HttpAppFramework(const HttpAppFramework&) = delete;
  HttpAppFramework& operator=(const HttpAppFramework&) = delete;

  // Reads the web configuration file (see WebConfigLoader) and makes the plug-ins of its
  // "plugins" section, which must have been registered with registerPluginType. Listeners of
  // the file come before those of addListener. Throws std::runtime_error on any problem.
  HttpAppFramework& loadConfigFile(const std::string& path);
  HttpAppFramework& loadConfigJson(const Json::Value& root);
  // The configuration in effect, to read, or to change before run().
  WebConfig& config();
  const WebConfig& config() const;

  // A listener on `ip`:`port` (0 = any free port, see getListeners()). With useSSL, certFile and
  // keyFile name PEM files; a "file://" in them is removed. useOldTLS admits TLS 1.0 and 1.1;
  // sslConfCmds are OpenSSL configuration commands (name, value).
  HttpAppFramework& addListener(const std::string& ip, std::uint16_t port, bool useSSL = false,
                                const std::string& certFile = "", const std::string& keyFile = "",
                                bool useOldTLS = false, const SslConfCmds& sslConfCmds = {});

  // Threshold of the layer's own log lines (see Log.h), process-wide: 4 keeps errors only.
  HttpAppFramework& setLogLevel(int level);
  HttpAppFramework& setThreadNum(std::size_t threads);

  // Run once, on the thread of run(), after the plug-ins started and before serving.
  HttpAppFramework& registerBeginningAdvice(BeginningAdvice advice);
  // Run on every response exactly once (see HttpResponse::newHttpResponse()).
  HttpAppFramework& registerHttpResponseCreationAdvice(ResponseCreationAdvice advice);
  // Run for every request before routing, OPTIONS on unknown paths included. The advice either
  // answers with the first callback or lets the request go on with the second.
  HttpAppFramework& registerPreRoutingAdvice(PreRoutingAdvice advice);
  // Asked, with the request line and header fields only, where the file parts of a streamed
  // multipart body go: a folder on the file system of their final place lets the handler move
  // them there instead of copying. The first chooser that answers wins; without an answer, or
  // when the folder cannot be written, they go where other body files go. Called on the I/O
  // threads: it must be safe from any thread.
  HttpAppFramework& registerUploadDirectory(UploadDirectoryChooser chooser);

  // A route served by a callable taking (const HttpRequestPtr&, ResponseCallback&&, and one
  // std::string per "{name}" segment of `pathPattern`, in order). Empty constraints: any method.
  template <class F>
  HttpAppFramework& registerHandler(const std::string& pathPattern, F&& function,
                                    const std::vector<HttpMethod>& constraints = {},
                                    const std::string& description = "");
  // A route served by a member function of T, called on the one T object this application
  // makes (default-constructed, shared by all routes of T): T::method(const HttpRequestPtr&,
  // ResponseCallback&&, std::string...), one std::string per "{name}" segment.
  template <class T, class... Params>
  HttpAppFramework& registerHandler(const std::string& pathPattern,
                                    void (T::*method)(const HttpRequestPtr&, ResponseCallback&&,
                                                      Params...),
                                    const std::vector<HttpMethod>& constraints = {},
                                    const std::string& description = "");
  // The generic form behind both of the above.
  HttpAppFramework& registerRoute(const std::string& pathPattern, RouteHandler handler,
                                  const std::vector<HttpMethod>& constraints,
                                  const std::string& description);

  HttpAppFramework& registerHttpSimpleController(const std::string& pathPattern,
                                                 HttpSimpleControllerPtr controller,
                                                 const std::vector<HttpMethod>& constraints = {},
                                                 const std::string& description = "");
  // Same with the one shared T object of this application.
  template <class T>
  HttpAppFramework& registerHttpSimpleController(const std::string& pathPattern,
                                                 const std::vector<HttpMethod>& constraints = {},
                                                 const std::string& description = "");

  // Upgrades GET requests on `path` (an exact path). Other methods on it get 405.
  HttpAppFramework& registerWebSocketController(const std::string& path,
                                                WebSocketControllerPtr controller,
                                                const std::vector<HttpMethod>& constraints = {Get},
                                                const std::string& description = "");

  // One entry per route and allowed method, in registration order; a route without
  // constraints is listed once with the method Invalid ("any"). WebSocket routes are listed
  // with the description "WebSocket" when none was given.
  std::vector<HandlerInfo> getHandlersInfo() const;
  // The path of each WebSocket controller, in registration order. getHandlersInfo() lists these
  // routes too, but with their GET only, as any other route, whatever description they carry.
  std::vector<std::string> getWebSocketPaths() const;

  // The one T object of this application, made on first use.
  template <class T>
  std::shared_ptr<T> sharedInstance();

  // Makes `name` in the "plugins" section of the configuration file a T. Call before
  // loadConfigFile.
  template <class T>
  HttpAppFramework& registerPluginType(const std::string& name);
  // The plug-in of type T made from the configuration file; nullptr when there is none.
  template <class T>
  T* getPlugin();

  // Binds every listener (std::runtime_error "Cannot bind 0.0.0.0:7000: Address already in use"
  // and nothing started when one fails), starts the plug-ins, runs the beginning advices, then
  // serves on the I/O threads until quit(). Returns after the I/O threads were joined and the
  // plug-ins shut down. Throws std::logic_error when called twice.
  void run();
  // From any thread, also before run() (which then returns at once): stops accepting, closes
  // every connection, and lets run() return. Does not wait.
  void quit();
  // True while serving: after the beginning advices, until quit().
  bool isRunning() const;
  // The bound address of each listener, in order (the real port when port 0 was asked);
  // empty until run() has bound them.
  std::vector<InetAddress> getListeners() const;
  const std::string& getUploadPath() const;
  // Open connections (HTTP and WebSocket) right now.
  std::size_t connectionCount() const;
  // Bytes that request bodies hold in temporary files right now.
  std::uint64_t temporaryBodyBytes() const;
  // Open WebSocket connections right now (part of connectionCount()).
  std::size_t webSocketCount() const;
  // Told of every response (see TrafficObserver); set before run().
  HttpAppFramework& setTrafficObserver(std::shared_ptr<TrafficObserver> observer);

  struct Impl;

 private:
  std::shared_ptr<void> sharedInstance(std::type_index type,
                                       const std::function<std::shared_ptr<void>()>& make);
  void addPluginType(const std::string& name, std::type_index type,
                     std::function<std::unique_ptr<PluginBase>()> make);
  PluginBase* findPlugin(std::type_index type) const;
  static std::size_t countPathParameters(const std::string& pathPattern);

  template <class F, std::size_t... I>
  static void invokeWithParameters(F& function, const HttpRequestPtr& req,
                                   ResponseCallback&& callback, std::index_sequence<I...>) {
    function(req, std::move(callback), req->routingParameters()[I]...);
  }
  template <class F, std::size_t... I>
  static constexpr bool invocableWith(std::index_sequence<I...>) {
    return std::is_invocable_v<F&, const HttpRequestPtr&, ResponseCallback&&,
                               decltype((void)I, std::string())...>;
  }
  template <class F, std::size_t N>
  static RouteHandler bindParameters(F function) {
    return [function = std::move(function)](const HttpRequestPtr& req,
                                            ResponseCallback&& callback) mutable {
      invokeWithParameters(function, req, std::move(callback), std::make_index_sequence<N>());
    };
  }
  template <class F, std::size_t N = 0>
  static RouteHandler makeRouteHandler(F&& function, std::size_t count) {
    if constexpr (N > kMaxPathParameters) {
      throw std::invalid_argument("A route has too many path parameters");
    } else {
      if (count == N) {
        if constexpr (invocableWith<std::decay_t<F>>(std::make_index_sequence<N>())) {
          return bindParameters<std::decay_t<F>, N>(std::forward<F>(function));
        } else {
          throw std::invalid_argument(
              "The handler does not take one std::string per path parameter");
        }
      }
      return makeRouteHandler<F, N + 1>(std::forward<F>(function), count);
    }
  }

  std::unique_ptr<Impl> impl_;
};

// The process-wide application (never destroyed).
HttpAppFramework& app();

template <class F>
HttpAppFramework& HttpAppFramework::registerHandler(const std::string& pathPattern, F&& function,
                                                    const std::vector<HttpMethod>& constraints,
                                                    const std::string& description) {
  return registerRoute(
      pathPattern, makeRouteHandler(std::forward<F>(function), countPathParameters(pathPattern)),
      constraints, description);
}

template <class T, class... Params>
HttpAppFramework& HttpAppFramework::registerHandler(
    const std::string& pathPattern,
    void (T::*method)(const HttpRequestPtr&, ResponseCallback&&, Params...),
    const std::vector<HttpMethod>& constraints, const std::string& description) {
  static_assert((std::is_constructible_v<Params, std::string> && ...),
                "path parameters are passed as std::string");
  if (countPathParameters(pathPattern) != sizeof...(Params)) {
    throw std::invalid_argument("The handler of " + pathPattern +
                                " does not take one std::string per path parameter");
  }
  std::shared_ptr<T> object = sharedInstance<T>();
  auto call = [object, method](const HttpRequestPtr& req, ResponseCallback&& callback,
                               auto&&... parameters) {
    ((*object).*method)(req, std::move(callback), std::string(parameters)...);
  };
  return registerRoute(pathPattern,
                       bindParameters<decltype(call), sizeof...(Params)>(std::move(call)),
                       constraints, description);
}

template <class T>
HttpAppFramework& HttpAppFramework::registerHttpSimpleController(
    const std::string& pathPattern, const std::vector<HttpMethod>& constraints,
    const std::string& description) {
  return registerHttpSimpleController(pathPattern, sharedInstance<T>(), constraints, description);
}

template <class T>
std::shared_ptr<T> HttpAppFramework::sharedInstance() {
  return std::static_pointer_cast<T>(sharedInstance(std::type_index(typeid(T)), [] {
    return std::static_pointer_cast<void>(std::make_shared<T>());
  }));
}

template <class T>
HttpAppFramework& HttpAppFramework::registerPluginType(const std::string& name) {
  static_assert(std::is_base_of_v<PluginBase, T>, "a plug-in derives from Plugin<T>");
  addPluginType(name, std::type_index(typeid(T)), [] { return std::make_unique<T>(); });
  return *this;
}

template <class T>
T* HttpAppFramework::getPlugin() {
  return dynamic_cast<T*>(findPlugin(std::type_index(typeid(T))));
}

}  // namespace halvor::kelo::web
