// What docs/sound.md is measured with: sounds rendered from the Engine's parts, and what is read off them.
#pragma once

#include <vector>

#include "engine/Dynamics.h"
#include "engine/MasterEq.h"
#include "engine/ModFx.h"
#include "engine/TrackRoom.h"
#include "engine/drums/Hit.h"
#include "engine/fx/Send.h"
#include "support/Rendered.h"

namespace synth::sound {

using Signal = std::vector<float>;
using test::Audio;

inline constexpr double rate = 48000;
double hzOf(int note);

// ---- Patches.

// A Track whose envelope holds and whose filter is linear and open: the kind itself.
ProjectPtr bare(int kind);
// engine1..engine4 of the first Track.
float& knob(Project& project, int k);
// A sine of -12 dB at the Track's drive.
ProjectPtr toneTrack();
inline constexpr int toneNote = 57;

// ---- Renders.

// One held note of the Project's first Track, from `settle` seconds after its start. `mid` and `side` come
// back as left and right, at the level they have behind the kind: what amp, Track and Master take is undone.
Audio heldKind(const Project& project, int note, double seconds, double settle = 0);
// The Engine's own output for the same.
Audio held(const Project& project, int note, double seconds, double settle = 0);
// A weak sine at `ratio` times the cutoff through a filter of the voice, and its amplitude before that.
Signal filtered(int type, float resonance, double ratio);
inline constexpr int filterNote = 81;
inline constexpr double filterDry = 0.42 * 0.7 * 0.02;
// The tone of toneTrack() at 880 Hz, or noise in its place, with a Move thrown over it after five seconds;
// the sound ends after eight of nine. Without a Move for -1.
Signal thrown(int move, float value, bool hiss);
Signal hit(const drums::Setting& setting, double seconds);
Audio throughSend(const SendFx& fx, const Audio& in, double seconds);
Audio throughRoom(const TrackRoom::Setting& setting, const Signal& in, double seconds);
Audio throughModFx(const ModFx::Setting& setting, const Audio& in);
Signal throughDynamics(float saturation, float amount, const Signal& in);
// The gain in dB of a Master equalizer for a sine.
double eqGain(const MasterEqDesign& design, double hz, double sampleRate);

Signal sine(double hz, double level, double seconds);
Signal noise(double level, double seconds);
// What two band passes in a row, together about an octave wide, leave of a signal.
Signal octave(const Signal& x, double hz);
// One sample of 1 every `spacing` seconds.
Signal clicks(double spacing, double seconds);
// A short tone that swells and fades within `seconds`, then silence up to `total`.
Signal burst(double hz, double seconds, double total);
inline Audio mono(const Signal& x) { return {x, x}; }

// ---- Levels.

double meanSquare(const Signal& x, double from = 0, double to = 1e6);  // seconds
double rmsDb(const Signal& x, double from = 0, double to = 1e6);
Signal middle(const Audio& a);
Signal side(const Audio& a);
double correlation(const Audio& a, double from);
// Seconds until the signal stays `db` below its peak.
double timeTo(const Signal& x, double db);

// ---- Spectra.

// Mean square by frequency, through a Blackman-Harris window: what lies five bins beside a line is 92 dB
// down.
class Spectrum {
 public:
  explicit Spectrum(const Signal& x, double from = 0, double to = 1e6);
  double between(double low, double high) const;
  double total() const { return between(lowest, rate / 2); }
  // What lies within `width` Hz of the multiples of a frequency.
  double onMultiples(double hz, double width) const;
  double loudestHz() const;
  // Half the width of a line, in Hz.
  double lineWidth() const { return 4.5 * resolution_; }

 private:
  static constexpr double lowest = 10;
  double binHz_, resolution_;
  std::vector<double> power_;
};

// The mean frequency of the energy, over short frames so that an attack counts.
double centroid(const Signal& x, double to = 100);
// Energy on no multiple of hz, in dB of all.
double inharmonicDb(const Signal& x, double hz);
double decibels(double meanSquareRatio);
// A tone's level, and its second and third harmonic and everything beside it against it, in dB.
struct Harmonics {
  double level, second, third, all;
};
Harmonics harmonicsOf(const Signal& x, double hz);

// The time in which a tail falls by 60 dB (Schroeder, 1965, from -5 to -35 dB), of the octave around `hz`
// or, at 0, of everything.
double rt60(const Signal& x, double from, double hz);

// ---- Impulse responses.

// The power gain at a frequency.
double response(const Signal& impulse, double hz);
// Where the response has minima of less than -17 dB, in Hz.
std::vector<double> notches(const Signal& impulse);

struct Echo {
  double seconds, db;
};
// The loudest places of a signal, in their order, that lie above `floorDb`; their energy is told against
// `reference`.
std::vector<Echo> echoes(const Signal& x, double reference, double floorDb);
// The shortest and the longest delay, in ms, at which clicks come back.
struct Reach {
  double shortest, longest;
};
Reach delayReach(const Signal& x, double spacing, bool skipDry);

// The highest peak between the samples too, by reading the band-limited signal four times as often.
double truePeak(const Signal& x);

}  // namespace synth::sound
