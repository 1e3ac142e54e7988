#include "kelo/web/HttpAppFramework.h"

#include <algorithm>
#include <condition_variable>
#include <filesystem>
#include <map>
#include <mutex>
#include <thread>

#include "IoThread.h"
#include "Listener.h"
#include "ServerState.h"
#include "kelo/web/Log.h"

namespace halvor::kelo::web {

struct HttpAppFramework::Impl {
  struct PluginType {
    std::type_index type;
    std::function<std::unique_ptr<PluginBase>()> make;
  };
  struct PluginInstance {
    std::type_index type;
    std::unique_ptr<PluginBase> plugin;
    Json::Value config;
    bool started = false;
  };

  ServerStatePtr state = std::make_shared<ServerState>();
  std::vector<ListenerConfig> addedListeners;
  // Kept apart from the routes, which are dropped when run() ends.
  std::vector<HandlerInfo> handlersInfo;
  std::vector<std::string> webSocketPaths;
  std::map<std::string, PluginType> pluginTypes;
  std::vector<PluginInstance> plugins;
  std::map<std::type_index, std::shared_ptr<void>> instances;
  std::mutex instancesMutex;

  mutable std::mutex mutex;
  std::condition_variable changed;
  bool runCalled = false;
  bool quitRequested = false;
  bool running = false;
  bool finished = false;
  std::vector<InetAddress> bound;

  void requireNotStarted(const char* what) const {
    std::lock_guard lock(mutex);
    if (runCalled) throw std::logic_error(std::string(what) + " after run()");
  }
  // A loaded configuration and its plug-ins; origin ends the text of an error (the file).
  void useConfig(WebConfig config, const std::string& origin);
  void startPlugins();
  void shutdownPlugins();
  void listRoute(const RouteEntry& entry);
  void dropRoutesAndAdvices();
};

void HttpAppFramework::Impl::listRoute(const RouteEntry& entry) {
  if (entry.methods == 0) {
    handlersInfo.emplace_back(entry.pattern, Invalid, entry.description);
    return;
  }
  for (int method = Get; method < Invalid; ++method) {
    if (entry.methods & Router::methodBit(static_cast<HttpMethod>(method))) {
      handlersInfo.emplace_back(entry.pattern, static_cast<HttpMethod>(method), entry.description);
    }
  }
}

// Once every I/O thread has finished, nothing reads routes or advices any more. Dropping them
// breaks the cycle a controller that keeps its connections would otherwise close: controller,
// connection, server state, route, controller.
void HttpAppFramework::Impl::dropRoutesAndAdvices() {
  state->routes.clear();
  state->router = Router();
  state->beginningAdvices.clear();
  state->creationAdvices.clear();
  state->preRoutingAdvices.clear();
}

// Every plug-in name is checked before anything changes, so that a refused configuration leaves
// the previous one in place.
void HttpAppFramework::Impl::useConfig(WebConfig config, const std::string& origin) {
  for (const PluginConfig& plugin : config.plugins) {
    if (pluginTypes.count(plugin.name) == 0) {
      throw std::runtime_error("Web configuration: unknown plug-in \"" + plugin.name + "\"" +
                               origin);
    }
  }
  state->config = std::move(config);
  plugins.clear();
  for (const PluginConfig& plugin : state->config.plugins) {
    const auto& type = pluginTypes.at(plugin.name);
    plugins.push_back(PluginInstance{type.type, type.make(), plugin.config, false});
  }
}

void HttpAppFramework::Impl::startPlugins() {
  for (auto& instance : plugins) {
    instance.plugin->initAndStart(instance.config);
    instance.started = true;
  }
}

void HttpAppFramework::Impl::shutdownPlugins() {
  for (auto it = plugins.rbegin(); it != plugins.rend(); ++it) {
    if (!it->started) continue;
    it->started = false;
    try {
      it->plugin->shutdown();
    } catch (const std::exception& error) {
      logLine(kError, std::string("A plug-in's shutdown threw: ") + error.what());
    } catch (...) {
      logLine(kError, "A plug-in's shutdown threw");
    }
  }
}

HttpAppFramework::HttpAppFramework() : impl_(std::make_unique<Impl>()) {}

HttpAppFramework::~HttpAppFramework() {
  quit();
  std::unique_lock lock(impl_->mutex);
  impl_->changed.wait(lock, [this] { return !impl_->runCalled || impl_->finished; });
  lock.unlock();
  impl_->shutdownPlugins();
}

HttpAppFramework& HttpAppFramework::loadConfigFile(const std::string& path) {
  impl_->requireNotStarted("loadConfigFile");
  impl_->useConfig(WebConfigLoader::loadFile(path), " in \"" + path + "\"");
  return *this;
}

HttpAppFramework& HttpAppFramework::loadConfigJson(const Json::Value& root) {
  impl_->requireNotStarted("loadConfigJson");
  impl_->useConfig(WebConfigLoader::fromJson(root), "");
  return *this;
}

WebConfig& HttpAppFramework::config() { return impl_->state->config; }

const WebConfig& HttpAppFramework::config() const { return impl_->state->config; }

HttpAppFramework& HttpAppFramework::addListener(const std::string& ip, std::uint16_t port,
                                                bool useSSL, const std::string& certFile,
                                                const std::string& keyFile, bool useOldTLS,
                                                const SslConfCmds& sslConfCmds) {
  impl_->requireNotStarted("addListener");
  ListenerConfig listener;
  listener.address = ip;
  listener.port = port;
  listener.https = useSSL;
  listener.certFile = WebConfigLoader::stripFileScheme(certFile);
  listener.keyFile = WebConfigLoader::stripFileScheme(keyFile);
  listener.useOldTls = useOldTLS;
  listener.sslConfCmds = sslConfCmds;
  impl_->addedListeners.push_back(std::move(listener));
  return *this;
}

HttpAppFramework& HttpAppFramework::setLogLevel(int level) {
  setLogThreshold(level);
  return *this;
}

HttpAppFramework& HttpAppFramework::setThreadNum(std::size_t threads) {
  impl_->requireNotStarted("setThreadNum");
  impl_->state->config.numberOfThreads = threads;
  return *this;
}

HttpAppFramework& HttpAppFramework::registerBeginningAdvice(BeginningAdvice advice) {
  impl_->requireNotStarted("registerBeginningAdvice");
  impl_->state->beginningAdvices.push_back(std::move(advice));
  return *this;
}

HttpAppFramework& HttpAppFramework::registerHttpResponseCreationAdvice(
    ResponseCreationAdvice advice) {
  impl_->requireNotStarted("registerHttpResponseCreationAdvice");
  impl_->state->creationAdvices.push_back(std::move(advice));
  return *this;
}

HttpAppFramework& HttpAppFramework::registerPreRoutingAdvice(PreRoutingAdvice advice) {
  impl_->requireNotStarted("registerPreRoutingAdvice");
  impl_->state->preRoutingAdvices.push_back(std::move(advice));
  return *this;
}

HttpAppFramework& HttpAppFramework::registerUploadDirectory(UploadDirectoryChooser chooser) {
  impl_->requireNotStarted("registerUploadDirectory");
  impl_->state->uploadDirectoryChoosers.push_back(std::move(chooser));
  return *this;
}

HttpAppFramework& HttpAppFramework::registerRoute(const std::string& pathPattern,
                                                  RouteHandler handler,
                                                  const std::vector<HttpMethod>& constraints,
                                                  const std::string& description) {
  impl_->requireNotStarted("registerHandler");
  if (!handler) throw std::invalid_argument("No handler for " + pathPattern);
  ServerState& state = *impl_->state;
  RouteEntry entry;
  entry.pattern = pathPattern;
  entry.methods = Router::maskOf(constraints);
  entry.description = description;
  entry.handler = std::move(handler);
  state.router.add(pathPattern, entry.methods, state.routes.size());
  impl_->listRoute(entry);
  state.routes.push_back(std::move(entry));
  return *this;
}

HttpAppFramework& HttpAppFramework::registerHttpSimpleController(
    const std::string& pathPattern, HttpSimpleControllerPtr controller,
    const std::vector<HttpMethod>& constraints, const std::string& description) {
  if (!controller) throw std::invalid_argument("No controller for " + pathPattern);
  return registerRoute(
      pathPattern,
      [controller](const HttpRequestPtr& req, ResponseCallback&& callback) {
        controller->asyncHandleHttpRequest(req, std::move(callback));
      },
      constraints, description);
}

HttpAppFramework& HttpAppFramework::registerWebSocketController(
    const std::string& path, WebSocketControllerPtr controller,
    const std::vector<HttpMethod>& constraints, const std::string& description) {
  impl_->requireNotStarted("registerWebSocketController");
  if (!controller) throw std::invalid_argument("No controller for " + path);
  if (countPathParameters(path) != 0) {
    throw std::invalid_argument("A WebSocket path has no parameters: " + path);
  }
  ServerState& state = *impl_->state;
  RouteEntry entry;
  entry.pattern = path;
  entry.methods = Router::maskOf(constraints.empty() ? std::vector<HttpMethod>{Get} : constraints);
  entry.description = description.empty() ? "WebSocket" : description;
  entry.webSocket = std::move(controller);
  state.router.add(path, entry.methods, state.routes.size());
  impl_->listRoute(entry);
  impl_->webSocketPaths.push_back(path);
  state.routes.push_back(std::move(entry));
  return *this;
}

std::vector<HttpAppFramework::HandlerInfo> HttpAppFramework::getHandlersInfo() const {
  return impl_->handlersInfo;
}

std::vector<std::string> HttpAppFramework::getWebSocketPaths() const {
  return impl_->webSocketPaths;
}

std::shared_ptr<void> HttpAppFramework::sharedInstance(
    std::type_index type, const std::function<std::shared_ptr<void>()>& make) {
  std::lock_guard lock(impl_->instancesMutex);
  auto& instance = impl_->instances[type];
  if (!instance) instance = make();
  return instance;
}

void HttpAppFramework::addPluginType(const std::string& name, std::type_index type,
                                     std::function<std::unique_ptr<PluginBase>()> make) {
  impl_->requireNotStarted("registerPluginType");
  impl_->pluginTypes.insert_or_assign(name, Impl::PluginType{type, std::move(make)});
}

PluginBase* HttpAppFramework::findPlugin(std::type_index type) const {
  for (const auto& instance : impl_->plugins) {
    if (instance.type == type) return instance.plugin.get();
  }
  return nullptr;
}

std::size_t HttpAppFramework::countPathParameters(const std::string& pathPattern) {
  return Router::countParameters(pathPattern);
}

void HttpAppFramework::run() {
  {
    std::lock_guard lock(impl_->mutex);
    if (impl_->runCalled) throw std::logic_error("run() called twice");
    impl_->runCalled = true;
  }
  auto markFinished = [this] {
    std::lock_guard lock(impl_->mutex);
    impl_->running = false;
    impl_->finished = true;
    impl_->changed.notify_all();
  };
  ServerStatePtr state = impl_->state;
  WebConfig& config = state->config;
  std::vector<IoThreadPtr> threads;
  std::vector<std::shared_ptr<Listener>> listeners;
  try {
    {
      std::lock_guard lock(impl_->mutex);
      if (impl_->quitRequested) {
        impl_->finished = true;
        impl_->changed.notify_all();
        return;
      }
    }
    std::size_t maxConnections = ConnectionLimiter::effectiveMaximum(config.maxConnections);
    if (config.maxConnections != 0 && maxConnections < config.maxConnections) {
      logLine(kWarn, "max_connections " + std::to_string(config.maxConnections) +
                         " is above what the descriptor limit allows: " +
                         std::to_string(maxConnections) + " instead");
    }
    state->limiter.configure(maxConnections, config.maxConnectionsPerIp);
    state->diskBudget->configure(config.clientMaxDiskBodyTotal);
    state->staticFiles = std::make_unique<StaticFiles>(config.documentRoot, config.fileTypes);
    std::error_code tempError;
    state->temporaryDirectory = std::filesystem::temp_directory_path(tempError).string();
    if (tempError || state->temporaryDirectory.empty()) state->temporaryDirectory = "/tmp";
    std::size_t threadCount = config.numberOfThreads;
    if (threadCount == 0) threadCount = std::max(1u, std::thread::hardware_concurrency());
    for (std::size_t i = 0; i < threadCount; ++i) {
      threads.push_back(std::make_shared<IoThread>(state));
    }
    std::vector<ListenerConfig> all = config.listeners;
    all.insert(all.end(), impl_->addedListeners.begin(), impl_->addedListeners.end());
    std::vector<InetAddress> bound;
    for (const ListenerConfig& listener : all) {
      auto tls = listener.https ? Listener::makeTlsContext(listener) : nullptr;
      listeners.push_back(std::make_shared<Listener>(listener, tls, state, threads));
      bound.push_back(listeners.back()->boundAddress());
    }
    {
      std::lock_guard lock(impl_->mutex);
      impl_->bound = bound;
    }
    impl_->startPlugins();
    for (auto& thread : threads) thread->start();
    ThreadContext::enter(nullptr, state.get());
    for (const auto& advice : state->beginningAdvices) advice();
    ThreadContext::leave();
  } catch (...) {
    ThreadContext::leave();
    listeners.clear();
    for (auto& thread : threads) {
      thread->beginStop();
      thread->finish(2000);
    }
    impl_->dropRoutesAndAdvices();
    impl_->shutdownPlugins();
    markFinished();
    throw;
  }

  for (auto& listener : listeners) listener->start();
  {
    std::unique_lock lock(impl_->mutex);
    impl_->running = !impl_->quitRequested;
    impl_->changed.notify_all();
    impl_->changed.wait(lock, [this] { return impl_->quitRequested; });
    impl_->running = false;
  }

  state->stopping.store(true);
  for (auto& listener : listeners) listener->stop();
  // Plug-ins stop while every I/O thread is held between two handlers: none runs under a
  // plug-in that stops, and none that reaches a controller begins later, since the sessions
  // check `stopping`. What the plug-ins send on the way out (a close frame to each subscriber)
  // is queued ahead of the threads' own closing.
  for (auto& thread : threads) thread->park();
  impl_->shutdownPlugins();
  for (auto& thread : threads) thread->resume();
  for (auto& thread : threads) thread->beginStop();
  for (auto& thread : threads) thread->finish(3000);
  listeners.clear();
  threads.clear();
  impl_->dropRoutesAndAdvices();
  markFinished();
}

void HttpAppFramework::quit() {
  std::lock_guard lock(impl_->mutex);
  impl_->quitRequested = true;
  impl_->changed.notify_all();
}

bool HttpAppFramework::isRunning() const {
  std::lock_guard lock(impl_->mutex);
  return impl_->running;
}

std::vector<InetAddress> HttpAppFramework::getListeners() const {
  std::lock_guard lock(impl_->mutex);
  return impl_->bound;
}

const std::string& HttpAppFramework::getUploadPath() const {
  return impl_->state->config.uploadPath;
}

std::size_t HttpAppFramework::connectionCount() const { return impl_->state->limiter.count(); }

std::uint64_t HttpAppFramework::temporaryBodyBytes() const {
  return impl_->state->diskBudget->used();
}

std::size_t HttpAppFramework::webSocketCount() const {
  return impl_->state->webSockets.load(std::memory_order_relaxed);
}

HttpAppFramework& HttpAppFramework::setTrafficObserver(std::shared_ptr<TrafficObserver> observer) {
  impl_->requireNotStarted("setTrafficObserver");
  impl_->state->trafficObserver = std::move(observer);
  return *this;
}

HttpAppFramework& app() {
  // Never destroyed: I/O threads of a detached server thread may outlive static destruction.
  static HttpAppFramework* application = new HttpAppFramework();
  return *application;
}

}  // namespace halvor::kelo::web
