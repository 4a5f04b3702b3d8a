// Playing a Project through an Engine of its own, faster than real time, into a sink.
#pragma once

#include <functional>
#include <string>

#include "engine/AudioFormats.h"
#include "engine/AudioSink.h"

namespace synth {

inline constexpr u32 renderRate = 48000;
inline constexpr double longestTail = 12;

// Called between chunks with the share of the render that is done.
using Progress = std::function<void(double)>;

// The whole Song, `loops` times (1..64), and a tail of 0..12 seconds; the last 20 ms fade to silence.
// An invalid Project answers false with `error`; everything else is thrown as std::runtime_error.
bool renderSong(const Project& project, int loops, AudioSink& sink, std::string& error, double tailSeconds,
                const Progress& progress = {});

// The Steps from..to instead, looped; the span's length follows its own Steps, swing included.
bool renderSpan(const Project& project, u32 from, u32 to, int loops, AudioSink& sink, std::string& error,
                double tailSeconds, const Progress& progress = {});

// How many frames one pass of a span lasts, with the fraction.
double spanFrames(const Project& project, u32 from, u32 to);

bool exportWav(const Project& project, const std::string& path, int loops, std::string& error,
               double tailSeconds);
bool exportAudio(const Project& project, const std::string& path, AudioFormat format, int loops,
                 std::string& error, double tailSeconds);

}  // namespace synth
