#include "kelo/handlers/ws/ResourceListenerManager.h"

#include <mutex>
#include <utility>
#include <vector>

#include "kelo/KeloHost.h"
#include "kelo/handlers/ws/WsListenerInstance.h"
#include "kelo/web/HttpAppFramework.h"
#include "tavelabi/GlobMatcher.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

ResourceListenerManager::~ResourceListenerManager() {
  // Instances left by a host that never ran shutdown are still ours to delete.
  for (auto& entry : listeners) {
    delete entry.second;
  }
}

void ResourceListenerManager::initAndStart(const Json::Value& /*config*/) {}

void ResourceListenerManager::shutdown() { removeAllClients(); }

void ResourceListenerManager::setLoggerId(const std::string& id) {
  std::lock_guard<boost::mutex> lock(listenersMutex);
  loggerId = id;
}

void ResourceListenerManager::addListenerAndClient(const web::HttpRequestPtr& req,
                                                   const web::WebSocketConnectionPtr& conn,
                                                   MessageGenerator generator, std::string path,
                                                   std::string sessionId, bool resourceOnly) {
  std::lock_guard<boost::mutex> lock(listenersMutex);
  bool matched = false;
  for (const auto& entry : listeners) {
    if (tavelabi::GlobMatcher::globMatch(entry.first.c_str(), path.c_str())) {
      matched = true;
      break;
    }
  }
  if (!matched) {
    auto* instance = new WsListenerInstance(path, loggerId);
    listeners[path] = instance;
    KeloHost::tavel()->addResourceListener(KeloHost::pluginInfo(), instance);
  }
  // Exact on purpose: a wider key that matched above leaves no instance of `path`.
  listeners.at(path)->addNewClient(req, conn, std::move(sessionId), std::move(generator),
                                   resourceOnly);
}

void ResourceListenerManager::removeClient(const web::WebSocketConnectionPtr& conn) {
  std::lock_guard<boost::mutex> lock(listenersMutex);
  std::vector<std::string> emptied;
  for (const auto& [path, instance] : listeners) {
    instance->removeClient(conn);
    if (!instance->hasClients()) {
      KeloHost::tavel()->removeResourceListener(KeloHost::pluginInfo(), instance);
      emptied.push_back(path);
    }
  }
  for (const auto& path : emptied) {
    auto found = listeners.find(path);
    delete found->second;
    listeners.erase(found);
  }
}

void ResourceListenerManager::removeAllClients() {
  // Runs only at shutdown; the lock is still taken, so that a late removeClient on an I/O
  // thread cannot meet a half-emptied map.
  std::lock_guard<boost::mutex> lock(listenersMutex);
  std::vector<std::string> removed;
  for (const auto& [path, instance] : listeners) {
    instance->removeAllClients();
    // The host's pointers are gone when WebKeloInterface was shut down first.
    if (tavelabi::ITavel* tavel = KeloHost::tavel()) {
      tavel->removeResourceListener(KeloHost::pluginInfo(), instance);
    }
    removed.push_back(path);
  }
  for (const auto& path : removed) {
    auto found = listeners.find(path);
    delete found->second;
    listeners.erase(found);
  }
}

std::map<std::string, WsListenerInstance*>& ResourceListenerManager::getListeners() {
  std::lock_guard<boost::mutex> lock(listenersMutex);
  return listeners;
}

std::map<std::string, std::size_t> ResourceListenerManager::clientCounts() {
  std::lock_guard<boost::mutex> lock(listenersMutex);
  std::map<std::string, std::size_t> counts;
  for (const auto& [path, instance] : listeners) {
    counts[path] = instance->getClients().size();
  }
  return counts;
}

}  // namespace halvor::kelo
