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

void kindRow(Table& table, const std::string& label, const Project& p) {
  const int kind = p.tracks[0].engine;
  const Audio a = heldKind(p, 60, 1.25);
  const Signal &mid = a.left, &wide = a.right;
  // The 16' bar of the organ sounds an octave below the note.
  const Spectrum s(mid, 0, 1);
  const double share = s.onMultiples(hzOf(60) / (kind == ORGAN ? 2 : 1), 10) / s.total();
  table.row({label, db(rmsDb(mid, 0, 1)), hertz(centroid(mid, 0.03)), hertz(centroid(mid)),
             number(100 * std::min(share, 1.0)), signedDb(rmsDb(mid, 1, 1.25) - rmsDb(mid, 0, 0.25)),
             db(rmsDb(wide) - rmsDb(mid))});
}

std::string kindTable(int kind) {
  Table table(
      {"Setting", "Level, dB", "Attack, Hz", "Centroid, Hz", "On harmonics, %", "After 1 s, dB", "Side, dB"});
  auto p = bare(kind);
  kindRow(table, "INIT", *p);
  for (int k = 0; k < 4; k++)
    for (int end = 0; end < 2; end++) {
      auto turned = copyOf(*p);
      // The second oscillator of ANALOG is silent in INIT: its knobs are measured with it.
      const bool second = kind == ANALOG && (k == 1 || k == 2);
      if (second) turned->tracks[0].osc_b_level = 1;
      knob(*turned, k) = float(end);
      kindRow(table, std::string(engineParamName(kind, k)) + ' ' + number(end) + (second ? ", OSC B 1" : ""),
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
      {ANALOG, 1, "ANALOG SYNC, RATIO 1", {1, 1, 0, 0}},
      {FM, 0, "FM, TONE 1", {1, 0.25f, 0, 0}},
      {FM, 0, "FM, TONE 1, FEEDBACK 0.5", {1, 0.25f, 0, 0.5f}},
      {FM, 0, "FM, TONE 1, SHAPE 1", {1, 0.25f, 1, 0}},
      {FM, 0, "FM, TONE 1, SHAPE 1, FEEDBACK 1", {1, 0.25f, 1, 1}},
      {ORGAN, 0, "ORGAN, TYPE 1, BASS 1", {1, 1, 0, 0}},
      {WAVETABLE, 0, "WAVETABLE, TABLE 0.3, POSITION 1", {0.3f, 1, 0, 0}},
      {WAVETABLE, 0, "WAVETABLE, the same, WARP 1", {0.3f, 1, 1, 0}},
      {TINE, 0, "TINE, TONE 1, PUNCH 1", {1, 0, 1, 0}},
      {VOICE, 0, "VOICE, VOWEL 1", {0, 1, 0, 0}},
      {VOICE, 0, "VOICE, VOWEL 0.5, BITE 1", {0, 0.5f, 1, 0}},
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
        for (int k = 0; k < 4; k++) knob(*p, k) = c.e[k];
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

double filterGain(int type, float resonance, double ratio) {
  const Signal x = filtered(type, resonance, ratio);
  return test::toDb(test::sineLevel(x, hzOf(filterNote), rate) / filterDry);
}

std::string peakOf(int type, float resonance) {
  double most = -200, where = 0;
  for (double octaves = -0.7; octaves < 0.71; octaves += 0.02) {
    const double gain = filterGain(type, resonance, std::exp2(octaves));
    if (gain <= most) continue;
    most = gain;
    where = std::exp2(octaves);
  }
  return signedDb(most) + " at " + number(where, 2);
}

std::string voiceFilters() {
  static const char* const names[] = {"LADDER", "LOWPASS", "HIGHPASS", "BANDPASS", "NOTCH"};
  Table table({"Type", "1/8", "1/4", "1/2", "Cutoff", "2", "4", "8", "1/8 at RESONANCE 0.9", "Peak at 0.5",
               "Peak at 0.9", "Peak at 1"});
  for (int type = 0; type < 5; type++) {
    std::vector<std::string> row = {names[type]};
    for (double ratio : {0.125, 0.25, 0.5, 1.0, 2.0, 4.0, 8.0}) row.push_back(db(filterGain(type, 0, ratio)));
    row.push_back(db(filterGain(type, 0.9f, 0.125)));
    for (float resonance : {0.5f, 0.9f, 1.0f}) {
      const Signal x = filtered(type, resonance, 0.25);
      const double sings = Spectrum(x).loudestHz() / hzOf(filterNote);
      // A filter that sings by itself has no gain that could be told.
      row.push_back(type == 4   ? "-"
                    : sings > 2 ? "sings at " + db(rmsDb(x)) + " dB"
                                : peakOf(type, resonance));
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
      std::vector<std::string> row = {names[type], number(double(depth), 1),    "",
                                      "",          db(rmsDb(side(wide)) - mid), signedDb(mid - rmsDb(in))};
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

std::string phaser() {
  Table table({"TONE", "First notch, Hz", "Second, Hz", "Third, Hz", "Level between, dB"});
  Signal click(size_t(0.5 * rate));
  click[0] = 1;
  for (float tone : {0.0f, 0.5f, 1.0f}) {
    ModFx::Setting s = modSetting(ModFx::PhaserType, 0);
    s.tone = tone;
    const Signal out = throughModFx(s, mono(click)).left;
    std::vector<std::string> row = {number(double(tone), 1)};
    const std::vector<double> found = notches(out);
    for (size_t k = 0; k < 3; k++) row.push_back(k < found.size() ? hertz(found[k]) : "-");
    row.push_back(found.size() < 2 ? "-" : db(decibels(response(out, std::sqrt(found[0] * found[1])))));
    table.row(row);
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
    table.row({number(double(tone), 1), hertz(low), hertz(high), noiseDb(0), noiseDb(0.95f)});
  }
  return table.text();
}

std::string room() {
  Table table({"SIZE", "DECAY asked, s", "500 Hz, s", "4 kHz, s", "500 Hz at DAMP 0.4, s",
               "4 kHz at DAMP 0.4, s", "Level, dB"});
  for (float size : {0.0f, 0.4f, 1.0f})
    for (float decay : {0.1f, 0.5f, 2.0f}) {
      std::vector<std::string> row = {number(double(size), 1), number(double(decay), 1)};
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

std::string driveAndCrush() {
  static const char* const names[] = {"SOFT", "TUBE", "HARD", "FOLD"};
  Table table({"Insert", "Level, dB", "2nd harmonic, dB", "3rd harmonic, dB", "All beside the tone, dB"});
  const double dry = harmonicsOf(held(*toneTrack(), toneNote, 1, 0.3).left, hzOf(toneNote)).level;
  auto row = [&](const std::string& label, const std::function<void(Track&)>& set) {
    auto p = toneTrack();
    set(p->tracks[0]);
    const Harmonics h = harmonicsOf(held(*p, toneNote, 1, 0.3).left, hzOf(toneNote));
    const bool silent = h.level < -100;
    auto cell = [&](double x) { return silent ? "-" : db(x); };
    table.row({label, signedDb(h.level - dry), cell(h.second), cell(h.third), cell(h.all)});
  };
  for (int type = 0; type < 4; type++)
    for (float amount : {0.1f, 0.5f, 1.0f})
      row(std::string(names[type]) + ' ' + number(double(amount), 2), [&](Track& t) {
        t.insert_drive_type = u8(type);
        t.insert_drive = amount;
      });
  for (float amount : {0.25f, 0.5f, 0.75f, 1.0f})
    row("BITS " + number(double(amount), 2), [&](Track& t) { t.crush_bits = amount; });
  row("BITS 1.00, tone 12 dB softer", [&](Track& t) {
    t.crush_bits = 1;
    t.trim -= 12;
  });
  for (float amount : {0.25f, 0.5f, 1.0f})
    row("RATE " + number(double(amount), 2), [&](Track& t) { t.crush_rate = amount; });
  return table.text();
}

// ---- Sends.

SendFx sendOf(FxType type) {
  SendFx fx;
  fx.type = type;
  return fx;
}

// A tone of 1 kHz on both sides, and what comes back: up to four echoes.
std::vector<std::string> echoCells(const SendFx& fx) {
  constexpr double length = 0.03;
  const Signal in = burst(1000, length, 0.1);
  const double reference = meanSquare(in) * double(in.size());
  const Audio out = throughSend(fx, mono(in), 4);
  Signal both(out.size());
  for (size_t i = 0; i < both.size(); i++) both[i] = std::hypot(out.left[i], out.right[i]);
  std::vector<std::string> cells;
  for (const Echo& e : echoes(both, reference, -40)) {
    if (cells.size() == 4) break;
    auto level = [&](const Signal& x) {
      const double from = std::max(e.seconds - length, 0.0), to = e.seconds + length;
      return db(decibels(meanSquare(x, from, to) * (to - from) * rate / reference), 0);
    };
    cells.push_back(number(1000 * (e.seconds - length / 2)) + " ms: " + level(out.left) + " / " +
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
    echoRow(table, "HEADS 1, RATE " + number(double(speed), 1), fx);
  }
  fx.tape_rate = 1;
  fx.tape_intensity = 1.1f;
  echoRow(table, "HEADS 1, INTENSITY 1.1", fx);
  return table.text();
}

// Decays of two bands with the damping open and as it comes, width, and the level of a steady sound.
// `set` takes the knob and returns the seconds it asks for; `open` takes the damping out.
std::string reverb(FxType type, const std::vector<float>& knobs, double (*set)(SendFx&, float),
                   void (*open)(SendFx&)) {
  Table table({"DECAY", "Asked, s", "500 Hz open, s", "4 kHz open, s", "500 Hz, s", "4 kHz, s", "Correlation",
               "Level, dB"});
  const Audio in = mono(noise(0.5, 0.1)), steady = mono(octave(noise(0.3, 6), 500));
  for (float value : knobs) {
    SendFx asItComes = sendOf(type);
    const double asked = set(asItComes, value);
    SendFx opened = asItComes;
    open(opened);
    std::vector<std::string> row = {number(double(value), 2), number(asked, 2)};
    Audio tail;
    for (const SendFx* fx : {&opened, &asItComes}) {
      tail = throughSend(*fx, in, asked * 1.3 + 1);
      for (double hz : {500.0, 4000.0}) row.push_back(number(rt60(tail.left, 0.2, hz), 2));
    }
    row.push_back(number(correlation(tail, 0.2), 2));
    row.push_back(signedDb(rmsDb(throughSend(asItComes, steady, 6).left, 4) - rmsDb(steady.left)));
    table.row(row);
  }
  return table.text();
}

std::string hall() {
  auto set = [](SendFx& fx, float x) { return 0.4 * std::pow(50, double(fx.hall_decay = x)); };
  return reverb(FX_HALL, {0, 0.25f, 0.5f, 0.75f, 1}, set, [](SendFx& fx) {
    fx.hall_damping = 0;
    fx.hall_high_cut = 20000;
  });
}
std::string plate() {
  auto set = [](SendFx& fx, float x) { return double(fx.plate_decay = x); };
  return reverb(FX_PLATE, {0.3f, 0.6f, 1, 1.8f, 4, 10}, set, [](SendFx& fx) { fx.plate_damping = 0; });
}
std::string shimmer() {
  auto set = [](SendFx& fx, float x) { return double(fx.shimmer_decay = x); };
  return reverb(FX_SHIMMER, {1, 3, 6, 12, 30}, set, [](SendFx& fx) { fx.shimmer_amount = 0; });
}

std::string chorusSend() {
  static const char* const modes[] = {"CHORUS", "ENSEMBLE"};
  Table table(
      {"MODE", "DEPTH", "Shortest delay, ms", "Longest delay, ms", "Side, dB", "Correlation", "Level, dB"});
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
                 db(rmsDb(side(wide)) - mid), number(correlation(wide, 0.1), 2), signedDb(mid - rmsDb(in))});
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
  Table table(
      {"SATURATE", "Peak in, dB", "Level, dB", "2nd harmonic, dB", "3rd harmonic, dB", "All harmonics, dB"});
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
  auto highest = [](const Audio& a, double (*peak)(const Signal&)) {
    return test::toDb(std::max(peak(a.left), peak(a.right)));
  };
  auto samplePeak = [](const Signal& x) { return double(test::peak(x)); };
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
        return test::renderFrames(engine, size_t(2 * rate));
      };
      const Audio loud = render(24), soft = render(-24);
      const double limit = test::toDb(double(ceiling));
      table.row({c.name, number(double(ceiling), 2), signedDb(highest(soft, samplePeak) + 48 - limit),
                 signedDb(highest(loud, samplePeak) - limit, 2),
                 signedDb(highest(loud, truePeak) - limit, 2)});
    }
  return table.text();
}

// ---- Moves.

std::string moves() {
  static const float values[12][2] = {{0.3f, 0.7f}, {0.3f, 0.7f}, {0.5f, 1}, {0.3f, 1}, {0.2f, 1}, {0.3f, 1},
                                      {0.25f, 1},   {0.3f, 1},    {0.3f, 1}, {0.5f, 1}, {0.5f, 1}, {0.3f, 1}};
  Table table({"Move", "Value", "110 Hz, dB", "880 Hz, dB", "7040 Hz, dB", "880 Hz sounds at, Hz",
               "Beside the tone, dB", "0.5 s after its end, dB"});
  auto bands = [](const Signal& x) {
    const Spectrum s(x, 5.5, 7.9);
    std::vector<double> levels;
    for (double hz : {110.0, 880.0, 7040.0}) levels.push_back(decibels(s.between(hz / 1.41, hz * 1.41)));
    return levels;
  };
  const std::vector<double> dry = bands(thrown(-1, 0, true));
  for (int move = 0; move < 12; move++)
    for (float value : values[move]) {
      std::vector<std::string> row = {automation::performanceEffectName(move), number(double(value), 2)};
      const std::vector<double> wet = bands(thrown(move, value, true));
      for (size_t k = 0; k < 3; k++) row.push_back(signedDb(wet[k] - dry[k]));
      const Signal x = thrown(move, value, false);
      const Spectrum s(x, 5.5, 7.9);
      const double hz = s.loudestHz(), w = 2 * s.lineWidth();
      const bool silent = rmsDb(x, 5.5, 7.9) < -100;
      row.push_back(silent ? "-" : hertz(hz));
      row.push_back(silent ? "-" : db(decibels(1 - s.between(hz - w, hz + w) / s.total())));
      row.push_back(signedDb(rmsDb(x, 8.4, 8.6) - rmsDb(x, 4, 4.9)));
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
    const std::string whole = document.substr(at, next - at);
    std::string line = whole;
    at = next;
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    const bool starts = line.starts_with(begin) && line.ends_with(close);
    if (inside && starts) error = "a table begins inside another: " + line;
    if (!inside && line == end) error = "an end without a table";
    if (!error.empty()) return false;
    if (inside && line != end) continue;
    inside = starts;
    out += whole;
    if (!starts) continue;
    const std::string name = line.substr(begin.size(), line.size() - begin.size() - close.size());
    const Measure measure = measureNamed(name);
    if (!measure) {
      error = "no measurement has the name " + name;
      return false;
    }
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
