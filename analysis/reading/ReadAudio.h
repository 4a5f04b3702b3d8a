// Any audio file, as the analyses hear it.
#pragma once

#include <string>

#include "analysis/Audio.h"
#include "analysis/reading/Decoder.h"

namespace synth::analysis {

inline constexpr double longestSeconds = 3600;

// Throws std::runtime_error for a file that cannot be read, is no sound, is damaged or longer than an hour;
// the text names the path.
Audio readAudio(const std::string& path);

// All that the decoder gives, at 48 kHz. Throws what it throws, and for more than an hour.
Audio decodeAll(Decoder& decoder);

}  // namespace synth::analysis
