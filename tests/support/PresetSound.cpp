#include "support/PresetSound.h"

#include <algorithm>
#include <cmath>

#include "analysis/Measure.h"
#include "analysis/compare/Compare.h"
#include "base/Text.h"
#include "core/sounds/DemoStage.h"
#include "engine/ModFx.h"
#include "engine/SongRender.h"

namespace synth::test {
namespace {

using analysis::Audio;
using preset::Demo;
using preset::DemoNote;
using preset::Preset;

constexpr int stepsPerSecond = 8;  // at 120 BPM
constexpr double tempo = 120;

class Memory : public AudioSink {
 public:
  void begin(u32, u64 frames) override {
    audio.left.reserve(frames);
    audio.right.reserve(frames);
  }
  void write(const float* left, const float* right, unsigned frames) override {
    audio.left.insert(audio.left.end(), left, left + frames);
    audio.right.insert(audio.right.end(), right, right + frames);
  }
  void finish() override {}
  Audio audio;
};

Audio rendered(const Project& project, double tail) {
  Memory sink;
  std::string error;
  if (!renderSong(project, 1, sink, error, tail)) return {};
  return std::move(sink.audio);
}

Audio rendered(const Preset& p, const Demo& demo, double tail) {
  auto stage = preset::dryStage(p, demo);
  stage->bpm = f32(tempo);
  return rendered(*stage, tail);
}

Audio part(const Audio& audio, double from, double to) {
  const auto a = std::min(size_t(from * 48000), audio.size()), b = std::min(size_t(to * 48000), audio.size());
  return {{audio.left.begin() + long(a), audio.left.begin() + long(b)},
          {audio.right.begin() + long(a), audio.right.begin() + long(b)}};
}

bool allFinite(const Audio& audio) {
  const auto finite = [](float x) { return std::isfinite(x); };
  return std::all_of(audio.left.begin(), audio.left.end(), finite) &&
         std::all_of(audio.right.begin(), audio.right.end(), finite);
}

// Of both sides together, in windows of ten milliseconds.
std::vector<double> levels(const Audio& audio) {
  constexpr size_t window = 480;
  std::vector<double> out;
  for (size_t at = 0; at + window <= audio.size(); at += window) {
    double sum = 0;
    for (size_t i = at; i < at + window; i++)
      sum += double(audio.left[i]) * double(audio.left[i]) + double(audio.right[i]) * double(audio.right[i]);
    out.push_back(analysis::powerDb(sum / (2 * window)));
  }
  return out;
}

double highest(const std::vector<double>& levels, size_t from = 0, size_t to = ~size_t(0)) {
  double top = -200;
  for (size_t i = from; i < std::min(to, levels.size()); i++) top = std::max(top, levels[i]);
  return top;
}

// Seconds from `from` until the levels stay below `db`.
double silentAfter(const std::vector<double>& levels, size_t from, double db) {
  size_t last = from;
  for (size_t i = from; i < levels.size(); i++)
    if (levels[i] > db) last = i + 1;
  return double(last - from) / 100;
}

// From a tenth of the first peak's height to nine tenths, in milliseconds. A peak is where the level, held
// against the beating of voices, has come within a dB of the highest of the first two seconds.
double riseOf(const std::vector<double>& level) {
  const double top = highest(level, 0, 200);
  size_t low = 0, high = 0;
  while (low < level.size() && level[low] < top - 20) low++;
  high = low;
  while (high < level.size() && level[high] < top - 1) high++;
  return double(high - low) * 10;
}

bool lasting(const Preset& p) { return p.role == preset::Role::Pad || p.role == preset::Role::Texture; }

// Steps from one single note to the next, of which it sounds for a quarter: slow sounds need time to come and
// go.
int notesApart(const Preset& p) { return (lasting(p) ? 6 : 2) * stepsPerSecond; }

Demo singles(const Preset& p) {
  const preset::Range range = preset::range(p);
  const int apart = notesApart(p);
  Demo demo;
  auto add = [&](int pitch, int velocity) {
    demo.notes.push_back({int(demo.notes.size()) * apart, apart / 4 * 256, pitch, velocity, 0});
  };
  std::vector<int> pitches = {range.low, range.centre, range.high};
  if (p.kind == DRUMS) pitches = {0, 1, 2, 3, 4, 5, 6, 7};
  // The soft ones first, so that no loud one still rings into them.
  for (int velocity : {40, 120})
    for (int pitch : pitches) add(pitch, velocity);
  demo.steps = int(demo.notes.size()) * apart;
  return demo;
}

void measureSingles(const Preset& p, PresetSound& sound) {
  const Demo demo = singles(p);
  const Audio audio = rendered(p, demo, 0);
  sound.finite = sound.finite && allFinite(audio);
  for (const DemoNote& note : demo.notes) {
    const double at = double(note.step) / stepsPerSecond;
    const Audio one = part(audio, at, at + 0.5 * notesApart(p) / stepsPerSecond);
    const auto level = levels(one);
    NoteSound measured{note.pitch, note.velocity, -200, -200, 0};
    double power = 0;
    for (double db : level) power += analysis::dbPower(db);
    measured.rmsDb = level.empty() ? -200 : analysis::powerDb(power / double(level.size()));
    measured.peakDb = highest(level);
    if (one.size() >= 2048 && measured.peakDb > -120) {
      const analysis::Features f = analysis::analyze(one, 0, {});
      measured.centroidHz = f.centroidHz;
    }
    sound.notes.push_back(measured);
  }
}

// Seconds that a note is given to ring.
constexpr int longest = 3;

// By when a note of a quarter second has fallen by 40 dB: a release and a room fall by 60 in the time that
// they say. The noise of vinyl goes on.
double endOf(const Preset& p) {
  const Track track = preset::dryStage(p, {})->tracks[0];
  if (track.mod_type == ModFx::VinylType) return longest;
  const double falls = double(track.release) + (track.room_mix > 0 ? double(track.room_decay) : 0);
  return std::min(0.25 + falls * 40 / 60 + 0.06, double(longest));
}

void measureHeld(const Preset& p, PresetSound& sound) {
  const int centre = preset::range(p).centre;
  Demo demo;
  demo.notes.push_back({0, stepsPerSecond / 4 * 256, centre, 100, 0});
  demo.notes.push_back({longest * stepsPerSecond, 4 * stepsPerSecond * 256, centre, 100, 0});
  demo.steps = (4 + longest) * stepsPerSecond;
  const Audio audio = rendered(p, demo, 0);
  sound.finite = sound.finite && allFinite(audio);
  const auto level = levels(audio);
  constexpr size_t on = longest * 100, off = on + 400;
  if (level.size() < off) return;
  const double shortPeak = highest(level, 0, on), heldPeak = highest(level, on, off);
  sound.endsS = endOf(p);
  sound.ringS = silentAfter({level.begin(), level.begin() + on}, 0, shortPeak - 40);
  sound.riseMs = riseOf({level.begin() + on, level.begin() + off});
  const double end = highest(level, off - 20, off);
  sound.heldDb = end - heldPeak;
}

double pitchSpread(const PresetSound& sound) {
  double low = 1e9, high = -1e9;
  for (size_t i = sound.notes.size() / 2; i < sound.notes.size(); i++) {
    low = std::min(low, sound.notes[i].rmsDb);
    high = std::max(high, sound.notes[i].rmsDb);
  }
  return high - low;
}

bool tagged(const Preset& p, const char* tag) {
  return std::find(p.tags.begin(), p.tags.end(), tag) != p.tags.end();
}

}  // namespace

PresetSound soundOf(const Preset& p) {
  PresetSound sound;
  const Audio audio = rendered(p, preset::demo(p, 0, compose::Scale::Minor, tempo), 2);
  sound.finite = allFinite(audio);
  sound.demo = analysis::analyze(audio, tempo, {});
  measureSingles(p, sound);
  if (p.kind != DRUMS) measureHeld(p, sound);
  return sound;
}

std::vector<MacroSound> macrosOf(const Preset& p) {
  const Demo demo = preset::demo(p, 0, compose::Scale::Minor, tempo);
  auto stage = preset::dryStage(p, demo);
  stage->bpm = f32(tempo);
  const Audio plain = rendered(*stage, 0);
  const analysis::Features reference = analysis::analyze(plain, tempo, {});
  std::vector<MacroSound> out;
  for (size_t slot = 0; slot < p.macros.size(); slot++)
    for (float value : {1.0f, -1.0f}) {
      if (value < 0 && !p.macros[slot].polarity) continue;
      auto moved = copyOf(*stage);
      moved->tracks[0].macros[slot].value = value;
      analysis::CompareOptions options;
      options.offset = 0;
      options.bpm = tempo;
      const Audio audio = rendered(*moved, 0);
      const analysis::Comparison c = analysis::measureAgainst(plain, reference, audio, options);
      MacroSound sound;
      sound.name = p.macros[slot].name;
      if (p.macros[slot].polarity) sound.name += value > 0 ? "+" : "-";
      sound.score = std::min({c.scores.spectralBalance, c.scores.timbre, c.scores.envelope});
      sound.levelLu = c.differences.loudnessLu;
      float peak = 0;
      for (const auto* side : {&audio.left, &audio.right})
        for (float x : *side) peak = std::max(peak, std::fabs(x));
      sound.peakDb = analysis::powerDb(double(peak) * double(peak));
      out.push_back(std::move(sound));
    }
  return out;
}

double distance(const PresetSound& a, const PresetSound& b) {
  double sum = 0;
  auto add = [&](double x, double y, double unit) { sum += (x - y) * (x - y) / (unit * unit); };
  auto octaves = [](double hz) { return std::log2(std::max(hz, 20.0)); };
  add(octaves(a.demo.centroidHz), octaves(b.demo.centroidHz), 0.5);
  double thirds = 0;
  for (size_t i = 2; i < 28; i++) {
    const double d = std::clamp(a.demo.thirdOctaveDb[i] - b.demo.thirdOctaveDb[i], -20.0, 20.0);
    thirds += d * d / 26;
  }
  add(std::sqrt(thirds), 0, 5);
  add(std::log2(1e-2 + a.ringS), std::log2(1e-2 + b.ringS), 0.8);
  add(std::max(a.heldDb, -40.0), std::max(b.heldDb, -40.0), 12);
  add(std::log2(4 + a.demo.attackMs), std::log2(4 + b.demo.attackMs), 1);
  add(std::max(a.demo.sideMidDb, -30.0), std::max(b.demo.sideMidDb, -30.0), 8);
  add(a.demo.harmonicToNoiseDb, b.demo.harmonicToNoiseDb, 8);
  add(a.demo.centroidVariationOct, b.demo.centroidVariationOct, 0.3);
  add(a.demo.levelVariationDb, b.demo.levelVariationDb, 3);
  return std::sqrt(sum / 3);
}

double usualLufs(preset::Role role) {
  constexpr double byRole[] = {-21, -19, -20, -20, -21, -22, -21, -21};
  return byRole[int(role)];
}

std::vector<std::string> complaints(const Preset& p, const PresetSound& s) {
  std::vector<std::string> out;
  if (std::fabs(s.demo.lufs - usualLufs(p.role)) > 3)
    out.push_back(text::print("the demo has %.1f LUFS, not %.0f +- 3", s.demo.lufs, usualLufs(p.role)));
  if (!s.finite) out.push_back("not finite");
  if (s.demo.peakDbfs < -14 || s.demo.peakDbfs > -1)
    out.push_back(text::print("the demo peaks at %.1f dBFS, not -14..-1", s.demo.peakDbfs));
  const size_t half = s.notes.size() / 2;
  if (p.kind == DRUMS) {
    for (size_t pad = 0; pad < half; pad++) {
      if (s.notes[half + pad].peakDb < -45) out.push_back(text::print("Pad %zu is silent", pad));
      if (s.notes[half + pad].rmsDb < s.notes[pad].rmsDb + 1.5)
        out.push_back(text::print("Pad %zu is no louder at velocity 120 than at 40", pad));
    }
    return out;
  }
  for (size_t i = 0; i < half; i++) {
    const NoteSound &soft = s.notes[i], &hard = s.notes[half + i];
    if (hard.rmsDb < -60) out.push_back(text::print("note %d is silent", hard.pitch));
    if (hard.rmsDb < soft.rmsDb + 1.5 && hard.centroidHz < 1.1 * soft.centroidHz)
      out.push_back(
          text::print("note %d is neither louder nor brighter at velocity 120 than at 40", hard.pitch));
  }
  if (pitchSpread(s) > 14)
    out.push_back(text::print("levels differ by %.1f dB across the register", pitchSpread(s)));
  using preset::Role;
  if (lasting(p) && s.heldDb < -24)
    out.push_back(text::print("a held note has fallen by %.0f dB after 4 s", -s.heldDb));
  if ((p.role == Role::Pluck || p.role == Role::Perc) && s.ringS > 3 && !tagged(p, "LONG"))
    out.push_back(text::print("a short note rings for %.1f s", s.ringS));
  if (s.ringS > s.endsS)
    out.push_back(text::print("a short note rings for %.2f s, where its release and room end at %.2f s",
                              s.ringS, s.endsS));
  if (tagged(p, "SHORT") && s.ringS > 0.9)
    out.push_back(text::print("SHORT, and a short note rings for %.1f s", s.ringS));
  if (tagged(p, "LONG") && s.ringS < 0.9 && s.heldDb < -30)
    out.push_back(text::print("LONG, and it is over after %.1f s", s.ringS));
  if (tagged(p, "MONO") && s.demo.sideMidDb > -15)
    out.push_back(text::print("MONO, and its sides are at %.1f dB", s.demo.sideMidDb));
  if (tagged(p, "WIDE") && s.demo.sideMidDb < -15)
    out.push_back(text::print("WIDE, and its sides are at %.1f dB", s.demo.sideMidDb));
  return out;
}

std::vector<std::string> complaints(const Preset& p, const std::vector<MacroSound>& macros) {
  std::vector<std::string> out;
  if (p.macros.size() < 2) out.push_back("fewer than two Macros");
  if (!p.pinsSet) out.push_back("no Pins");
  for (const MacroSound& m : macros) {
    if (m.score >= 90)
      out.push_back(text::print("%s is hardly heard (lowest score %.0f)", m.name.c_str(), m.score));
    if (m.peakDb > -0.3) out.push_back(text::print("%s peaks at %.1f dBFS", m.name.c_str(), m.peakDb));
    if (std::fabs(m.levelLu) > 9)
      out.push_back(text::print("%s changes the level by %.1f LU", m.name.c_str(), m.levelLu));
  }
  return out;
}

}  // namespace synth::test
