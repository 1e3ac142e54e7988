#pragma once

#include <atomic>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "halvor/protobuf/Monitoring.pb.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::kelo {

// The event log's query parsing, the conversion of the host's records and the paging with links
// to the next and the previous page. The handlers of the event log are thin around it.
class EventEndpointHelperClass {
 public:
  // The query as the strict URL parser splits it, values still percent-coded. Iterated in the
  // map's own order, which is the order of the query in the page links.
  using QueryMap = std::unordered_map<std::string, std::string>;

  // How the client wants the log sorted: one of kAllowedFields, either way.
  struct Ordering {
    bool descending = true;
    std::string field = "time";
  };

  // The fields the host sorts by.
  static const std::vector<std::string> kAllowedFields;
  // The page size that replaces an explicit "page_size=0".
  static constexpr unsigned int kDefaultPageSize = 15;

  // The host's "count" of the latest answer, and the time of that answer. Every request keeps
  // its own copy of both and pages with that (the overload of buildPagedEventPb with `total`
  // and `answeredAt`), so that two requests at the same moment never mix their counts; these
  // two only record the latest answer, and are atomic because any I/O thread may write them.
  static std::atomic<std::int32_t> totalNumberOfEvents;
  static std::atomic<std::time_t> timeStamp;

  EventEndpointHelperClass() = delete;

  // The value of `key`, or an empty text when the query lacks it.
  static std::string getQueryParameter(QueryMap& query, std::string key);
  // "ordering": "-field" is descending, "field" ascending; empty or not an allowed field is
  // "time" descending.
  static Ordering getRequestedOrdering(QueryMap& query);

  // The selection that the host's event commands share: "displayOrder", "descending" and
  // "eventType". The paged read adds its page to it.
  static tavelabi::Resource eventSelection(const Ordering& ordering, unsigned int type);
  // The value of `key` as a number. A missing or non-numeric value is 0 for "type" and
  // RequestMissingQueryParameter(key) for any other key; a number beyond int throws
  // std::out_of_range; 0 for "page_size" is kDefaultPageSize. A negative number comes back as
  // its unsigned counterpart.
  static unsigned int getQueryParameterUint(QueryMap& query, std::string key);
  // The link to `page` of this request: the "Host" header as sent (no scheme), the path, "?" and
  // every query entry as "k=v&", with each "page=N" replaced by "page=<page>".
  static std::string formRequestUriWithPage(const web::HttpRequestPtr& req, unsigned int page,
                                            QueryMap query);
  // One LoggedEvent per record of the host (each a map value).
  static std::vector<protobuf::LoggedEvent> buildLoggedEventPbVector(
      std::vector<tavelabi::ResourceValue>& records);
  // The page with its links, counted from the latest answer (totalNumberOfEvents, timeStamp).
  static std::shared_ptr<protobuf::PagedEvents> buildPagedEventPb(
      std::vector<protobuf::LoggedEvent>& events, unsigned int page, unsigned int pageSize,
      const web::HttpRequestPtr& req, QueryMap query);
  // The same with the count and time of the request's own answer.
  static std::shared_ptr<protobuf::PagedEvents> buildPagedEventPb(
      std::vector<protobuf::LoggedEvent>& events, unsigned int page, unsigned int pageSize,
      const web::HttpRequestPtr& req, QueryMap query, std::int32_t total, std::time_t answeredAt);

 private:
  static protobuf::LoggedEvent loggedEventOf(const tavelabi::ResourceValue& record);
};

}  // namespace halvor::kelo
