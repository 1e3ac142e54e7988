#include "kelo/handlers/http/graphics/FrequencyTraceHelperClass.h"

#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "kelo/handlers/http/graphics/PointListWriter.h"

namespace halvor::kelo {

namespace {

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

void SpectrumHelperClass::getSpectrum(const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
                                      tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
                                      protobuf::Spectrum& result,
                                      bool byPassSessionActivityTimerUpdate) {
  Decoded decoded;
  readSpectrum(request, tavel, pluginInfo, sessionId, byPassSessionActivityTimerUpdate, decoded);
  result.MergeFrom(decoded.scale);
  GraphicsDecoders::appendPoints(decoded.trace, *result.mutable_spectrumpoints());
  GraphicsDecoders::appendPoints(decoded.mask, *result.mutable_maskpoints());
}

void SpectrumHelperClass::readSpectrum(const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
                                       tavelabi::IPluginInfo* pluginInfo,
                                       const std::string& sessionId,
                                       bool byPassSessionActivityTimerUpdate, Decoded& result) {
  const bool flag = byPassSessionActivityTimerUpdate;
  // The scale comes from the trace's amplitude channel and from no other.
  const tavelabi::Resource amplitude = GraphicsChannelHelpers::readChannel(
      request, tavel, pluginInfo, sessionId, "exSpectrumAmplitude", flag);
  readScale(amplitude, result.scale);
  result.traceAmplitude = GraphicsChannelHelpers::copyBlock(amplitude, "value");
  result.traceFrequency = GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId,
                                          "exSpectrumFrequency", flag),
      "value");
  GraphicsDecoders::decodeTrace(result.traceAmplitude, result.traceFrequency, result.trace);

  // The mask's form is decided on its own two lengths.
  result.maskAmplitude = GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId,
                                          "exSpectrumMaskAmplitude", flag),
      "value");
  result.maskFrequency = GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId,
                                          "exSpectrumMaskFrequency", flag),
      "value");
  GraphicsDecoders::decodeTrace(result.maskAmplitude, result.maskFrequency, result.mask);
}

std::string SpectrumHelperClass::json(const Decoded& spectrum) {
  return PointListWriter::json(
      {{kMaskPointsField, spectrum.mask}, {kSpectrumPointsField, spectrum.trace}}, spectrum.scale);
}

std::string SpectrumHelperClass::wire(const Decoded& spectrum) {
  return PointListWriter::wire(
      {{kMaskPointsField, spectrum.mask}, {kSpectrumPointsField, spectrum.trace}}, spectrum.scale);
}

}  // namespace halvor::kelo
