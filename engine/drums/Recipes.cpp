#include "engine/drums/Recipes.h"

#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "engine/dsp/PolyBlep.h"
#include "engine/dsp/Sine.h"

namespace synth::drums {
namespace {

using dsp::sineAt;
using dsp::sineOf;
using dsp::Svf;

constexpr Traits traits[models] = {
    {50, 2, 12, 0.028f, true},         // KICK
    {185, 1.1f, 0.7f, 0.018f, true},   // SNARE
    {1, 1.2f, 0.4f, 0.03f, false},     // CLAP
    {1, 0.35f, 0.15f, 0.03f, false},   // CLOSED HAT
    {1, 2.2f, 0.15f, 0.03f, false},    // OPEN HAT
    {105, 1.8f, 0.9f, 0.06f, true},    // TOM
    {480, 0.25f, 0.3f, 0.006f, true},  // RIM
    {560, 0.9f, 0.1f, 0.02f, true},    // COWBELL
    {1, 0.6f, 0.15f, 0.03f, false},    // SHAKER
    {1, 5, 0.15f, 0.03f, false},       // CYMBAL
    {160, 0.8f, 30, 0.045f, true},     // ZAP
    {210, 0.9f, 0.25f, 0.02f, true},   // CONGA
    {1, 1.6f, 3, 0.08f, false},        // NOISE
};

// The six square oscillators of the classic analogue cymbal circuit (Werner, Abel and Smith, DAFx 2014).
constexpr float metalHz[6] = {205.3f, 304.4f, 369.6f, 522.7f, 540, 800};

float advance(float& phase, float step) {
  const float p = phase;
  phase = dsp::wrapped(phase + std::min(step, 0.45f));
  return p;
}

float square(float p, float step) {
  return (p < 0.5f ? 1.0f : -1.0f) + dsp::poly(p, step) - dsp::poly(p >= 0.5f ? p - 0.5f : p + 0.5f, step);
}

float poleAt(double hz, double rate) {
  return float(1 - math::exp(-2 * math::pi * std::min(hz, rate * 0.45) / rate));
}
float power(double base, double exponent) { return float(math::pow(base, exponent)); }

}  // namespace

const Traits& traitsOf(int model) { return traits[model]; }

void Recipes::setUp(Hit& h) {
  const Setting& s = h.s_;
  const double rate = h.rate_;
  auto seconds = [&](double t) { return float(math::exp(-1 / (rate * t))); };
  auto svf = [&](double hz, float k) { return Svf::at(dsp::svfG(hz, rate), k); };
  auto faster = [&](double by) { return power(h.envCoefficient_, by); };
  switch (s.model) {
    case KICK:
      h.decay_[0].coefficient = seconds(0.0025);
      h.pole_[0].c = poleAt(1500 * math::pow(8, s.tone), rate);
      break;
    case SNARE:
      h.decay_[0].coefficient = faster(1.6);
      h.decay_[1].coefficient = faster(2.2);
      h.decay_[2].coefficient = seconds(0.004);
      h.pole_[0].c = poleAt(2500 * math::pow(6, s.tone), rate);
      h.filter_[0] = svf(900, 1.2f);
      break;
    case CLAP:
      h.decay_[0].coefficient = seconds(0.0045);
      h.filter_[1] = svf(2600, 0.7f);
      break;
    case CLOSED_HAT:
    case OPEN_HAT:
      h.decay_[0].coefficient = seconds(0.003);
      h.filter_[0] = svf(6500 * math::pow(1.6, s.tone - 0.5), 1);
      h.filter_[1] = svf(9500 * math::pow(1.5, s.tone - 0.5), 0.8f);
      break;
    case TOM:
      h.decay_[0].coefficient = faster(2);
      h.decay_[1].coefficient = seconds(0.006);
      h.pole_[0].c = poleAt(800 * math::pow(6, s.tone), rate);
      break;
    case RIM:
      h.decay_[0].coefficient = faster(2);
      h.decay_[1].coefficient = faster(3);
      h.decay_[2].coefficient = seconds(0.0012);
      h.filter_[0] = svf(250 + 700 * s.tone, 1.41f);
      break;
    case COWBELL: h.decay_[0].coefficient = seconds(0.012); break;
    case SHAKER: h.filter_[1] = svf(3000, 1.41f); break;
    case CYMBAL:
      h.decay_[0].coefficient = faster(2);
      h.decay_[1].coefficient = seconds(0.02);
      h.filter_[0] = svf(3500 * math::pow(2, s.tone - 0.5), 0.7f);
      h.filter_[1] = svf(8500, 0.8f);
      h.filter_[2] = svf(1900 * math::pow(2, s.tone - 0.5), 1);
      break;
    case ZAP: h.decay_[0].coefficient = seconds(0.002); break;
    case CONGA:
      h.decay_[0].coefficient = faster(3);
      h.decay_[1].coefficient = seconds(0.007);
      h.filter_[0] = svf(900 + 1800 * s.tone, 0.6f);
      break;
    default: break;
  }
}

void Recipes::tick(Hit& h, float r) {
  const float tone = h.s_.tone;
  auto svf = [&](double hz, float k) { return Svf::at(dsp::svfG(hz, h.rate_), k); };
  switch (h.s_.model) {
    case CLAP: h.filter_[0] = svf(1100 * math::pow(3, tone - 0.5) * r, 0.9f); break;
    case COWBELL: h.filter_[0] = svf(1100 * math::pow(4, tone - 0.5) * std::sqrt(double(r)), 0.55f); break;
    case SHAKER: h.filter_[0] = svf(4200 * math::pow(2.2, tone - 0.5) * r, 0.8f); break;
    case NOISE: h.filter_[0] = svf(250 * math::pow(60, tone) * r, 0.7f); break;
    default: break;
  }
}

float Recipes::sample(Hit& h, const Hit::Frame& f, const float* sine) {
  const Setting& s = h.s_;
  const float inverse = float(1 / h.rate_), step = h.f0_ * f.r * inverse;
  auto osc = [&](int k, float ratio) { return sineAt(sine, advance(h.phase_[k], step * ratio)); };
  auto band = [&](int k, float x) { return h.filter_[k].k * h.state_[k].run(h.filter_[k], x).band; };
  auto high = [&](int k, float x) {
    const dsp::SvfOut o = h.state_[k].run(h.filter_[k], x);
    return x - h.filter_[k].k * o.band - o.low;
  };
  // A power of the envelope: it waits with it while the hit is held.
  auto power = [&](int k) { return f.held ? h.decay_[k].value : h.decay_[k].next(); };
  auto metal = [&](float scale) {
    float sum = 0;
    for (int k = 0; k < 6; k++) {
      const float w = std::min(metalHz[k] * scale * inverse, 0.45f);
      sum += square(advance(h.phase_[k], w), w);
    }
    return sum * (1.0f / 6);
  };
  switch (s.model) {
    case SNARE: {
      const float body =
          (1 - 0.45f * s.tone) * f.at * (0.55f * osc(0, 1) * power(0) + 0.35f * osc(1, 1.78f) * power(1));
      const float hiss = high(0, f.n);
      return body + h.pole_[0].low(hiss) * (0.5f + 0.6f * s.tone) * f.A +
             0.6f * s.snap * hiss * h.decay_[2].next();
    }
    case CLAP: {
      const float spacing = 0.0115f - 0.004f * s.snap;
      // Three hands, each newer one the louder; phase_[0] counts them.
      if (h.phase_[0] < 3 && f.t >= h.phase_[0] * spacing) {
        h.decay_[0].value = 1;
        h.phase_[0] += 1;
      }
      float g = h.decay_[0].next();
      // The tail keeps its level until the last hand is through.
      if (f.t < 2.6f * spacing)
        h.env_ = 1;
      else
        g = std::max(g, 0.85f * f.A);
      return 1.6f * g * (1.35f * band(0, f.n) + 0.35f * s.tone * band(1, f.n));
    }
    case CLOSED_HAT:
    case OPEN_HAT: {
      const float x = metal(1.35f * f.r) * (1.2f - 0.4f * s.tone) + f.n * (0.15f + 0.35f * s.tone);
      const float edge = high(0, x);
      return (0.9f * edge + 0.8f * band(1, edge)) * f.A * f.at + 0.3f * s.snap * edge * h.decay_[0].next();
    }
    case TOM:
      return 0.85f * osc(0, 1) * f.A * f.at + 0.25f * s.tone * osc(1, 1.59f) * power(0) +
             h.pole_[0].low(f.n) * (0.5f * s.snap * h.decay_[1].next() + 0.06f * s.tone * f.A);
    case RIM:
      return high(0, 0.6f * osc(0, 1) * f.A + 0.5f * osc(1, 3.47f) * power(0) +
                         0.25f * osc(2, 5.1f) * power(1) + 1.2f * s.snap * f.n * h.decay_[2].next());
    case COWBELL: {
      const float w = std::min(step, 0.45f), v = std::min(step * 1.4815f, 0.45f);
      const float x = square(advance(h.phase_[0], w), w) + square(advance(h.phase_[1], v), v);
      return 0.5f * band(0, x) * (0.45f * (0.5f + s.snap) * h.decay_[0].next() + 0.55f * f.A);
    }
    case SHAKER: {
      const float rise = (0.004f + 0.03f * (1 - s.snap));
      const float ramp = std::min(f.t / rise, 1.0f);
      if (ramp < 1) h.env_ = 1;
      return 1.6f * high(1, band(0, f.n)) * ramp * ramp * f.A;
    }
    case CYMBAL: {
      const float x = metal(1.9f * f.r) + 0.35f * f.n;
      const float edge = high(0, x);
      return f.A * (0.6f * band(2, x) * power(0) + 0.9f * edge + 0.5f * band(1, edge)) +
             0.4f * s.snap * edge * h.decay_[1].next();
    }
    case ZAP: {
      const float p = advance(h.phase_[0], step);
      const float bend = 0.35f * s.tone * f.A * sineOf(sine, 2 * p) * float(1 / (2 * math::pi));
      return 0.9f * sineOf(sine, p + bend) * f.A * f.at + 0.3f * s.snap * f.n * h.decay_[0].next();
    }
    case CONGA:
      return f.at * (0.7f * osc(0, 1) * f.A + 0.3f * osc(1, 1.504f) * power(0)) +
             0.8f * s.snap * band(0, f.n) * h.decay_[1].next();
    case NOISE: {
      const dsp::SvfOut o = h.state_[0].run(h.filter_[0], f.n);
      return (0.63f * o.low + 0.95f * o.band) * f.A * f.at;
    }
    default: {
      const float p = advance(h.phase_[0], step);
      const float bend = 0.1f * s.tone * sineAt(sine, p) * float(1 / (2 * math::pi));
      const float click = 0.45f * h.pole_[0].low(f.n) +
                          0.35f * sineAt(sine, advance(h.phase_[1], 1800 * (1 + s.tone) * inverse));
      return 0.9f * sineOf(sine, p + bend) * f.at * f.A + s.snap * h.decay_[0].next() * click;
    }
  }
}

}  // namespace synth::drums
