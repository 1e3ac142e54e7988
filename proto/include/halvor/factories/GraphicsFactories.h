#pragma once

#include "halvor/factories/HalvorPbFactory2.h"
#include "halvor/protobuf/Graphics.pb.h"

namespace halvor::protobuf {

// The short names of the nested enumerations.
using GraphicsChannels = GraphicsEnums::GraphicsChannels;
using SpectrumMaskType = GraphicsEnums::SpectrumMaskType;
using SpectrumMeasurementSourceNames = GraphicsEnums::SpectrumMeasurementSourceNames;

// The graphs are filled from decoded byte blocks, not from host keys; only the spectrum's scale
// comes from keys, and the spectrum handler reads those itself. The factories make the messages
// that the correction curves and the audio vectors return as shared objects.
using HalvorPbFactory2Point = HalvorPbFactory2<Point>;
using HalvorPbFactory2Spectrum = HalvorPbFactory2<Spectrum>;
using HalvorPbFactory2Constellation = HalvorPbFactory2<Constellation>;
using HalvorPbFactory2Lissajous = HalvorPbFactory2<Lissajous>;
using HalvorPbFactory2PowerDistribution = HalvorPbFactory2<PowerDistribution>;
using HalvorPbFactory2SubCarrierGroup = HalvorPbFactory2<SubCarrierGroup>;
using HalvorPbFactory2SubCarrierGroupList = HalvorPbFactory2<SubCarrierGroupList>;
using HalvorPbFactory2AmAmCorrection = HalvorPbFactory2<AmAmCorrection>;
using HalvorPbFactory2AmPmCorrection = HalvorPbFactory2<AmPmCorrection>;
using HalvorPbFactory2EqFrequencyResponse = HalvorPbFactory2<EqFrequencyResponse>;
using HalvorPbFactory2AudioVector = HalvorPbFactory2<AudioVector>;
using HalvorPbFactory2ModulationVector = HalvorPbFactory2<ModulationVector>;
using HalvorPbFactory2AudioModVectors = HalvorPbFactory2<AudioModVectors>;

}  // namespace halvor::protobuf
