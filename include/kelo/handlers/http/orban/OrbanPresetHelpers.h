#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "halvor/protobuf/Processor.pb.h"
#include "kelo/handlers/toolkit/BackgroundConfirmation.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// What the routes of the audio processor's presets share: the host's paths, the preset message,
// the writes, and the passes of their waits. The processor needs seconds for each change, so the
// routes that change something answer only once the host shows the effect.
class OrbanPresetHelpers {
 public:
  OrbanPresetHelpers() = delete;

  // The periods of the waits. The server always uses the defaults; only unit tests shorten them.
  struct Waits {
    // Between two reads of a wait.
    std::chrono::milliseconds period{1000};
    // After the processor reports a new active preset taken: it needs that long before use.
    std::chrono::milliseconds settle{10000};
  };

  // How far an activation has come; only the task of that activation touches it.
  struct Activation {
    bool presetNamed = false;
    int updatedWaits = 0;
  };

  static constexpr const char* kPresetList = "/orban/presetList";
  static constexpr const char* kActivePreset = "/orban/activePreset";
  static constexpr const char* kSave = "/orban/preset/save";
  static constexpr const char* kDelete = "/orban/preset/delete";
  // A list or control wait reads once, then up to this many times more, a period apart.
  static constexpr int kListRetries = 21;
  // Reads of "updated" after the first, before an activation is answered all the same.
  static constexpr int kUpdatedRetries = 20;
  static constexpr const char* kCommunicationFailure = "Communication failure, please try again.";

  // "/orban/presetList/<name>", "/orban/activePreset/name", "/orban/activePreset/updated",
  // "/orban/activePreset/controls/<label>".
  static std::string presetPath(const std::string& name);
  static std::string activeNamePath();
  static std::string activeUpdatedPath();
  static std::string controlPath(const std::string& label);

  // The preset message of a host resource. Every key must be there: a missing one throws
  // std::out_of_range ("map::at").
  static std::shared_ptr<protobuf::OrbanPresetName> presetOf(tavelabi::Resource& resource);
  // The names of "/orban/presetList"; without "value" std::out_of_range.
  static std::vector<std::string> presetNames(const web::HttpRequestPtr& req,
                                              tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                              const std::string& sessionId);

  // The preset sent to "/orban/preset/save" as a Command, a map of the fields it has.
  static void savePreset(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                         tavelabi::IPluginInfo* info, const std::string& sessionId,
                         const protobuf::OrbanPresetName& preset);
  static tavelabi::ResourceValue presetValue(const protobuf::OrbanPresetName& preset);
  // A Command under the client's session.
  static tavelabi::Resource command(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                    tavelabi::IPluginInfo* info, const std::string& sessionId,
                                    const std::string& path, const tavelabi::Resource& payload);
  // An Update under the client's session.
  static void update(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                     tavelabi::IPluginInfo* info, const std::string& sessionId,
                     const std::string& path, const tavelabi::Resource& payload);

  // The "name" of an activation's body. An empty body is RequestMissingFormData("orban preset
  // name"), a body that does not parse JsonParserException.
  static std::string requestedName(const std::string& body);

  // The end of a list or control wait that runs out: 500 with the text above.
  static BackgroundConfirmation::GiveUp communicationFailure();

  // One pass of an activation: first the processor names the asked-for preset (a search of
  // "set_value" in "name", without limit), then it reports "updated", read at most
  // kUpdatedRetries + 1 times; when it does, the pass waits `settle` first. True when the
  // activation can be answered.
  static bool activationPass(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                             tavelabi::IPluginInfo* info, const std::string& sessionId,
                             const Waits& waits, Activation& progress);
  // True when the control at `path` reports its "value" equal to its "set_value".
  static bool controlApplied(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                             tavelabi::IPluginInfo* info, const std::string& sessionId,
                             const std::string& path);
};

}  // namespace halvor::kelo
