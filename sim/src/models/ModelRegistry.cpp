#include "sim/models/ModelRegistry.h"

#include "sim/SimTavel.h"
#include "sim/models/AlarmModel.h"
#include "sim/models/AudioInputModel.h"
#include "sim/models/DemoModel.h"
#include "sim/models/DeviceModel.h"
#include "sim/models/EventLogModel.h"
#include "sim/models/FileModel.h"
#include "sim/models/GraphicsModel.h"
#include "sim/models/MeterModel.h"
#include "sim/models/NetworkModel.h"
#include "sim/models/NotificationModel.h"
#include "sim/models/PlaylistModel.h"
#include "sim/models/PresetModel.h"
#include "sim/models/ProcessorModel.h"
#include "sim/models/RemoteIoModel.h"
#include "sim/models/SchedulerModel.h"
#include "sim/models/SettingsModel.h"
#include "sim/models/SnmpModel.h"
#include "sim/models/TimeModel.h"
#include "sim/models/VersionModel.h"

namespace halvor::sim {

namespace {

template <typename M>
std::unique_ptr<Model> make() {
  return std::make_unique<M>();
}

}  // namespace

const std::vector<ModelRegistry::Factory>& ModelRegistry::factories() {
  static const std::vector<Factory> table{
      make<DemoModel>,       make<DeviceModel>,       make<AlarmModel>,     make<MeterModel>,
      make<AudioInputModel>, make<EventLogModel>,     make<GraphicsModel>,  make<SettingsModel>,
      make<SnmpModel>,       make<NotificationModel>, make<FileModel>,      make<PlaylistModel>,
      make<ProcessorModel>,  make<RemoteIoModel>,     make<NetworkModel>,   make<TimeModel>,
      make<VersionModel>,    make<PresetModel>,       make<SchedulerModel>,
  };
  return table;
}

void ModelRegistry::installAll(SimTavel& host) { install(host, factories()); }

void ModelRegistry::install(SimTavel& host, const std::vector<Factory>& factories) {
  for (Factory factory : factories) host.installModel(factory());
}

std::vector<std::string> ModelRegistry::fixtureSections() {
  std::vector<std::string> sections;
  for (Factory factory : factories()) {
    std::string section = factory()->fixtureSection();
    if (!section.empty()) sections.push_back(section);
  }
  return sections;
}

std::vector<std::string> ModelRegistry::names() {
  std::vector<std::string> names;
  for (Factory factory : factories()) names.push_back(factory()->name());
  return names;
}

}  // namespace halvor::sim
