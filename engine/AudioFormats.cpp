#include "engine/AudioFormats.h"

#include "engine/WavSink.h"

namespace synth {
namespace {

constexpr AudioFormatInfo formats[] = {
    {AudioFormat::Wav, "WAV", "wav", "24-bit"},
    {AudioFormat::Aiff, "AIFF", "aiff", "24-bit"},
    {AudioFormat::Flac, "FLAC", "flac", "lossless, 24-bit"},
    {AudioFormat::Mp3, "MP3", "mp3", "320 kbps"},
    {AudioFormat::Aac, "AAC", "m4a", "256 kbps"},
};

}  // namespace

std::span<const AudioFormatInfo> audioFormats() { return formats; }

const AudioFormatInfo& audioFormatInfo(AudioFormat format) {
  for (const AudioFormatInfo& row : formats)
    if (row.format == format) return row;
  return formats[0];
}

bool canWrite(AudioFormat format) { return format == AudioFormat::Wav; }

std::unique_ptr<AudioSink> makeFileSink(AudioFormat format, const std::string& path) {
  if (format == AudioFormat::Wav) return std::make_unique<WavSink>(path);
  return nullptr;
}

}  // namespace synth
