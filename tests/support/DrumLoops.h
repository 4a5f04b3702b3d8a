// Drum loops of known tempo and bar 1 in many styles.
#pragma once

#include <string>

#include "support/Signals.h"

namespace synth::test {

struct LoopStyle {
  const char* name;
  // Sixteen Steps a bar, one or two bars: 'x' a hit, 'o' a soft one.
  const char *kick, *snare, *hat;
  double slowest, fastest;  // the tempi it is usually played at
  // What repeats first is the beat, or half or twice of it: then the octave is right and the others tell the
  // beat.
  enum Feel { Straight, HalfOrDouble } feel = Straight;
  double swing = 0.5;     // where the odd sixteenths lie within an eighth
  bool backbeat = false;  // kick on 1, snare on 2 and 4, and little besides
};

inline constexpr LoopStyle loopStyles[] = {
    {"rock", "x.......x.......", "....x.......x...", "x.x.x.x.x.x.x.x.", 90, 150, LoopStyle::Straight, 0.5,
     true},
    {"house", "x...x...x...x...", "....x.......x...", "..x...x...x...x.", 116, 132},
    {"hiphop", "x.....x..xx.....", "....x.......x...", "x.x.x.x.x.x.x.x.", 84, 104, LoopStyle::Straight, 0.58,
     true},
    {"shuffle", "x.......x.x.....", "....x.......x...", "x..xx..xx..xx..x", 80, 130, LoopStyle::Straight,
     0.62, true},
    {"ballad", "x.......x.......", "....x.......x...", "x...x...x...x...", 60, 84, LoopStyle::Straight, 0.5,
     true},
    {"techno", "x...x...x...x...", "............x...", "xxxxxxxxxxxxxxxx", 122, 150},
    {"disco", "x...x...x...x...", "....x.......x...", "x.xxx.xxx.xxx.xx", 108, 130},
    {"pop", "x..x..x.x..x....", "....x.......x...", "x.x.x.x.x.x.x.x.", 92, 128, LoopStyle::Straight, 0.5,
     true},
    {"trap", "x.....x.......x.", "........x.......", "x.x.x.x.x.xxx.x.", 130, 150},
    {"reggae", "........x.......", "........x.......", "x.x.x.x.x.x.x.x.", 68, 84, LoopStyle::HalfOrDouble},
    {"drum and bass", "x.........x.....", "....x.......x...", "x.x.x.x.x.x.x.x.", 168, 180,
     LoopStyle::HalfOrDouble},
    {"punk", "x...x...x...x...", "....x.......x...", "x.x.x.x.x.x.x.x.", 160, 200, LoopStyle::HalfOrDouble},
};

inline Signal kickHit() {
  Signal x(samplesOf(0.6));
  double phase = 0;
  for (size_t i = 0; i < x.size(); i++) {
    const double t = double(i) / 48000;
    phase += 2 * std::numbers::pi * (48 + 70 * std::exp(-t * 60)) / 48000;
    x[i] = float(0.8 * std::sin(phase) * std::exp(-t * 14));
  }
  return x;
}
// Each difference takes the lows down by 6 dB an octave more.
inline Signal thinned(Signal x, int passes) {
  for (int pass = 0; pass < passes; pass++)
    for (size_t i = x.size(); i-- > 0;) x[i] = 0.6f * (x[i] - (i > 0 ? x[i - 1] : 0));
  return x;
}
// Its body swells softly, so that nothing of it lies where kicks do.
inline Signal snareHit() {
  Signal x = sine(400, 1, 0.2);
  for (size_t i = 0; i < x.size(); i++) {
    const double t = double(i) / 48000;
    x[i] *= float(40 * t * std::exp(-t * 50));
  }
  addAt(x, 0, thinned(shaped(noise(0.9, 0.16, 5), 0.2, 0.001), 4));
  return x;
}
inline Signal hatHit() { return thinned(shaped(noise(0.3, 0.05, 9), 0.07, 0.001), 4); }

// `bars` of the style behind `before` seconds of silence.
inline Signal drumLoop(const LoopStyle& style, double bpm, int bars, double before = 0) {
  static const Signal kick = kickHit(), snare = snareHit(), hat = hatHit();
  Signal x = silence(before + bars * 240 / bpm);
  const size_t end = x.size();
  const double step = 15 / bpm;
  for (int s = 0; s < bars * 16; s++) {
    const double at = before + (s / 2 * 2 + (s % 2 ? 2 * style.swing : 0)) * step;
    auto play = [&](const char* row, const Signal& hit, double gain) {
      const char c = row[size_t(s) % std::char_traits<char>::length(row)];
      if (c != '.') addAt(x, at, hit, gain * (c == 'o' ? 0.35 : 1));
    };
    play(style.kick, kick, 1);
    play(style.snare, snare, 0.8);
    play(style.hat, hat, 0.7);
  }
  x.resize(end);
  return x;
}

}  // namespace synth::test
