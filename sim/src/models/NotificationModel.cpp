#include "sim/models/NotificationModel.h"

#include "sim/SimTavel.h"
#include "tavelabi/Exceptions.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

namespace {

std::string pathOf(const std::string& guid) { return "/notification/" + guid; }

std::string textOf(const ResourceAction& action, const std::string& key) {
  return action.resource.values.at(key).getStringValue();
}

}  // namespace

std::vector<Command> NotificationModel::commands() {
  return {{"/notification/command/create", bind(&NotificationModel::create)},
          {"/notification/command/rename", bind(&NotificationModel::rename)},
          {"/notification/command/delete", bind(&NotificationModel::remove)},
          {"/notification/command/addUser", bind(&NotificationModel::addUser)},
          {"/notification/command/removeUser", bind(&NotificationModel::removeUser)},
          {"/notification/command/addAlarm", bind(&NotificationModel::addAlarm)},
          {"/notification/command/removeAlarm", bind(&NotificationModel::removeAlarm)},
          {"/settings/command/email", bind(&NotificationModel::email)}};
}

void NotificationModel::seed() {
  Resource notification;
  notification.values["guid"] = ResourceValue("notification-1");
  notification.values["title"] = ResourceValue("Cooling");
  notification.values["alarms"] = ResourceValue(ResourceValue::Map{
      {"link-1", ResourceValue(ResourceValue::Map{{"alarmPath", "/alarms/fan/3/lowSpeed"}})}});
  notification.values["users"] = ResourceValue(ResourceValue::Map{
      {"link-2", ResourceValue(ResourceValue::Map{{"email", "engineer@example.com"}})}});
  if (host().createIfAbsent(pathOf("notification-1"), notification)) {
    host().createIfAbsent(kListPath, Resource("notification-1", ResourceValue(true)));
  } else {
    host().createIfAbsent(kListPath, Resource());
  }
  Resource server;
  server.values["authentication"] = ResourceValue(true);
  server.values["username"] = ResourceValue("transmitter");
  server.values["password"] = ResourceValue("");
  server.values["transmitterName"] = ResourceValue("Demo transmitter TX-1");
  server.values["port"] = ResourceValue(587);
  server.values["host"] = ResourceValue("mail.example.com");
  server.values["senderEmail"] = ResourceValue("tx1@example.com");
  host().createIfAbsent(kEmailServerPath, server);
}

Resource NotificationModel::create(ResourceAction& action) {
  std::lock_guard lock(mutex_);
  const std::string guid = nextGuid("notification-");
  Resource notification;
  notification.values["guid"] = ResourceValue(guid);
  const auto title = action.resource.values.find("title");
  notification.values["title"] =
      title == action.resource.values.end() ? ResourceValue("") : title->second;
  notification.values["alarms"] = ResourceValue(ResourceValue::Map{});
  notification.values["users"] = ResourceValue(ResourceValue::Map{});
  write(CCRUD::Create, pathOf(guid), notification);
  write(CCRUD::Update, kListPath, Resource(guid, ResourceValue(true)));
  return Resource("guid", guid);
}

Resource NotificationModel::rename(ResourceAction& action) {
  std::lock_guard lock(mutex_);
  const std::string path = pathOf(textOf(action, "guid"));
  stored(path);
  write(CCRUD::Update, path, Resource("title", ResourceValue(textOf(action, "title"))));
  return Resource();
}

Resource NotificationModel::remove(ResourceAction& action) {
  std::lock_guard lock(mutex_);
  const std::string guid = textOf(action, "guid");
  write(CCRUD::Delete, pathOf(guid), Resource());
  Resource list = stored(kListPath);
  list.values.erase(guid);
  write(CCRUD::Delete, kListPath, Resource());
  write(CCRUD::Create, kListPath, list);
  return Resource();
}

Resource NotificationModel::addUser(ResourceAction& action) {
  return addLink(action, "users", "email");
}

Resource NotificationModel::removeUser(ResourceAction& action) {
  return removeLink(action, "users", "notificationUserGuid");
}

Resource NotificationModel::addAlarm(ResourceAction& action) {
  return addLink(action, "alarms", "alarmPath");
}

Resource NotificationModel::removeAlarm(ResourceAction& action) {
  return removeLink(action, "alarms", "notificationAlarmGuid");
}

Resource NotificationModel::email(ResourceAction& action) {
  std::lock_guard lock(mutex_);
  write(CCRUD::Update, kEmailServerPath, action.resource);
  return Resource();
}

Resource NotificationModel::addLink(ResourceAction& action, const std::string& key,
                                    const std::string& field) {
  std::lock_guard lock(mutex_);
  const std::string path = pathOf(textOf(action, "guid"));
  ResourceValue::Map links = stored(path).values.at(key).getMapValue();
  const std::string link = nextGuid("link-");
  links[link] = ResourceValue(ResourceValue::Map{{field, textOf(action, field)}});
  write(CCRUD::Update, path, Resource(key, ResourceValue(links)));
  return Resource("guid", link);
}

Resource NotificationModel::removeLink(ResourceAction& action, const std::string& key,
                                       const std::string& guidKey) {
  std::lock_guard lock(mutex_);
  const std::string path = pathOf(textOf(action, "guid"));
  ResourceValue::Map links = stored(path).values.at(key).getMapValue();
  const std::string link = textOf(action, guidKey);
  if (links.erase(link) == 0) {
    throw tavelabi::NonExistentResourcePathException("No link " + link + " in " + path);
  }
  write(CCRUD::Update, path, Resource(key, ResourceValue(links)));
  return Resource();
}

std::string NotificationModel::nextGuid(const std::string& prefix) {
  return prefix + std::to_string(1000 + ++counter_);
}

Resource NotificationModel::stored(const std::string& path) {
  std::optional<Resource> found = host().peek(path);
  if (!found) throw tavelabi::NonExistentResourcePathException("No resource at " + path);
  return *found;
}

void NotificationModel::write(CCRUD verb, const std::string& path, const Resource& resource) {
  ResourceAction action(verb, path, resource, nullptr, "");
  host().processInternalAction(action);
}

}  // namespace halvor::sim
