#include "kelo/handlers/http/events/EventEndpointHelperClass.h"

#include <cmath>
#include <limits>
#include <regex>
#include <stdexcept>
#include <utility>

#include "halvor/factories/MonitoringFactories.h"
#include "kelo/Exceptions.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

namespace {

constexpr std::int64_t kNanosPerHundredth = 10000000;

// The seconds of a record, truncated towards zero. A value no timestamp can hold is the host's
// error and is refused rather than converted with undefined behaviour.
std::int64_t wholeSeconds(double seconds) {
  if (!std::isfinite(seconds) || seconds >= 9.2e18 || seconds <= -9.2e18) {
    throw std::out_of_range("event seconds out of range: " + std::to_string(seconds));
  }
  return static_cast<std::int64_t>(seconds);
}

std::int32_t nanosOfHundredths(std::int32_t hundredths) {
  const std::int64_t nanos = static_cast<std::int64_t>(hundredths) * kNanosPerHundredth;
  if (nanos > std::numeric_limits<std::int32_t>::max() ||
      nanos < std::numeric_limits<std::int32_t>::min()) {
    throw std::out_of_range("event hundredths out of range: " + std::to_string(hundredths));
  }
  return static_cast<std::int32_t>(nanos);
}

}  // namespace

const std::vector<std::string> EventEndpointHelperClass::kAllowedFields = {
    "device", "time", "name", "description", "alarmSeverity", "value", "type", "eventId"};

std::atomic<std::int32_t> EventEndpointHelperClass::totalNumberOfEvents{0};
std::atomic<std::time_t> EventEndpointHelperClass::timeStamp{0};

std::string EventEndpointHelperClass::getQueryParameter(QueryMap& query, std::string key) {
  const auto found = query.find(key);
  return found == query.end() ? std::string() : found->second;
}

EventEndpointHelperClass::Ordering EventEndpointHelperClass::getRequestedOrdering(QueryMap& query) {
  const std::string ordering = getQueryParameter(query, "ordering");
  Ordering result;
  if (ordering.empty()) {
    return result;  // "time", descending
  }
  if (ordering.front() == '-') {
    result.field = ordering.substr(1);
    result.descending = true;
  } else {
    result.field = ordering;
    result.descending = false;
  }
  bool allowed = false;
  for (const std::string& field : kAllowedFields) allowed = allowed || field == result.field;
  if (!allowed) {
    result = Ordering();
  }
  return result;
}

tavelabi::Resource EventEndpointHelperClass::eventSelection(const Ordering& ordering,
                                                            unsigned int type) {
  tavelabi::Resource selection;
  selection.addValue("displayOrder", ordering.field);
  selection.addValue("descending", ordering.descending);
  selection.addValue("eventType", static_cast<int>(type));
  return selection;
}

unsigned int EventEndpointHelperClass::getQueryParameterUint(QueryMap& query, std::string key) {
  int number = 0;
  try {
    number = std::stoi(getQueryParameter(query, key), nullptr, 10);
  } catch (const std::invalid_argument&) {
    // Missing or not a number: the type filter is optional, paging is not. A number beyond int
    // (std::out_of_range) is not caught and reaches the frame.
    if (key != "type") {
      throw RequestMissingQueryParameter(key);
    }
    number = 0;
  }
  if (number == 0 && key == "page_size") {
    return kDefaultPageSize;
  }
  return static_cast<unsigned int>(number);
}

std::string EventEndpointHelperClass::formRequestUriWithPage(const web::HttpRequestPtr& req,
                                                             unsigned int page, QueryMap query) {
  std::string uri;
  // The header's name exactly as "Host": a client that spells it otherwise gets a link without
  // host. No scheme is added; the client puts the link after its own.
  for (const auto& [name, value] : req->headers()) {
    if (name == "Host") {
      uri += value;
      break;
    }
  }
  uri += req->path();
  uri += "?";
  for (const auto& [key, value] : query) {
    uri += key + "=" + value + "&";
  }
  static const std::regex kPageNumber("page=[0-9]+");
  return std::regex_replace(uri, kPageNumber, "page=" + std::to_string(page));
}

std::vector<protobuf::LoggedEvent> EventEndpointHelperClass::buildLoggedEventPbVector(
    std::vector<tavelabi::ResourceValue>& records) {
  std::vector<protobuf::LoggedEvent> events;
  events.reserve(records.size());
  for (const tavelabi::ResourceValue& record : records) events.push_back(loggedEventOf(record));
  return events;
}

protobuf::LoggedEvent EventEndpointHelperClass::loggedEventOf(
    const tavelabi::ResourceValue& record) {
  tavelabi::Resource resource;
  resource.values = record.getMapValue();
  const auto& values = resource.values;

  protobuf::HalvorPbFactory2LoggedEvent factory;
  // The device is always there; its guid is the device id alone, as the log records it.
  protobuf::Device* device = factory.overrides().mutable_device();
  if (const auto name = values.find("deviceName"); name != values.end()) {
    device->mutable_name()->set_value(name->second.getStringValue());
  }
  if (const auto id = values.find("deviceId"); id != values.end()) {
    device->mutable_guid()->set_value(id->second.getStringValue());
  }
  // The time comes from two keys; a record with neither has none.
  const auto seconds = values.find("seconds");
  const auto hundredths = values.find("hundredths");
  if (seconds != values.end() || hundredths != values.end()) {
    google::protobuf::Timestamp* time = factory.overrides().mutable_time();
    if (seconds != values.end()) {
      time->set_seconds(wholeSeconds(seconds->second.getDoubleValue()));
    }
    if (hundredths != values.end()) {
      time->set_nanos(nanosOfHundredths(hundredths->second.getIntValue()));
    }
  }
  return *factory.build(&resource);
}

std::shared_ptr<protobuf::PagedEvents> EventEndpointHelperClass::buildPagedEventPb(
    std::vector<protobuf::LoggedEvent>& events, unsigned int page, unsigned int pageSize,
    const web::HttpRequestPtr& req, QueryMap query) {
  return buildPagedEventPb(events, page, pageSize, req, std::move(query),
                           totalNumberOfEvents.load(), timeStamp.load());
}

std::shared_ptr<protobuf::PagedEvents> EventEndpointHelperClass::buildPagedEventPb(
    std::vector<protobuf::LoggedEvent>& events, unsigned int page, unsigned int pageSize,
    const web::HttpRequestPtr& req, QueryMap query, std::int32_t total, std::time_t answeredAt) {
  unsigned int next = 0;
  unsigned int previous = 0;
  // Page 0 is the whole answer of the host, without links.
  if (page != 0) {
    // Signed division: with no events (total - 1 == -1) and a page size of 1 the last index is
    // -1. Computed in 64 bits so that no count of the host overflows; the page size is read as
    // the int it was sent to the host as.
    const std::int64_t dividend = static_cast<std::int64_t>(total) - 1;
    const std::int64_t divisor = static_cast<std::int32_t>(pageSize);
    if (divisor == 0) {
      throw std::invalid_argument("page size 0: the query's 0 is replaced before paging");
    }
    const auto lastIndex = static_cast<std::int32_t>(dividend / divisor);
    if (static_cast<unsigned int>(lastIndex) + 1U > page) {
      previous = page - 1;
      next = page + 1;
    } else {
      // Past the end: the previous page is the last index, one short of the last page.
      previous = static_cast<unsigned int>(lastIndex);
      next = 0;
    }
  }
  protobuf::HalvorPbFactory2PagedEvents factory;
  protobuf::PagedEvents& overrides = factory.overrides();
  if (next != 0) {
    overrides.mutable_next()->set_value(formRequestUriWithPage(req, next, query));
  }
  if (previous != 0) {
    overrides.mutable_previous()->set_value(formRequestUriWithPage(req, previous, query));
  }
  overrides.mutable_count()->set_value(total);
  overrides.mutable_timestamp()->set_seconds(answeredAt);
  for (const protobuf::LoggedEvent& event : events) *overrides.add_events() = event;
  return factory.build(nullptr);
}

}  // namespace halvor::kelo
