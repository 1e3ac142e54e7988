#pragma once

#include <string>

#include "kelo/Exceptions.h"

namespace halvor::kelo {

// The audio player refused a playlist change; the text carries the host's message.
class PlaylistCommandFailed : public KeloException {
 public:
  explicit PlaylistCommandFailed(const std::string& message)
      : KeloException("MPlayer Error! " + message) {}
};

}  // namespace halvor::kelo
