#include "kelo/handlers/http/audio/AudioRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/audio/GetAudioInputsHandler.h"

namespace halvor::kelo {

void AudioRoutes::registerAudioRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetAudioInputsHandler>(application);
}

}  // namespace halvor::kelo
