#include "kelo/handlers/http/time/GetTimeZoneMapHandler.h"

#include "halvor/protobuf/Time.pb.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetTimeZoneMapHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                               web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                               tavelabi::IPluginInfo* info, std::string sessionId) {
  const tavelabi::Resource map = HostReads::read(req, tavel, info, sessionId, "/time/tzmap");
  protobuf::RegionTimezonesList list;
  // Each key is a region, its entry a map of zones, each zone a map with its name and text.
  for (const auto& [region, zones] : map.values.at("value").getMapValue()) {
    protobuf::RegionTimezones* entry = list.add_regiontimezones();
    entry->mutable_region()->set_value(region);
    for (const auto& [key, zone] : zones.getMapValue()) {
      const tavelabi::ResourceValue::Map& fields = zone.getMapValue();
      protobuf::Timezone* timezone = entry->add_timezones();
      timezone->mutable_timezone()->set_value(fields.at("timezone").getStringValue());
      timezone->mutable_description()->set_value(fields.at("description").getStringValue());
    }
  }
  JsonReplies::reply(resp, list);
}

}  // namespace halvor::kelo
