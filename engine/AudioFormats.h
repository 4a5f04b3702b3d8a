// The audio formats that a render can be written in.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "engine/AudioSink.h"

namespace synth {

enum class AudioFormat : int { Wav, Aiff, Flac, Mp3, Aac };

struct AudioFormatInfo {
  AudioFormat format;
  const char* label;
  const char* extension;
  const char* detail;
};

std::span<const AudioFormatInfo> audioFormats();
// The row of a format, the first one for a number that is none.
const AudioFormatInfo& audioFormatInfo(AudioFormat format);

// What has to be installed before this system can write the format; null when it can.
const char* missingFor(AudioFormat format);
// A sink that writes `path` in that format beside it and replaces it at `finish`; null for no format.
std::unique_ptr<AudioSink> makeFileSink(AudioFormat format, const std::string& path);

}  // namespace synth
