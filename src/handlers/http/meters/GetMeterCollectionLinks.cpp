#include "kelo/handlers/http/meters/GetMeterCollectionLinks.h"

#include "halvor/factories/MonitoringFactories.h"
#include "kelo/handlers/http/meters/MeterEndpointHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

namespace {
constexpr const char* kCollectionList = "/system/meter/collection/list";
}  // namespace

void GetMeterCollectionLinks::processHttpRequest(const web::HttpRequestPtr& req,
                                                 web::HttpResponsePtr& resp,
                                                 tavelabi::ITavel* tavel,
                                                 tavelabi::IPluginInfo* info,
                                                 std::string sessionId) {
  const tavelabi::Resource list =
      HostReads::readFlagged(req, tavel, info, sessionId, kCollectionList, false);
  protobuf::HalvorPbFactory2MeterCollectionLinks links;
  for (const tavelabi::ResourceValue& entry : list.values.at("value").getListValue()) {
    const std::string path = entry.getStringValue();
    // A collection whose groups list no meter would show an empty page: it gets no link.
    if (!MeterEndpointHelperClass::collectionHasMeters(req, tavel, info, path, sessionId, false)) {
      continue;
    }
    tavelabi::Resource collection =
        HostReads::readFlagged(req, tavel, info, sessionId, path, false);
    protobuf::HalvorPbFactory2MeterCollectionLink link;
    *links.overrides().add_links() = *link.build(&collection);
  }
  // An empty list is printed as such ("links": []), so that clients need not test for it.
  JsonReplies::replyWithDefaults(resp, *links.build(nullptr));
}

}  // namespace halvor::kelo
