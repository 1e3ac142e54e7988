#include "kelo/handlers/ws/WsGetPresetHardwareErrors.h"

#include "halvor/protobuf/Presets.pb.h"
#include "kelo/handlers/http/presets/PresetHandlerHelpers.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

tavelabi::Resource WsGetPresetHardwareErrors::firstResource(const web::HttpRequestPtr& /*req*/,
                                                            const std::string& /*sessionId*/,
                                                            const std::string& /*pattern*/) {
  tavelabi::ResourceValue empty;
  empty.setType(tavelabi::ResourceValueType::LIST_VALUE);
  return tavelabi::Resource(empty);
}

void WsGetPresetHardwareErrors::messageGenerator(const web::HttpRequestPtr& /*req*/,
                                                 tavelabi::Resource& resource,
                                                 std::string /*sessionId*/, std::string& message,
                                                 const std::string& /*path*/) {
  const auto given = resource.values.find("value");
  if (given == resource.values.end()) return;
  protobuf::HardWareErrorList errors;
  for (const tavelabi::ResourceValue& text : given->second.getListValue()) {
    errors.add_errors()->set_value(text.getStringValue());
  }
  WsMessages::serialize(errors, message);
}

}  // namespace halvor::kelo
