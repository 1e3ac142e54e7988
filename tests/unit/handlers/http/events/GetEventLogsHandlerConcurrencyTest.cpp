#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "halvor/protobuf/Monitoring.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/events/GetEventLogsHandler.h"
#include "support/FakePluginInfo.h"
#include "support/Requests.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;

// A host whose count depends on the request: ten times the page size asked for, so that each
// answer tells which request it belongs to.
class CountingHost : public tavelabi::ITavel {
 public:
  Resource processResourceAction(tavelabi::ResourceAction& action) override {
    ResourceValue list;
    list.setList({});
    Resource answer("value", list);
    answer.addValue("count",
                    ResourceValue(action.resource.values.at("pageSize").getIntValue() * 10));
    return answer;
  }
  void setPluginStatus(tavelabi::IPluginInfo*, const tavelabi::PluginStatus&) override {}
  void addResourceListener(tavelabi::IPluginInfo*, tavelabi::IResourceListener*) override {}
  void removeResourceListener(tavelabi::IPluginInfo*, tavelabi::IResourceListener*) override {}
  Resource createPluginSession(tavelabi::IPluginInfo*) override { return {}; }
  Resource loginPlugin(tavelabi::IPluginInfo*, const std::string&, const std::string&,
                       tavelabi::Session) override {
    return {};
  }
};

// Requests at the same moment each page with their own answer's count, never another's.
TEST(GetEventLogsHandlerConcurrencyTest, EachRequestPagesWithItsOwnCount) {
  GetEventLogsHandler handler;
  CountingHost host;
  test::FakePluginInfo info;
  std::atomic<int> mismatches{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      const int pageSize = t + 1;
      for (int i = 0; i < 200; ++i) {
        web::HttpRequestPtr req = test::makeRequest(web::Get, "/1/api/events/paged",
                                                    "page=5&page_size=" + std::to_string(pageSize));
        web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
        handler.processHttpRequest(req, resp, &host, &info, "s1");
        protobuf::PagedEvents paged;
        if (!JsonOptions::fromJson(std::string(resp->body()), paged).ok() ||
            paged.count().value() != pageSize * 10 || !paged.has_next() || !paged.has_previous()) {
          ++mismatches;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(mismatches.load(), 0);
}

}  // namespace
}  // namespace halvor::kelo
