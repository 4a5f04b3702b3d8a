#include "bench/SoundMeasures.h"

#include <algorithm>
#include <cmath>
#include <complex>

#include "core/model/Clips.h"
#include "core/model/Lanes.h"
#include "engine/dsp/Random.h"
#include "engine/dsp/Sine.h"

namespace synth::sound {
namespace {

using dsp::segment;

// What lies between a kind and the output of a Track in the middle: amp, LEVEL 0.64, pan, Master.
constexpr double chainGain = 0.43 * 0.64 * 0.70710678 * 0.85 * 1.25;

size_t frames(double seconds) { return size_t(seconds * rate + 0.5); }

// Runs `process(left, right, at)` over a stereo signal, a segment at a time; silence follows the signal.
template <class Process>
Audio inSegments(const Audio& in, double seconds, Process process) {
  Audio out;
  const size_t count = (frames(seconds) + segment - 1) / segment * segment;
  out.left.reserve(count);
  out.right.reserve(count);
  for (size_t at = 0; at < count; at += segment) {
    dsp::Block l, r;
    for (int i = 0; i < segment; i++) {
      const size_t k = at + size_t(i);
      l[i] = k < in.size() ? in.left[k] : 0;
      r[i] = k < in.size() ? in.right[k] : 0;
    }
    process(l, r, at);
    out.left.insert(out.left.end(), l.v, l.v + segment);
    out.right.insert(out.right.end(), r.v, r.v + segment);
  }
  return out;
}

using Complex = std::complex<double>;

// In place; the size is a power of two (Cooley and Tukey, 1965).
void transform(std::vector<Complex>& x) {
  const size_t n = x.size();
  for (size_t i = 1, j = 0; i < n; i++) {
    size_t bit = n >> 1;
    for (; j & bit; bit >>= 1) j ^= bit;
    j ^= bit;
    if (i < j) std::swap(x[i], x[j]);
  }
  for (size_t length = 2; length <= n; length *= 2) {
    std::vector<Complex> turn(length / 2);
    for (size_t k = 0; k < turn.size(); k++)
      turn[k] = std::polar(1.0, -2 * M_PI * double(k) / double(length));
    for (size_t i = 0; i < n; i += length)
      for (size_t k = 0; k < length / 2; k++) {
        const Complex a = x[i + k], b = x[i + k + length / 2] * turn[k];
        x[i + k] = a + b;
        x[i + k + length / 2] = a - b;
      }
  }
}

double blackmanHarris(double x) {
  return 0.35875 - 0.48829 * std::cos(2 * M_PI * x) + 0.14128 * std::cos(4 * M_PI * x) -
         0.01168 * std::cos(6 * M_PI * x);
}

}  // namespace

double hzOf(int note) { return 440 * std::exp2((note - 69) / 12.0); }

// ---- Patches.

ProjectPtr bare(int kind) {
  auto p = test::oneTrack(kind);
  p->tracks[0].sustain = 1;
  p->tracks[0].filter_type = 1;
  return p;
}

float& knob(Project& project, int k) {
  Track& t = project.tracks[0];
  float* const knobs[] = {&t.engine1, &t.engine2, &t.engine3, &t.engine4};
  return *knobs[k];
}

ProjectPtr toneTrack() {
  auto p = bare(ANALOG);
  Track& t = p->tracks[0];
  t.engine1 = t.engine4 = 0;
  t.trim = 9.8f;
  return p;
}

// ---- Renders.

Audio held(const Project& project, int note, double seconds, double settle) {
  Engine engine(rate);
  engine.submitProject(project);
  engine.noteOn(0, note, 127);
  if (settle > 0) test::renderFrames(engine, frames(settle));
  return test::renderFrames(engine, frames(seconds));
}

Audio heldKind(const Project& project, int note, double seconds, double settle) {
  const Audio a = held(project, note, seconds, settle);
  Audio out{middle(a), side(a)};
  for (Signal* x : {&out.left, &out.right})
    for (float& v : *x) v = float(v / chainGain);
  return out;
}

Signal filtered(int type, float resonance, double ratio) {
  auto p = bare(ANALOG);
  Track& t = p->tracks[0];
  t.engine1 = t.engine4 = 0;
  t.osc_level = 0.02f;
  t.filter_type = u8(type);
  t.resonance = resonance;
  t.cutoff = float(hzOf(filterNote) / ratio);
  return heldKind(*p, filterNote, 0.25, 0.5).left;
}

Signal thrown(int move, float value, bool hiss) {
  auto p = toneTrack();
  Track& t = p->tracks[0];
  t.noise_mix = hiss ? 0.5f : 0;
  t.osc_level = hiss ? 0 : 1;
  p->fx1.type = FX_HALL;
  p->fx2.type = FX_PLATE;
  addLoop(*p, 0, 128, 0, 0);
  // At 120 BPM a second is eight Steps of sixteen ticks.
  const LanePoint points[] = {{0, 0, 1, 0}, {5 * 128, u16(std::lround(value * 65535)), 0, 0}};
  if (move >= 0) {
    const int row = masterLaneRow(0);
    setLanePoints(*p, row, points, 2);
    p->lanes[row].target = u8(move + 1);
    p->lanes[row].enabled = 1;
  }
  Engine engine(rate);
  engine.submitProject(*p);
  engine.noteOn(0, 81, 127);
  engine.setPlaying(true);
  Signal out = test::renderFrames(engine, size_t(8 * rate)).left;
  engine.noteOff(0, 81);
  const Signal tail = test::renderFrames(engine, size_t(rate)).left;
  out.insert(out.end(), tail.begin(), tail.end());
  return out;
}

Signal hit(const drums::Setting& setting, double seconds) {
  drums::Hit h;
  h.start(setting, 1, rate);
  Signal x(frames(seconds));
  h.render(x.data(), int(x.size()));
  return x;
}

Audio throughSend(const SendFx& fx, const Audio& in, double seconds) {
  fx::Send send;
  send.prepare(rate);
  return inSegments(in, seconds, [&](dsp::Block& l, dsp::Block& r, size_t at) {
    const fx::Stereo x{l, r};
    fx::Stereo y;
    send.run(fx, 120, x, y, segment, at, false);
    l = y.l;
    r = y.r;
  });
}

Audio throughRoom(const TrackRoom::Setting& setting, const Signal& in, double seconds) {
  TrackRoom room;
  room.prepare(rate);
  return inSegments(mono(in), seconds, [&](dsp::Block& l, dsp::Block& r, size_t at) {
    room.tick(setting, at == 0);
    if (room.runs()) room.process(l, r, segment);
  });
}

Audio throughModFx(const ModFx::Setting& setting, const Audio& in) {
  ModFx fx;
  fx.prepare(rate);
  return inSegments(in, double(in.size()) / rate, [&](dsp::Block& l, dsp::Block& r, size_t at) {
    for (int i = 0; i < segment; i += modfx::tickLength) {
      fx.tick(setting, at + size_t(i) == 0);
      fx.process(l.v + i, r.v + i, modfx::tickLength);
    }
  });
}

Signal throughDynamics(float saturation, float amount, const Signal& in) {
  MasterDynamics d;
  d.prepare(rate);
  return inSegments(mono(in), double(in.size()) / rate,
                    [&](dsp::Block& l, dsp::Block& r, size_t) {
                      d.set(saturation, amount, 0.15f);
                      d.process(l, r, segment, dsp::sineTable());
                    })
      .left;
}

double eqGain(const MasterEqDesign& design, double hz, double sampleRate) {
  constexpr float level = 0.01f;
  MasterEq eq;
  eq.install(design, true);
  Signal out;
  for (int at = 0; at < int(sampleRate); at += segment) {
    dsp::Block l, r;
    for (int i = 0; i < segment; i++)
      l[i] = r[i] = level * float(std::sin(2 * M_PI * hz * double(at + i) / sampleRate));
    eq.process(l, r, segment, true);
    out.insert(out.end(), l.v, l.v + segment);
  }
  return test::toDb(test::sineLevel(out, hz, sampleRate, out.size() / 2) / double(level));
}

Signal sine(double hz, double level, double seconds) {
  Signal x(frames(seconds));
  for (size_t i = 0; i < x.size(); i++) x[i] = float(level * std::sin(2 * M_PI * hz * double(i) / rate));
  return x;
}

Signal noise(double level, double seconds) {
  Signal x(frames(seconds));
  u32 seed = 12345;
  for (float& v : x) v = float(level) * dsp::white(seed);
  return x;
}

Signal octave(const Signal& x, double hz) {
  Signal out = x;
  for (int pass = 0; pass < 2; pass++) {
    const dsp::Svf f = dsp::Svf::at(dsp::svfG(hz, rate), 0.6f);
    dsp::SvfState state;
    for (float& v : out) v = f.k * state.run(f, v).band;
  }
  return out;
}

Signal clicks(double spacing, double seconds) {
  Signal x(frames(seconds));
  for (size_t i = 0; i < x.size(); i += frames(spacing)) x[i] = 1;
  return x;
}

Signal burst(double hz, double seconds, double total) {
  Signal x = sine(hz, 0.5, total);
  for (size_t i = 0; i < x.size(); i++) {
    const double at = double(i) / rate / seconds;
    x[i] *= float(at < 1 ? 0.5 - 0.5 * std::cos(2 * M_PI * at) : 0);
  }
  return x;
}

// ---- Levels.

double decibels(double ratio) { return 10 * std::log10(std::max(ratio, 1e-20)); }

double meanSquare(const Signal& x, double from, double to) {
  const double r = test::rms(x, frames(from), frames(to));
  return r * r;
}
double rmsDb(const Signal& x, double from, double to) { return decibels(meanSquare(x, from, to)); }

Signal middle(const Audio& a) {
  Signal x(a.size());
  for (size_t i = 0; i < x.size(); i++) x[i] = 0.5f * (a.left[i] + a.right[i]);
  return x;
}
Signal side(const Audio& a) {
  Signal x(a.size());
  for (size_t i = 0; i < x.size(); i++) x[i] = 0.5f * (a.left[i] - a.right[i]);
  return x;
}

double correlation(const Audio& a, double from) {
  double both = 0, l = 0, r = 0;
  for (size_t i = frames(from); i < a.size(); i++) {
    both += double(a.left[i]) * a.right[i];
    l += double(a.left[i]) * a.left[i];
    r += double(a.right[i]) * a.right[i];
  }
  return both / std::max(std::sqrt(l * r), 1e-30);
}

double timeTo(const Signal& x, double db) {
  const float floor = test::peak(x) * float(std::pow(10, db / 20));
  size_t last = x.size();
  while (last > 0 && std::fabs(x[last - 1]) <= floor) last--;
  return double(last) / rate;
}

// ---- Spectra.

Spectrum::Spectrum(const Signal& x, double from, double to) {
  const size_t first = frames(from), last = std::min(frames(to), x.size());
  size_t size = 2;
  while (size < last - first) size *= 2;
  std::vector<Complex> bins(size);
  double weight = 0;
  for (size_t i = first; i < last; i++) {
    const double w = blackmanHarris(double(i - first) / double(last - first));
    bins[i - first] = w * double(x[i]);
    weight += w * w;
  }
  transform(bins);
  binHz_ = rate / double(size);
  resolution_ = rate / double(last - first);
  power_.resize(size / 2);
  for (size_t k = 0; k < power_.size(); k++) power_[k] = 2 * std::norm(bins[k]) / (weight * double(size));
}

double Spectrum::between(double low, double high) const {
  double sum = 0;
  const size_t end = std::min(power_.size(), size_t(std::max(high / binHz_ + 1, 0.0)));
  for (size_t k = size_t(std::ceil(std::max(low, 0.0) / binHz_)); k < end; k++) sum += power_[k];
  return sum;
}

double Spectrum::onMultiples(double hz, double width) const {
  double sum = 0;
  for (double f = hz; f < rate / 2; f += hz) sum += between(f - width, f + width);
  return sum;
}

double Spectrum::loudestHz() const {
  const auto from = power_.begin() + long(lowest / binHz_);
  return double(std::max_element(from, power_.end()) - power_.begin()) * binHz_;
}

double centroid(const Signal& x, double to) {
  // The first frame has the signal's start in its middle.
  constexpr size_t length = 4096, before = length / 2;
  const size_t end = std::min(x.size(), frames(to));
  double energy = 0, moment = 0;
  std::vector<Complex> bins(length);
  for (size_t at = 0; at < end + before; at += length / 2) {
    for (size_t i = 0; i < length; i++) {
      const double w = 0.5 - 0.5 * std::cos(2 * M_PI * double(i) / length);
      const size_t k = at + i - before;
      bins[i] = at + i >= before && k < end ? w * double(x[k]) : 0;
    }
    transform(bins);
    for (size_t k = 2; k < length / 2; k++) {
      energy += std::norm(bins[k]);
      moment += std::norm(bins[k]) * double(k) * rate / length;
    }
  }
  return moment / std::max(energy, 1e-30);
}

double inharmonicDb(const Signal& x, double hz) {
  const Spectrum s(x);
  return decibels(std::max(1 - s.onMultiples(hz, s.lineWidth()) / s.total(), 1e-12));
}

double rt60(const Signal& x, double from, double hz) {
  const Signal band = hz > 0 ? octave(x, hz) : x;
  const size_t first = frames(from);
  std::vector<double> left(band.size() + 1);
  for (size_t i = band.size(); i-- > first;) left[i] = left[i + 1] + double(band[i]) * band[i];
  auto reach = [&](double db) {
    size_t i = first;
    while (i < band.size() && left[i] > left[first] * std::pow(10, db / 10)) i++;
    return double(i - first) / rate;
  };
  return 2 * (reach(-35) - reach(-5));
}

Harmonics harmonicsOf(const Signal& x, double hz) {
  const Spectrum s(x);
  const double w = s.lineWidth(), own = s.between(hz - w, hz + w);
  return {decibels(own), decibels(s.between(2 * hz - w, 2 * hz + w) / own),
          decibels(s.between(3 * hz - w, 3 * hz + w) / own), decibels((s.total() - own) / own)};
}

// ---- Impulse responses.

double response(const Signal& impulse, double hz) {
  Complex sum = 0;
  const Complex turn = std::polar(1.0, -2 * M_PI * hz / rate);
  Complex phase = 1;
  for (float v : impulse) {
    sum += double(v) * phase;
    phase *= turn;
  }
  return std::norm(sum);
}

std::vector<double> notches(const Signal& impulse) {
  constexpr double step = 1.004, deep = 0.02;
  std::vector<double> found;
  double before = response(impulse, 20 / step), here = response(impulse, 20);
  for (double hz = 20; hz < 20000; hz *= step) {
    const double next = response(impulse, hz * step);
    if (here < deep && here < before && here <= next) found.push_back(hz);
    before = here;
    here = next;
  }
  return found;
}

std::vector<Echo> echoes(const Signal& x, double reference, double floorDb) {
  // The energy of fifty milliseconds around each place, every half millisecond.
  constexpr size_t half = 1200, hop = 24, apart = half / hop;
  std::vector<double> sums(x.size() + 1), moments(x.size() + 1);
  for (size_t i = 0; i < x.size(); i++) {
    const double e = double(x[i]) * x[i];
    sums[i + 1] = sums[i] + e;
    moments[i + 1] = moments[i] + e * double(i);
  }
  auto within = [&](const std::vector<double>& v, size_t at) {
    return v[std::min(at + half, x.size())] - v[at > half ? at - half : 0];
  };
  std::vector<double> energy;
  for (size_t at = 0; at < x.size(); at += hop) energy.push_back(within(sums, at));
  std::vector<Echo> found;
  for (size_t k = 0; k < energy.size(); k++) {
    const size_t from = k > apart ? k - apart : 0, to = std::min(k + apart, energy.size() - 1);
    const auto most = std::max_element(energy.begin() + long(from), energy.begin() + long(to) + 1);
    const double db = decibels(energy[k] / reference);
    if (size_t(most - energy.begin()) != k || db < floorDb) continue;
    found.push_back({within(moments, k * hop) / energy[k] / rate, db});
  }
  return found;
}

Reach delayReach(const Signal& x, double spacing, bool skipDry) {
  Reach reach{1e9, 0};
  const size_t step = frames(spacing);
  for (size_t at = 0; at + step <= x.size(); at += step) {
    float most = 0;
    for (size_t i = skipDry ? 1 : 0; i < step; i++) most = std::max(most, std::fabs(x[at + i]));
    for (size_t i = skipDry ? 1 : 0; i < step; i++)
      if (std::fabs(x[at + i]) > 0.3f * most) {
        reach.shortest = std::min(reach.shortest, double(i) * 1000 / rate);
        reach.longest = std::max(reach.longest, double(i) * 1000 / rate);
      }
  }
  return reach;
}

double truePeak(const Signal& x) {
  constexpr int reach = 24;
  double most = double(test::peak(x));
  const double worth = 0.8 * most;
  for (size_t i = reach; i + reach < x.size(); i++) {
    if (std::max(std::fabs(x[i]), std::fabs(x[i + 1])) < worth) continue;
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

}  // namespace synth::sound
