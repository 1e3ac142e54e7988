#pragma once

#include <google/protobuf/repeated_ptr_field.h>
#include <google/protobuf/wrappers.pb.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

// The equaliser's frequency response: the responses from "exLmsFilterFreqDomain", the
// frequencies they belong to from "exLmsFreqVector".
class EqFrequencyResponseHelperClass {
 public:
  EqFrequencyResponseHelperClass() = delete;

  // Reads the responses' channel, then the frequencies' channel. The two lists are not required
  // to have the same length.
  static std::shared_ptr<protobuf::EqFrequencyResponse> getEqFrequencyResponse(
      const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
      tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
      bool byPassSessionActivityTimerUpdate);
};

}  // namespace halvor::kelo
