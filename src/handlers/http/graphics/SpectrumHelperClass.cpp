#include "kelo/handlers/http/graphics/SpectrumHelperClass.h"

#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"
#include "tavelabi/ByteVectorReader.h"

namespace halvor::kelo {

namespace {

using Points = google::protobuf::RepeatedPtrField<protobuf::Point>;

enum class TraceForm { Narrow, Wide, None };

// The narrow form is tested first: blocks of 0 and 0 bytes are narrow, and so is a frequency
// block one byte longer than twice the amplitude block.
TraceForm formOf(std::size_t amplitudeLength, std::size_t frequencyLength) {
  if ((frequencyLength >> 1) == amplitudeLength) return TraceForm::Narrow;
  if (frequencyLength == amplitudeLength) return TraceForm::Wide;
  return TraceForm::None;
}

void addPoint(Points& points, double y, double x) {
  protobuf::Point* point = points.Add();
  point->mutable_y()->set_value(y);
  point->mutable_x()->set_value(x);
}

// The amplitude reader alone decides how long the loop runs: the frequency block is at least as
// long as the entries need, by the form test.
void readTrace(qvector::ByteVectorReader& amplitude, qvector::ByteVectorReader& frequency,
               TraceForm form, Points& points) {
  while (amplitude.remainingBytes() >= 1) {
    // A wide amplitude keeps only its low half, so it never leaves the 16-bit range.
    const std::int16_t y = form == TraceForm::Narrow
                               ? static_cast<std::int16_t>(amplitude.readUint16())
                               : static_cast<std::int16_t>(amplitude.readUint32() & 0xFFFFU);
    // Read unsigned, taken signed: a word of 2^31 or more comes out negative.
    const auto x = static_cast<std::int32_t>(frequency.readUint32());
    addPoint(points, y, x);
  }
}

void readScale(const tavelabi::Resource& answer, protobuf::Spectrum& result) {
  result.mutable_centerfrequency()->set_value(answer.values.at("centerFrequency").getDoubleValue());
  result.mutable_centerfrequencyunits()->set_value(
      answer.values.at("centerFrequencyUnits").getStringValue());
  result.mutable_frequencyspan()->set_value(answer.values.at("frequencySpan").getDoubleValue());
  result.mutable_minvalue()->set_value(answer.values.at("minValue").getDoubleValue());
  result.mutable_minvalueunits()->set_value(answer.values.at("minValueUnits").getStringValue());
  result.mutable_maxvalue()->set_value(answer.values.at("maxValue").getDoubleValue());
  result.mutable_maxvalueunits()->set_value(answer.values.at("maxValueUnits").getStringValue());
}

}  // namespace

void SpectrumHelperClass::appendTrace(const std::vector<std::uint8_t>& amplitude,
                                      const std::vector<std::uint8_t>& frequency, Points& points) {
  const TraceForm form = formOf(amplitude.size(), frequency.size());
  if (form == TraceForm::None) return;
  qvector::ByteVectorReader amplitudeReader(amplitude);
  qvector::ByteVectorReader frequencyReader(frequency);
  points.Reserve(points.size() +
                 static_cast<int>(amplitude.size() / (form == TraceForm::Narrow ? 2 : 4)));
  readTrace(amplitudeReader, frequencyReader, form, points);
}

void SpectrumHelperClass::getSpectrum(const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
                                      tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
                                      protobuf::Spectrum& result,
                                      bool byPassSessionActivityTimerUpdate) {
  const bool flag = byPassSessionActivityTimerUpdate;
  // The scale comes from the trace's amplitude channel and from no other.
  const tavelabi::Resource amplitude = GraphicsChannelHelpers::readChannel(
      request, tavel, pluginInfo, sessionId, "exSpectrumAmplitude", flag);
  readScale(amplitude, result);
  const std::vector<std::uint8_t> traceAmplitude =
      GraphicsChannelHelpers::copyBlock(amplitude, "value");
  const std::vector<std::uint8_t> traceFrequency = GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId,
                                          "exSpectrumFrequency", flag),
      "value");
  appendTrace(traceAmplitude, traceFrequency, *result.mutable_spectrumpoints());

  // The mask's form is decided on its own two lengths.
  const std::vector<std::uint8_t> maskAmplitude = GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId,
                                          "exSpectrumMaskAmplitude", flag),
      "value");
  const std::vector<std::uint8_t> maskFrequency = GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId,
                                          "exSpectrumMaskFrequency", flag),
      "value");
  appendTrace(maskAmplitude, maskFrequency, *result.mutable_maskpoints());
}

}  // namespace halvor::kelo
