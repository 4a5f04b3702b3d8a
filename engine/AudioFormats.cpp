#include "engine/AudioFormats.h"

#include "engine/sinks/FfmpegSink.h"
#include "engine/sinks/Mp3Sink.h"
#include "engine/sinks/SndfileSink.h"
#include "engine/sinks/WavSink.h"

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

const char* missingFor(AudioFormat format) {
  switch (format) {
    case AudioFormat::Aiff:
    case AudioFormat::Flac: return SndfileSink::available() ? nullptr : "libsndfile";
    case AudioFormat::Mp3: return Mp3Sink::available() ? nullptr : "LAME";
    case AudioFormat::Aac: return FfmpegSink::available() ? nullptr : "ffmpeg";
    default: return nullptr;
  }
}

std::unique_ptr<AudioSink> makeFileSink(AudioFormat format, const std::string& path) {
  switch (format) {
    case AudioFormat::Wav: return std::make_unique<WavSink>(path);
    case AudioFormat::Aiff:
    case AudioFormat::Flac: return std::make_unique<SndfileSink>(format, path);
    case AudioFormat::Mp3: return std::make_unique<Mp3Sink>(path);
    case AudioFormat::Aac: return std::make_unique<FfmpegSink>(path);
  }
  return nullptr;
}

}  // namespace synth
