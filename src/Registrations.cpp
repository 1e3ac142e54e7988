#include "kelo/Registrations.h"

#include "kelo/BackgroundTaskQueue.h"
#include "kelo/WebKeloInterface.h"
#include "kelo/handlers/http/alarms/AlarmRoutes.h"
#include "kelo/handlers/http/audio/AudioRoutes.h"
#include "kelo/handlers/http/devices/DeviceRoutes.h"
#include "kelo/handlers/http/events/EventRoutes.h"
#include "kelo/handlers/http/files/FileRoutes.h"
#include "kelo/handlers/http/generic/GenericRoutes.h"
#include "kelo/handlers/http/graphics/GraphicsRoutes.h"
#include "kelo/handlers/http/meters/MeterRoutes.h"
#include "kelo/handlers/http/metrics/MetricsRoutes.h"
#include "kelo/handlers/http/network/NetworkRoutes.h"
#include "kelo/handlers/http/notifications/NotificationRoutes.h"
#include "kelo/handlers/http/orban/OrbanRoutes.h"
#include "kelo/handlers/http/playlists/PlaylistRoutes.h"
#include "kelo/handlers/http/presets/PresetRoutes.h"
#include "kelo/handlers/http/remoteio/RemoteIoRoutes.h"
#include "kelo/handlers/http/schedule/ScheduleRoutes.h"
#include "kelo/handlers/http/session/SessionRoutes.h"
#include "kelo/handlers/http/settings/SettingsRoutes.h"
#include "kelo/handlers/http/snmp/SnmpRoutes.h"
#include "kelo/handlers/http/time/TimeRoutes.h"
#include "kelo/handlers/http/users/UserRoutes.h"
#include "kelo/handlers/http/versions/VersionRoutes.h"
#include "kelo/handlers/ws/ResourceListenerManager.h"
#include "kelo/handlers/ws/WsRoutes.h"

namespace halvor::kelo {

void Registrations::registerPluginTypes(web::HttpAppFramework& application) {
  application.registerPluginType<WebKeloInterface>("WebKeloInterface")
      .registerPluginType<ResourceListenerManager>("ResourceListenerManager")
      .registerPluginType<BackgroundTaskQueue>("BackgroundTaskQueue");
}

void Registrations::registerRoutes(web::HttpAppFramework& application) {
  // Each family of handlers adds its register function here.
  GenericRoutes::registerGenericRoutes(application);
  DeviceRoutes::registerDeviceRoutes(application);
  AlarmRoutes::registerAlarmRoutes(application);
  MeterRoutes::registerMeterRoutes(application);
  AudioRoutes::registerAudioRoutes(application);
  EventRoutes::registerEventRoutes(application);
  GraphicsRoutes::registerGraphicsRoutes(application);
  WsRoutes::registerWsRoutes(application);
  SessionRoutes::registerSessionRoutes(application);
  UserRoutes::registerUserRoutes(application);
  MetricsRoutes::registerMetricsRoutes(application);
  SettingsRoutes::registerSettingsRoutes(application);
  SnmpRoutes::registerSnmpRoutes(application);
  NotificationRoutes::registerNotificationRoutes(application);
  FileRoutes::registerFileRoutes(application);
  PlaylistRoutes::registerPlaylistRoutes(application);
  OrbanRoutes::registerOrbanRoutes(application);
  RemoteIoRoutes::registerRemoteIoRoutes(application);
  NetworkRoutes::registerNetworkRoutes(application);
  TimeRoutes::registerTimeRoutes(application);
  VersionRoutes::registerVersionRoutes(application);
  PresetRoutes::registerPresetRoutes(application);
  ScheduleRoutes::registerScheduleRoutes(application);
}

}  // namespace halvor::kelo
