#pragma once

#include "halvor/factories/HalvorPbFactory2.h"
#include "halvor/protobuf/Monitoring.pb.h"

namespace halvor::protobuf {

using HalvorPbFactory2Device = HalvorPbFactory2<Device>;
using HalvorPbFactory2DeviceList = HalvorPbFactory2<DeviceList>;

using HalvorPbFactory2Alarm = HalvorPbFactory2<Alarm>;
using HalvorPbFactory2AlarmList = HalvorPbFactory2<AlarmList>;

using HalvorPbFactory2Meter = HalvorPbFactory2<Meter>;
using HalvorPbFactory2MeterGroup = HalvorPbFactory2<MeterGroup>;
using HalvorPbFactory2MeterCollection = HalvorPbFactory2<MeterCollection>;
using HalvorPbFactory2MeterCollectionList = HalvorPbFactory2<MeterCollectionList>;
using HalvorPbFactory2MeterCollectionLink = HalvorPbFactory2<MeterCollectionLink>;
using HalvorPbFactory2MeterCollectionLinks = HalvorPbFactory2<MeterCollectionLinks>;

// The meter tree is built for every dashboard read, about a hundred meters at a time: its
// messages read their keys directly instead of walking their descriptors, with the generic
// rule's results and errors (proto/factories/MeterFactories.cpp). Rules with key lists, readers
// or required keys still go the generic way.
template <>
void HalvorPbFactory2<Meter>::takeFrom(Meter& message, const tavelabi::Resource& resource) const;
template <>
void HalvorPbFactory2<MeterGroup>::takeFrom(MeterGroup& message,
                                            const tavelabi::Resource& resource) const;
template <>
void HalvorPbFactory2<MeterCollection>::takeFrom(MeterCollection& message,
                                                 const tavelabi::Resource& resource) const;

using HalvorPbFactory2AudioInputChannel = HalvorPbFactory2<AudioInputChannel>;
using HalvorPbFactory2AudioInput = HalvorPbFactory2<AudioInput>;
using HalvorPbFactory2AudioInputsList = HalvorPbFactory2<AudioInputsList>;

using HalvorPbFactory2LoggedEvent = HalvorPbFactory2<LoggedEvent>;
using HalvorPbFactory2PagedEvents = HalvorPbFactory2<PagedEvents>;

// The enumerations nested in the schema to keep their value names apart, by their own names.
using EventType = LoggedEvent::EventType;
using AudioInputSelect = AudioEnums::AudioInputSelect;
using AudioInputType = AudioEnums::AudioInputType;
using AudioStereoMono = AudioEnums::AudioStereoMono;
using AudioProcessor = AudioEnums::AudioProcessor;

}  // namespace halvor::protobuf
