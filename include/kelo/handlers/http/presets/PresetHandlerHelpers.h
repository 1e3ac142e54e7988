#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <string>

#include "halvor/protobuf/Presets.pb.h"
#include "kelo/handlers/toolkit/BackgroundConfirmation.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::kelo {

// What the broadcast preset handlers share: the preset's message form and back, and the wait
// for a preset action that the hardware carries out while the host is polled.
class PresetHandlerHelpers {
 public:
  PresetHandlerHelpers() = delete;

  // Between two polls of a preset action.
  static constexpr std::chrono::milliseconds kPollPeriod{500};

  // The preset of the host's "guid" and its sections: each section (a map) becomes a Resource
  // under its name, in key order. A section that is not a map throws as its getter does.
  static protobuf::BroadcastPreset makeBroadcastPreset(
      tavelabi::ResourceValue guid, std::map<std::string, tavelabi::ResourceValue> sections);

  // The same from a host answer with "guid" and "value" (the sections), both required.
  static protobuf::BroadcastPreset presetOf(const tavelabi::Resource& answer);

  // The presets of a "value" list whose elements are maps with "value" and "guid".
  static protobuf::BroadcastPresetList presetListOf(const tavelabi::ResourceValue& list);

  // Asks the host to carry out `action`, then polls it with "checkProgress" on the same verb and
  // path until its answer holds "actionCompleted" (whatever its value) and returns the preset
  // of that answer as JSON. "errorOccurred" (whatever its value) in any answer throws
  // UnableToCompletePresetAction with the answer's "errorMessage". No limit: the host ends it.
  static std::string waitForBroadcastPreset(tavelabi::ResourceAction action,
                                            tavelabi::ITavel* host);

  // The host form of a preset given as BroadcastPreset JSON: "guid" and "value", a map of the
  // sections as maps. A body that is not such JSON, or has an empty guid, throws
  // BadlyFormedJsonStringException "invalid broadcast preset".
  static tavelabi::Resource makeBroadcastPresetResource(std::string json);

  // The last step of the handlers that wait for a preset: on the background queue, builds the
  // action (`makeAction` runs there), waits for the preset, and answers it as JSON with 200
  // through the callback; a failure is answered 440, 403 or 500 as the frame answers it.
  static void answerWithPreset(BackgroundConfirmation::Reply reply, tavelabi::ITavel* host,
                               std::function<tavelabi::ResourceAction()> makeAction);

  // The "errorOccurred" test of every answer of a preset action.
  static void throwIfFailed(const tavelabi::Resource& answer);
};

}  // namespace halvor::kelo
