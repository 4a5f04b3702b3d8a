// Rewrites the measured tables of docs/sound.md: what stands between a line `<!-- measured: NAME -->` and
// the line `<!-- end -->` is replaced, everything else stays.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "base/AtomicFile.h"
#include "base/ReadFile.h"
#include "bench/SoundMeasures.h"
#include "core/SynthKinds.h"
#include "core/model/Clips.h"
#include "core/model/Lanes.h"
#include "core/params/Options.h"
#include "core/params/Targets.h"

namespace synth::sound {
namespace {

// ---- Markdown.

std::string number(double x, int decimals = 0) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", decimals, x);
  // No "-0.0".
  return std::strtod(text, nullptr) == 0 && text[0] == '-' ? text + 1 : text;
}
// Decibels; what lies far below hearing is told as that.
std::string db(double x, int decimals = 1) { return x < -100 ? "< -100" : number(x, decimals); }
std::string hertz(double x) { return number(x < 1000 ? x : std::round(x / 10) * 10); }
std::string signedDb(double x, int decimals = 1) {
  const std::string text = db(x, decimals);
  return x > 0 && std::strtod(text.c_str(), nullptr) != 0 ? "+" + text : text;
}

class Table {
 public:
  explicit Table(const std::vector<std::string>& head) {
    row(head);
    text_ += '|';
    for (size_t i = 0; i < head.size(); i++) text_ += i ? "---:|" : "---|";
    text_ += '\n';
  }
  void row(const std::vector<std::string>& cells) {
    text_ += '|';
    for (const std::string& c : cells) text_ += ' ' + c + " |";
    text_ += '\n';
  }
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

// ---- Kinds.

float& knob(Track& t, int k) {
  float* const knobs[] = {&t.engine1, &t.engine2, &t.engine3, &t.engine4};
  return *knobs[k];
}

// A Track whose envelope holds and whose filter is linear and open: the kind itself.
ProjectPtr bare(int kind) {
  auto p = test::oneTrack(kind);
  p->tracks[0].sustain = 1;
  p->tracks[0].filter_type = 1;
  return p;
}

void kindRow(Table& table, const std::string& label, const Project& p) {
  const int kind = p.tracks[0].engine;
  const Audio a = heldKind(p, 60, 1.25);
  const Signal &mid = a.left, &wide = a.right;
  // The 16' bar of the organ sounds an octave below the note.
  const Spectrum s(mid, 0, 1);
  const double share = s.onMultiples(hzOf(60) / (kind == ORGAN ? 2 : 1), 10) / s.total();
  table.row({label, db(rmsDb(mid, 0, 1)), hertz(centroid(mid)), number(100 * std::min(share, 1.0)),
             signedDb(rmsDb(mid, 1, 1.25) - rmsDb(mid, 0, 0.25)), db(rmsDb(wide) - rmsDb(mid))});
}

Table kindHead() {
  return Table({"Setting", "Level, dB", "Centroid, Hz", "On harmonics, %", "After 1 s, dB", "Side, dB"});
}

std::string kindTable(int kind) {
  Table table = kindHead();
  auto p = bare(kind);
  kindRow(table, "INIT", *p);
  for (int k = 0; k < 4; k++)
    for (int end = 0; end < 2; end++) {
      auto turned = copyOf(*p);
      // The second oscillator of ANALOG is silent in INIT: its knobs are measured with it.
      const bool second = kind == ANALOG && (k == 1 || k == 2);
      if (second) turned->tracks[0].osc_b_level = 1;
      knob(turned->tracks[0], k) = float(end);
      kindRow(table,
              std::string(engineParamName(kind, k)) + ' ' + number(end) + (second ? ", OSC B 1" : ""),
              *turned);
    }
  if (kind == ANALOG)
    for (int end = 0; end < 2; end++) {
      auto sync = copyOf(*p);
      sync->tracks[0].analog_mode = 1;
      sync->tracks[0].engine2 = float(end);
      kindRow(table, "SYNC, RATIO " + number(end), *sync);
    }
  return table.text();
}

std::string aliases() {
  struct Case {
    int kind, mode;
    const char* label;
    float e[4];
  };
  const Case cases[] = {
      {ANALOG, 0, "ANALOG, saw", {2 / 3.0f, 0.2f, 0, 0}},
      {ANALOG, 0, "ANALOG, pulse", {1, 0.2f, 0, 0}},
      {ANALOG, 1, "ANALOG SYNC, RATIO 0", {1, 0, 0, 0}},
      {ANALOG, 1, "ANALOG SYNC, RATIO 0.5", {1, 0.5f, 0, 0}},
      {FM, 0, "FM, TONE 1, RATIO 0.25", {1, 0.25f, 0, 0}},
      {FM, 0, "FM, all of it", {1, 0.25f, 1, 1}},
      {ORGAN, 0, "ORGAN, TYPE 1, BASS 1", {1, 1, 0, 0}},
      {WAVETABLE, 0, "WAVETABLE, TABLE 0.3, POSITION 1", {0.3f, 1, 0, 0}},
      {WAVETABLE, 0, "WAVETABLE, the same, WARP 1", {0.3f, 1, 1, 0}},
      {TINE, 0, "TINE, TEXTURE 0, PUNCH 1, TINE 0", {1, 0, 1, 0}},
      {VOICE, 0, "VOICE, BREATH 0, VOWEL 1, BITE 0", {0, 1, 0, 0}},
      {VOICE, 0, "VOICE, the same, BITE 1", {0, 1, 1, 0}},
  };
  Table table({"Sound", "C5, dB", "C7, dB", "C5 through the LADDER, dB", "C7 through the LADDER, dB"});
  for (const Case& c : cases) {
    std::vector<std::string> row = {c.label};
    for (u8 filter : {1, 0})
      for (int note : {72, 96}) {
        auto p = bare(c.kind);
        Track& t = p->tracks[0];
        t.filter_type = filter;
        t.analog_mode = u8(c.mode);
        std::copy(c.e, c.e + 4, &t.engine1);
        const Audio a = heldKind(*p, note, 1, 0.3);
        row.push_back(db(inharmonicDb(a.left, hzOf(note) / (c.kind == ORGAN ? 2 : 1)), 0));
      }
    table.row(row);
  }
  return table.text();
}

std::string drumModels() {
  Table table({"Model", "Peak, dB", "To -40 dB, ms", "DECAY 0, ms", "DECAY 1, ms", "Centroid, Hz"});
  for (int m = 0; m < drums::models; m++) {
    auto length = [m](float decay) {
      drums::Setting s;
      s.model = m;
      s.decay = decay;
      return number(1000 * timeTo(hit(s, 30), -40));
    };
    drums::Setting s;
    s.model = m;
    const Signal x = hit(s, 3);
    table.row({param::options::drumModel[m], signedDb(test::toDb(double(test::peak(x)))), length(0.5f),
               length(0), length(1), hertz(centroid(x))});
  }
  return table.text();
}

// ---- The voice's filters.

// The gain in dB that the filter gives a weak sine at `ratio` times its cutoff.
double filterGain(int type, float resonance, double ratio) {
  constexpr int note = 81;
  auto p = test::oneTrack(ANALOG);
  Track& t = p->tracks[0];
  t.sustain = 1;
  t.engine1 = 0;
  t.engine4 = 0;
  t.osc_level = 0.02f;
  t.filter_type = u8(type);
  t.resonance = resonance;
  t.cutoff = float(hzOf(note) / ratio);
  const Audio a = heldKind(*p, note, 0.25, 0.5);
  // The sine at that level, before any filter.
  constexpr double dry = 0.42 * 0.7 * 0.02;
  return test::toDb(test::sineLevel(a.left, hzOf(note), rate) / dry);
}

std::string voiceFilters() {
  static const char* const names[] = {"LADDER", "LOWPASS", "HIGHPASS", "BANDPASS", "NOTCH"};
  const double ratios[] = {0.125, 0.25, 0.5, 1, 2, 4, 8};
  Table table({"Type", "1/8", "1/4", "1/2", "Cutoff", "2", "4", "8", "Peak at RESONANCE 0.5",
               "Peak at RESONANCE 0.9"});
  for (int type = 0; type < 5; type++) {
    std::vector<std::string> row = {names[type]};
    for (double ratio : ratios) row.push_back(db(filterGain(type, 0, ratio)));
    for (float resonance : {0.5f, 0.9f}) {
      double most = -200, where = 0;
      for (double octave = -0.7; octave < 0.71; octave += 0.02) {
        const double gain = filterGain(type, resonance, std::exp2(octave));
        if (gain > most) {
          most = gain;
          where = std::exp2(octave);
        }
      }
      row.push_back(signedDb(most) + " at " + number(where, 2));
    }
    table.row(row);
  }
  return table.text();
}

// ---- Inserts.

ModFx::Setting modSetting(int type, float depth) {
  ModFx::Setting s;
  s.type = type;
  s.depth = depth;
  s.mix = 1;
  return s;
}

std::string modFx() {
  static const char* const names[] = {"", "CHORUS", "ENSEMBLE", "FLANGER", "PHASER", "VINYL"};
  Table table({"Effect", "DEPTH", "Shortest delay, ms", "Longest delay, ms", "Side, dB", "Level, dB"});
  const Signal in = noise(0.3, 8);
  for (int type = ModFx::ChorusType; type <= ModFx::VinylType; type++)
    for (float depth : {0.0f, 0.5f, 1.0f}) {
      ModFx::Setting s = modSetting(type, depth);
      const Audio wide = throughModFx(s, mono(in));
      const double mid = rmsDb(middle(wide));
      std::vector<std::string> row = {names[type], number(depth, 1), "", "", db(rmsDb(side(wide)) - mid),
                                      signedDb(mid - rmsDb(in))};
      if (type != ModFx::PhaserType) {
        const bool mixed = type != ModFx::VinylType;
        const Reach r = delayReach(throughModFx(s, mono(clicks(0.025, 8))).left, 0.025, mixed);
        row[2] = number(r.shortest, 2);
        row[3] = number(r.longest, 2);
      }
      table.row(row);
    }
  return table.text();
}

// Where the response of an effect at rest falls deepest between two rises.
std::vector<double> notches(const ModFx::Setting& setting) {
  Signal click(size_t(1.4 * rate));
  click[size_t(0.2 * rate)] = 1;
  const Signal out = throughModFx(setting, mono(click)).left;
  const Spectrum s(out, 0.1, 0.3);
  std::vector<double> found;
  for (double hz = 40; hz < 20000; hz *= 1.005) {
    const double here = s.between(hz * 0.995, hz * 1.005) / hz;
    auto beside = [&](double at) { return s.between(at * 0.995, at * 1.005) / at; };
    bool deepest = here < 0.25 * beside(hz * 1.3) && here < 0.25 * beside(hz / 1.3);
    for (int k = 1; k < 12 && deepest; k++)
      deepest = here <= beside(hz * std::pow(1.005, k)) && here < beside(hz * std::pow(1.005, -k));
    if (deepest) found.push_back(hz);
  }
  return found;
}

std::string phaser() {
  Table table({"TONE", "Notches at DEPTH 0, Hz"});
  for (float tone : {0.0f, 0.5f, 1.0f}) {
    ModFx::Setting s = modSetting(ModFx::PhaserType, 0);
    s.tone = tone;
    std::string text;
    for (double hz : notches(s)) text += (text.empty() ? "" : ", ") + hertz(hz);
    table.row({number(tone, 1), text});
  }
  return table.text();
}

std::string vinyl() {
  Table table({"TONE", "-3 dB from, Hz", "-3 dB to, Hz", "Noise at dust 0, dB", "Noise at dust 0.95, dB"});
  for (float tone : {0.0f, 0.5f, 1.0f}) {
    ModFx::Setting s = modSetting(ModFx::VinylType, 0);
    s.tone = tone;
    auto noiseDb = [&](float dust) {
      s.feedback = dust;
      return db(rmsDb(throughModFx(s, mono(Signal(size_t(8 * rate)))).left, 1));
    };
    s.feedback = 0;
    auto gain = [&](double hz) {
      return test::toDb(
          test::sineLevel(throughModFx(s, mono(sine(hz, 0.5, 0.6))).left, hz, rate, size_t(0.1 * rate)) /
          0.5);
    };
    const double most = std::max(gain(400), gain(1000));
    double low = 10, high = 20000;
    while (low < 1000 && gain(low) < most - 3) low *= 1.03;
    while (high > 1000 && gain(high) < most - 3) high /= 1.03;
    table.row({number(tone, 1), hertz(low), hertz(high), noiseDb(0), noiseDb(0.95f)});
  }
  return table.text();
}

std::string room() {
  Table table({"SIZE", "DECAY asked, s", "500 Hz, s", "4 kHz, s", "500 Hz at DAMP 0.4, s",
               "4 kHz at DAMP 0.4, s", "Level, dB"});
  for (float size : {0.0f, 0.4f, 1.0f})
    for (float decay : {0.1f, 0.5f, 2.0f}) {
      std::vector<std::string> row = {number(size, 1), number(decay, 1)};
      for (float damp : {0.0f, 0.4f})
        for (double hz : {500.0, 4000.0}) {
          const Audio a = throughRoom({size, decay, damp, 1}, noise(0.5, 0.05), decay * 2 + 0.5);
          row.push_back(number(rt60(a.left, 0.06, hz), 2));
        }
      const Signal in = noise(0.3, 2);
      row.push_back(signedDb(rmsDb(throughRoom({size, decay, 0.4f, 1}, in, 2).left, 0.5) - rmsDb(in)));
      table.row(row);
    }
  return table.text();
}

// The levels of a sine's second and third harmonic and of everything beside it, against it.
struct Harmonics {
  double second, third, all, level;
};
Harmonics harmonicsOf(const Signal& x, double hz) {
  const Spectrum s(x);
  const double w = s.lineWidth(), own = s.between(hz - w, hz + w);
  return {decibels(s.between(2 * hz - w, 2 * hz + w) / own),
          decibels(s.between(3 * hz - w, 3 * hz + w) / own),
          decibels(std::max(s.total() - own, 1e-14) / own), decibels(own)};
}

// A sine of -12 dB at the Track's drive.
ProjectPtr toneTrack() {
  auto p = bare(ANALOG);
  Track& t = p->tracks[0];
  t.engine1 = t.engine4 = 0;
  t.trim = 9.8f;
  return p;
}
constexpr int toneNote = 57;

std::string driveAndCrush() {
  static const char* const names[] = {"SOFT", "TUBE", "HARD", "FOLD"};
  Table table({"Insert", "Level, dB", "2nd harmonic, dB", "3rd harmonic, dB", "All beside the tone, dB"});
  const double dry = harmonicsOf(held(*toneTrack(), toneNote, 1, 0.3).left, hzOf(toneNote)).level;
  auto row = [&](const std::string& label, const std::function<void(Track&)>& set) {
    auto p = toneTrack();
    set(p->tracks[0]);
    const Harmonics h = harmonicsOf(held(*p, toneNote, 1, 0.3).left, hzOf(toneNote));
    table.row({label, signedDb(h.level - dry), db(h.second), db(h.third), db(h.all)});
  };
  for (int type = 0; type < 4; type++)
    for (float amount : {0.25f, 0.5f, 1.0f})
      row(std::string(names[type]) + ' ' + number(amount, 2), [&](Track& t) {
        t.insert_drive_type = u8(type);
        t.insert_drive = amount;
      });
  for (float amount : {0.25f, 0.5f, 1.0f})
    row("BITS " + number(amount, 2), [&](Track& t) { t.crush_bits = amount; });
  for (float amount : {0.25f, 0.5f, 1.0f})
    row("RATE " + number(amount, 2), [&](Track& t) { t.crush_rate = amount; });
  return table.text();
}

// ---- Sends.

SendFx sendOf(FxType type) {
  SendFx fx;
  fx.type = type;
  return fx;
}

// A tone of 1 kHz on one side, and what comes back: up to four echoes.
std::vector<std::string> echoCells(const SendFx& fx) {
  const Signal in = burst(1000, 0.03, 0.1);
  double reference = 0;
  for (float v : in) reference += double(v) * v;
  const Audio out = throughSend(fx, {in, Signal(in.size())}, 4);
  std::vector<std::string> cells;
  Signal both(out.size());
  for (size_t i = 0; i < both.size(); i++) both[i] = std::hypot(out.left[i], out.right[i]);
  for (const Echo& e : echoes(both, reference, -60)) {
    if (cells.size() == 4) break;
    const size_t from = size_t((e.seconds - 0.025) * rate), to = from + 2400;
    auto level = [&](const Signal& x) {
      double sum = 0;
      for (size_t i = from; i < std::min(to, x.size()); i++) sum += double(x[i]) * x[i];
      return db(decibels(sum / reference), 0);
    };
    cells.push_back(number(1000 * (e.seconds - 0.015)) + " ms: " + level(out.left) + " / " +
                    level(out.right));
  }
  cells.resize(4);
  return cells;
}

void echoRow(Table& table, const std::string& label, const SendFx& fx) {
  std::vector<std::string> row = {label};
  for (const std::string& cell : echoCells(fx)) row.push_back(cell);
  table.row(row);
}

std::string delay() {
  Table table({"Setting", "First echo, dB left / right", "Second", "Third", "Fourth"});
  SendFx plain = sendOf(FX_DELAY);
  plain.delay_ping_pong = plain.delay_wow = 0;
  SendFx fx = plain;
  fx.delay_sync = 5;
  echoRow(table, "1/4", fx);
  fx.delay_sync = 14;
  echoRow(table, "1/8D", fx);
  fx.delay_sync = 9;
  echoRow(table, "1/16", fx);
  fx.delay_sync = 0;
  fx.delay_time = 0.3f;
  echoRow(table, "FREE, TIME 0.3", fx);
  fx.delay_feedback = 0.95f;
  echoRow(table, "the same, FEEDBACK 0.95", fx);
  fx.delay_feedback = 0.4f;
  fx.delay_ping_pong = 1;
  echoRow(table, "the same, PING PONG 1", fx);
  fx.delay_ping_pong = 0.6f;
  echoRow(table, "the same, PING PONG 0.6", fx);
  return table.text();
}

std::string tape() {
  static const char* const heads[] = {"1", "2", "3", "1+2", "1+3", "2+3", "1+2+3"};
  Table table({"Setting", "First echo, dB left / right", "Second", "Third", "Fourth"});
  SendFx fx = sendOf(FX_TAPE);
  fx.tape_wow = 0;
  for (u8 k = 0; k < 7; k++) {
    fx.tape_heads = k;
    echoRow(table, std::string("HEADS ") + heads[k], fx);
  }
  fx.tape_heads = 0;
  for (float speed : {0.5f, 2.0f}) {
    fx.tape_rate = speed;
    echoRow(table, "HEADS 1, RATE " + number(speed, 1), fx);
  }
  fx.tape_rate = 1;
  fx.tape_intensity = 1.1f;
  echoRow(table, "HEADS 1, INTENSITY 1.1", fx);
  return table.text();
}

// A reverb's row: decays of two bands undamped and as it comes, width and level.
void reverbRow(Table& table, const std::string& label, double asked, const SendFx& open,
               const SendFx& asItComes) {
  std::vector<std::string> row = {label, number(asked, 2)};
  const Audio in = mono(noise(0.5, 0.1));
  Audio tail;
  for (const SendFx* fx : {&open, &asItComes}) {
    tail = throughSend(*fx, in, asked * 1.3 + 1);
    for (double hz : {500.0, 4000.0}) row.push_back(number(rt60(tail.left, 0.2, hz), 2));
  }
  row.push_back(number(correlation(tail, 0.2), 2));
  const Signal steady = noise(0.3, 4);
  row.push_back(signedDb(rmsDb(throughSend(asItComes, mono(steady), 4).left, 3) - rmsDb(steady)));
  table.row(row);
}
Table reverbHead() {
  return Table({"DECAY", "Asked, s", "500 Hz open, s", "4 kHz open, s", "500 Hz, s", "4 kHz, s",
                "Correlation", "Level, dB"});
}

std::string hall() {
  Table table = reverbHead();
  for (float decay : {0.0f, 0.25f, 0.5f, 0.75f, 1.0f}) {
    SendFx fx = sendOf(FX_HALL);
    fx.hall_decay = decay;
    SendFx open = fx;
    open.hall_damping = 0;
    open.hall_high_cut = 20000;
    reverbRow(table, number(decay, 2), 0.4 * std::pow(50, double(decay)), open, fx);
  }
  return table.text();
}

std::string plate() {
  Table table = reverbHead();
  for (float decay : {0.3f, 1.0f, 1.8f, 4.0f, 10.0f}) {
    SendFx fx = sendOf(FX_PLATE);
    fx.plate_decay = decay;
    SendFx open = fx;
    open.plate_damping = 0;
    reverbRow(table, number(double(decay), 1), double(decay), open, fx);
  }
  return table.text();
}

std::string shimmer() {
  Table table = reverbHead();
  for (float decay : {1.0f, 3.0f, 6.0f, 12.0f, 30.0f}) {
    SendFx fx = sendOf(FX_SHIMMER);
    fx.shimmer_decay = decay;
    SendFx open = fx;
    open.shimmer_amount = 0;
    reverbRow(table, number(double(decay), 1), double(decay), open, fx);
  }
  return table.text();
}

std::string chorusSend() {
  static const char* const modes[] = {"CHORUS", "ENSEMBLE"};
  Table table({"MODE", "DEPTH", "Shortest delay, ms", "Longest delay, ms", "Side, dB", "Correlation",
               "Level, dB"});
  for (u8 mode = 0; mode < 2; mode++)
    for (float depth : {0.0f, 0.45f, 1.0f}) {
      SendFx fx = sendOf(FX_CHORUS);
      fx.chorus_mode = mode;
      fx.chorus_depth = depth;
      const Signal in = noise(0.3, 8);
      const Audio wide = throughSend(fx, mono(in), 8);
      const double mid = rmsDb(middle(wide));
      fx.chorus_low_cut = 20;
      fx.chorus_tone = 1;
      const Reach r = delayReach(throughSend(fx, mono(clicks(0.025, 8)), 8).left, 0.025, false);
      table.row({modes[mode], number(double(depth), 2), number(r.shortest, 2), number(r.longest, 2),
                 db(rmsDb(side(wide)) - mid), number(correlation(wide, 0.1), 2),
                 signedDb(mid - rmsDb(in))});
    }
  return table.text();
}

// ---- Master.

std::string masterEq() {
  std::vector<std::string> head = {"Curve"};
  for (const char* band : {"31", "63", "125", "250", "500", "1K", "2K", "4K", "8K", "16K"})
    head.push_back(band);
  Table table(head);
  struct Curve {
    const char* name;
    float gains[10];
  };
  const Curve curves[] = {{"One band", {0, 0, 0, 0, 0, 12, 0, 0, 0, 0}},
                          {"Zigzag", {6, -6, 6, -6, 6, -6, 6, -6, 6, -6}},
                          {"Slope", {12, 9, 6, 3, 0, -3, -6, -9, -12, -12}},
                          {"All up", {12, 12, 12, 12, 12, 12, 12, 12, 12, 12}}};
  for (const Curve& c : curves) {
    std::vector<std::string> asked = {std::string(c.name) + ", asked"};
    for (float g : c.gains) asked.push_back(signedDb(double(g), 0));
    table.row(asked);
    for (double sampleRate : {44100.0, 48000.0, 96000.0}) {
      std::vector<std::string> row = {number(sampleRate / 1000, 1) + " kHz"};
      const MasterEqDesign design = designMasterEq(c.gains, sampleRate);
      for (int band = 0; band < 10; band++)
        row.push_back(signedDb(eqGain(design, masterBandHz(band, sampleRate), sampleRate), 2));
      table.row(row);
    }
  }
  return table.text();
}

std::string compressor() {
  Table table({"Peak in, dB", "COMP 0.1", "COMP 0.25", "COMP 0.5", "COMP 0.75", "COMP 1"});
  for (int level : {-60, -40, -30, -24, -18, -12, -6, 0}) {
    std::vector<std::string> row = {number(level)};
    const Signal in = sine(1000, std::pow(10, level / 20.0), 2);
    for (float amount : {0.1f, 0.25f, 0.5f, 0.75f, 1.0f})
      row.push_back(db(rmsDb(throughDynamics(0, amount, in), 1) + 3.01));
    table.row(row);
  }
  return table.text();
}

std::string saturation() {
  Table table({"SATURATE", "Peak in, dB", "Level, dB", "2nd harmonic, dB", "3rd harmonic, dB",
               "All harmonics, dB"});
  for (float amount : {0.1f, 0.25f, 0.5f, 1.0f})
    for (int level : {-18, -6, 0}) {
      const double in = std::pow(10, level / 20.0);
      const Signal out = throughDynamics(amount, 0, sine(220, in, 1));
      const Harmonics h = harmonicsOf(out, 220);
      table.row({number(double(amount), 2), number(level), signedDb(h.level + 3.01 - level), db(h.second),
                 db(h.third), db(h.all)});
    }
  return table.text();
}

// The highest peak between the samples too, by reading the band-limited signal four times as often.
double truePeak(const Signal& x, size_t from, size_t to) {
  constexpr int reach = 24;
  double most = 0;
  for (size_t i = std::max<size_t>(from, reach); i + reach < std::min(to, x.size()); i++) {
    most = std::max(most, double(std::fabs(x[i])));
    if (std::fabs(x[i]) < 0.4f && std::fabs(x[i + 1]) < 0.4f) continue;
    for (int part = 1; part < 4; part++) {
      double sum = 0;
      for (int k = 1 - reach; k <= reach; k++) {
        const double t = k - part * 0.25, w = 0.5 + 0.5 * std::cos(M_PI * t / (reach + 1));
        sum += double(x[size_t(long(i) + k)]) * w * std::sin(M_PI * t) / (M_PI * t);
      }
      most = std::max(most, std::fabs(sum));
    }
  }
  return most;
}

std::string limiter() {
  Table table({"Sound", "CEILING", "Above it unlimited, dB", "Peak over CEILING, dB",
               "Between samples, dB over CEILING"});
  struct Case {
    const char* name;
    bool drums;
    std::vector<int> notes;
  };
  const Case cases[] = {{"A bass note of ANALOG", false, {36}},
                        {"Five notes of ANALOG", false, {36, 48, 60, 64, 67}},
                        {"Kick, snare and hat at once", true, {0, 1, 2}}};
  for (const Case& c : cases)
    for (float ceiling : {0.5f, 0.95f}) {
      auto render = [&](float trim) {
        auto p = c.drums ? test::oneKit() : bare(ANALOG);
        p->tracks[0].trim = trim;
        p->tracks[0].level = 1;
        p->limiter_ceiling = ceiling;
        Engine engine(rate);
        engine.submitProject(*p);
        for (int note : c.notes) engine.noteOn(0, note, 127);
        return test::renderFrames(engine, size_t(2 * rate)).left;
      };
      const Signal loud = render(24), soft = render(-24);
      const double free = test::toDb(double(test::peak(soft))) + 48, limit = test::toDb(double(ceiling));
      table.row({c.name, number(double(ceiling), 2), signedDb(free - limit),
                 signedDb(test::toDb(double(test::peak(loud))) - limit, 2),
                 signedDb(test::toDb(truePeak(loud, 0, loud.size())) - limit, 2)});
    }
  return table.text();
}

// ---- Moves.

// A held tone through the whole Engine; the Move begins after one second and the tone ends after three.
Signal thrown(int move, float value, int note) {
  auto p = toneTrack();
  Track& t = p->tracks[0];
  t.trim = 0;
  p->fx1.type = FX_HALL;
  p->fx2.type = FX_PLATE;
  addLoop(*p, 0, 64, 0, 0);
  // 120 BPM: a second is eight Steps of sixteen ticks.
  const LanePoint points[] = {{0, 0, 1, 0}, {128, u16(std::lround(value * 65535)), 0, 0}};
  if (move >= 0) {
    const int row = masterLaneRow(0);
    setLanePoints(*p, row, points, 2);
    p->lanes[row].target = u8(move + 1);
    p->lanes[row].enabled = 1;
  }
  Engine engine(rate);
  engine.submitProject(*p);
  engine.noteOn(0, note, 127);
  engine.setPlaying(true);
  Signal out = test::renderFrames(engine, size_t(3 * rate)).left;
  engine.noteOff(0, note);
  const Signal tail = test::renderFrames(engine, size_t(1.5 * rate)).left;
  out.insert(out.end(), tail.begin(), tail.end());
  return out;
}

std::string moves() {
  static const float values[12][2] = {{0.3f, 0.7f}, {0.3f, 0.7f}, {0.5f, 1},    {0.3f, 1},
                                      {0.2f, 1},    {0.3f, 1},    {0.25f, 1},   {0.3f, 1},
                                      {0.3f, 1},    {0.5f, 1},    {0.5f, 1},    {0.3f, 1}};
  constexpr int low = 45, middleNote = 81, high = 117;
  Table table({"Move", "Value", "110 Hz, dB", "880 Hz, dB", "7040 Hz, dB", "880 Hz sounds at, Hz",
               "Beside the tone, dB", "0.5 s after the tone, dB"});
  auto level = [](const Signal& x) { return rmsDb(x, 1.5, 2.9); };
  double dry[3];
  const int notes[] = {low, middleNote, high};
  for (int k = 0; k < 3; k++) dry[k] = level(thrown(-1, 0, notes[k]));
  for (int move = 0; move < 12; move++)
    for (float value : values[move]) {
      std::vector<std::string> row = {automation::performanceEffectName(move), number(double(value), 2)};
      Signal x;
      for (int k = 0; k < 3; k++) {
        const Signal y = thrown(move, value, notes[k]);
        row.push_back(signedDb(level(y) - dry[k]));
        if (k == 1) x = y;
      }
      const Spectrum s(x, 1.5, 2.9);
      const double hz = s.loudestHz(), w = 2 * s.lineWidth();
      const double beside = 1 - s.between(hz - w, hz + w) / s.total();
      const bool silent = level(x) < -100;
      row.push_back(silent ? "-" : hertz(hz));
      row.push_back(silent ? "-" : db(decibels(std::max(beside, 1e-12))));
      row.push_back(db(rmsDb(x, 3.5, 3.7) - dry[1]));
      table.row(row);
    }
  return table.text();
}

// ---- The document.

using Measure = std::function<std::string()>;

// The table of that name; empty when there is none.
Measure measureNamed(const std::string& name) {
  for (int kind = ANALOG; kind <= PERC; kind++)
    if (name == std::string("kind ") + synthKindName(kind)) return [kind] { return kindTable(kind); };
  static const struct {
    const char* name;
    std::string (*measure)();
  } rows[] = {{"aliases", aliases},
              {"drums", drumModels},
              {"filters", voiceFilters},
              {"mod fx", modFx},
              {"phaser", phaser},
              {"vinyl", vinyl},
              {"room", room},
              {"drive", driveAndCrush},
              {"delay", delay},
              {"tape echo", tape},
              {"hall", hall},
              {"plate", plate},
              {"shimmer", shimmer},
              {"chorus", chorusSend},
              {"master eq", masterEq},
              {"compressor", compressor},
              {"saturation", saturation},
              {"limiter", limiter},
              {"moves", moves}};
  for (const auto& r : rows)
    if (name == r.name) return r.measure;
  return nullptr;
}

// The document with its tables measured anew; false with an error for a name or a mark that is wrong.
bool rewritten(const std::string& document, std::string& out, std::string& error) {
  const std::string begin = "<!-- measured: ", close = " -->", end = "<!-- end -->";
  bool inside = false;
  for (size_t at = 0; at < document.size();) {
    size_t next = document.find('\n', at);
    next = next == std::string::npos ? document.size() : next + 1;
    std::string line = document.substr(at, next - at);
    at = next;
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    const bool starts = line.starts_with(begin) && line.ends_with(close);
    if (inside && starts) return error = "a table begins inside another: " + line, false;
    if (inside && line != end) continue;
    if (!inside && line == end) return error = "an end without a table", false;
    inside = starts;
    out += line + '\n';
    if (!starts) continue;
    const std::string name = line.substr(begin.size(), line.size() - begin.size() - close.size());
    const Measure measure = measureNamed(name);
    if (!measure) return error = "no measurement has the name " + name, false;
    std::fprintf(stderr, "%s\n", name.c_str());
    out += '\n' + measure() + '\n';
  }
  if (inside) error = "the last table has no end";
  return !inside;
}

}  // namespace
}  // namespace synth::sound

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: quorel_sound DOCUMENT\n");
    return 1;
  }
  std::string document, out, error;
  if (synth::readFile(argv[1], 1 << 20, document, error) != synth::ReadResult::Ok)
    error = std::string("cannot read ") + argv[1] + (error.empty() ? "" : ": " + error);
  else if (synth::sound::rewritten(document, out, error) && synth::writeAtomically(argv[1], out, error))
    return 0;
  std::fprintf(stderr, "error: %s\n", error.c_str());
  return 1;
}
