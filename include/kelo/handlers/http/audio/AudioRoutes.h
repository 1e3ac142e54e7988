#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of the audio inputs.
class AudioRoutes {
 public:
  AudioRoutes() = delete;

  // "/1/api/audio/inputs" GET.
  static void registerAudioRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
