#include "engine/drums/Recipes.h"

#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "engine/dsp/PolyBlep.h"
#include "engine/dsp/Sine.h"

namespace synth::drums {
namespace {

using namespace dsp;

constexpr float inRadians = 0.15915494f;  // 1 / (2 pi): a radian in cycles

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

f4 square(u4 phase, f4 step) {
  const f4 p = unit(phase), inverse = splat(1) / step;
  const i4 first = p < splat(0.5f);
  const f4 half = p + select(first, splat(0.5f), splat(-0.5f));
  return select(first, splat(1), splat(-1)) + poly(p, step, inverse) - poly(half, step, inverse);
}

// A phase shift of well under half a cycle.
u4 bent(u4 phase, f4 cycles) { return phase + phaseStep(cycles); }

float poleAt(double hz, double rate) {
  return float(1 - math::exp(-2 * math::pi * std::min(hz, rate * 0.45) / rate));
}
float power(double base, double exponent) { return float(math::pow(base, exponent)); }

float clapSpacing(const Setting& s) { return 0.0115f - 0.004f * s.snap; }
float shakerRise(const Setting& s) { return 0.004f + 0.03f * (1 - s.snap); }

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
      // The tail keeps its level until the last hand is through.
      h.holdLeft_ = std::max(h.holdLeft_, i32(2.6 * clapSpacing(s) * rate));
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
    case SHAKER:
      h.filter_[1] = svf(3000, 1.41f);
      h.holdLeft_ = std::max(h.holdLeft_, i32(shakerRise(s) * rate));
      break;
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

// One stretch of a model in the making: the parts that recipes are written in.
struct Recipes::Mix {
  const Hit::Stretch& s;
  Block& out;
  float inverseRate;
  Block step;  // of the model's own oscillator, in cycles a sample

  template <class Sample>
  void each(Sample sample) const {
    for (int q = 0; q < quads(s.n); q++) out.put(q, sample(q));
  }
  // Phases of an oscillator at `ratio` times the model's own.
  PhaseBlock phases(Phase& phase, float ratio = 1) const {
    Block inc;
    for (int q = 0; q < segment / 4; q++) inc.put(q, min(step.at(q) * splat(ratio), splat(0.45f)));
    PhaseBlock p;
    advance(phase, inc, p, s.n);
    return p;
  }
  Block falling(Decay& d, int from = 0) const {
    Block b;
    for (int i = 0; i < s.n; i++) {
      b[i] = d.value;
      if (i >= from) d.value *= d.coefficient;
    }
    return b;
  }
  // A power of the envelope: it waits with it while the hit is held.
  Block power(Decay& d) const { return falling(d, s.held); }
  Block low(OnePole& p, const Block& x) const {
    Block b;
    for (int i = 0; i < s.n; i++) b[i] = p.y += p.c * (x[i] - p.y);
    return b;
  }
  Block band(const Svf& f, SvfState& state, const Block& x) const {
    Block b;
    for (int i = 0; i < s.n; i++) b[i] = f.k * state.step(f, x[i]).band;
    return b;
  }
  Block high(const Svf& f, SvfState& state, const Block& x) const {
    Block b;
    for (int i = 0; i < s.n; i++) {
      const SvfOut o = state.step(f, x[i]);
      b[i] = x[i] - f.k * o.band - o.low;
    }
    return b;
  }
  Block metal(Phase (&phase)[6], float scale) const {
    Block sum;
    sum.fill(0);
    for (int k = 0; k < 6; k++) {
      Block inc;
      for (int q = 0; q < segment / 4; q++)
        inc.put(q, min(splat(metalHz[k] * scale * inverseRate) * s.r.at(q), splat(0.45f)));
      PhaseBlock p;
      advance(phase[k], inc, p, s.n);
      for (int q = 0; q < quads(s.n); q++) sum.put(q, sum.at(q) + square(p.at(q), inc.at(q)));
    }
    for (int q = 0; q < quads(s.n); q++) sum.put(q, sum.at(q) * splat(1.0f / 6));
    return sum;
  }
};

void Recipes::snare(Hit& h, const Mix& m) {
  const float tone = h.s_.tone, snap = h.s_.snap;
  const PhaseBlock a = m.phases(h.phase_[0]), b = m.phases(h.phase_[1], 1.78f);
  const Block first = m.power(h.decay_[0]), second = m.power(h.decay_[1]), click = m.falling(h.decay_[2]);
  const Block hiss = m.high(h.filter_[0], h.state_[0], m.s.noise), wires = m.low(h.pole_[0], hiss);
  m.each([&](int q) {
    const f4 body =
        splat(0.55f) * sinePoly(a.at(q)) * first.at(q) + splat(0.35f) * sinePoly(b.at(q)) * second.at(q);
    return splat(1 - 0.45f * tone) * m.s.at.at(q) * body +
           splat(0.5f + 0.6f * tone) * wires.at(q) * m.s.A.at(q) +
           splat(0.6f * snap) * hiss.at(q) * click.at(q);
  });
}

void Recipes::clap(Hit& h, const Mix& m) {
  const float tone = h.s_.tone;
  // Three hands, each of them starting its own burst; then the tail.
  const float spacing = clapSpacing(h.s_), rate = 1 / m.inverseRate;
  Block g;
  for (int i = 0; i < m.s.n; i++) {
    const float age = float(m.s.age + u32(i));
    if (h.hands_ < 3 && age >= float(h.hands_) * spacing * rate) {
      h.decay_[0].value = 1;
      h.hands_++;
    }
    g[i] = h.decay_[0].value;
    h.decay_[0].value *= h.decay_[0].coefficient;
    if (age >= 2.6f * spacing * rate) g[i] = std::max(g[i], 0.85f * m.s.A[i]);
  }
  const Block body = m.band(h.filter_[0], h.state_[0], m.s.noise);
  const Block edge = m.band(h.filter_[1], h.state_[1], m.s.noise);
  m.each([&](int q) {
    return splat(1.6f) * g.at(q) * (splat(1.35f) * body.at(q) + splat(0.35f * tone) * edge.at(q));
  });
}

void Recipes::hat(Hit& h, const Mix& m) {
  const float tone = h.s_.tone, snap = h.s_.snap;
  Block x = m.metal(h.phase_, 1.35f);
  for (int q = 0; q < quads(m.s.n); q++)
    x.put(q, x.at(q) * splat(1.2f - 0.4f * tone) + m.s.noise.at(q) * splat(0.15f + 0.35f * tone));
  const Block edge = m.high(h.filter_[0], h.state_[0], x), body = m.band(h.filter_[1], h.state_[1], edge);
  const Block click = m.falling(h.decay_[0]);
  m.each([&](int q) {
    return (splat(0.9f) * edge.at(q) + splat(0.8f) * body.at(q)) * m.s.A.at(q) * m.s.at.at(q) +
           splat(0.3f * snap) * edge.at(q) * click.at(q);
  });
}

void Recipes::tom(Hit& h, const Mix& m) {
  const float tone = h.s_.tone, snap = h.s_.snap;
  const PhaseBlock a = m.phases(h.phase_[0]), b = m.phases(h.phase_[1], 1.59f);
  const Block second = m.power(h.decay_[0]), click = m.falling(h.decay_[1]);
  const Block air = m.low(h.pole_[0], m.s.noise);
  m.each([&](int q) {
    return splat(0.85f) * sinePoly(a.at(q)) * m.s.A.at(q) * m.s.at.at(q) +
           splat(0.25f * tone) * sinePoly(b.at(q)) * second.at(q) +
           air.at(q) * (splat(0.5f * snap) * click.at(q) + splat(0.06f * tone) * m.s.A.at(q));
  });
}

void Recipes::rim(Hit& h, const Mix& m) {
  const float snap = h.s_.snap;
  const PhaseBlock a = m.phases(h.phase_[0]), b = m.phases(h.phase_[1], 3.47f),
                   c = m.phases(h.phase_[2], 5.1f);
  const Block second = m.power(h.decay_[0]), third = m.power(h.decay_[1]), click = m.falling(h.decay_[2]);
  m.each([&](int q) {
    return splat(0.6f) * sinePoly(a.at(q)) * m.s.A.at(q) + splat(0.5f) * sinePoly(b.at(q)) * second.at(q) +
           splat(0.25f) * sinePoly(c.at(q)) * third.at(q) +
           splat(1.2f * snap) * m.s.noise.at(q) * click.at(q);
  });
  m.out = m.high(h.filter_[0], h.state_[0], m.out);
}

void Recipes::cowbell(Hit& h, const Mix& m) {
  const float snap = h.s_.snap;
  Block x;
  const PhaseBlock a = m.phases(h.phase_[0]), b = m.phases(h.phase_[1], 1.4815f);
  for (int q = 0; q < quads(m.s.n); q++)
    x.put(q, square(a.at(q), min(m.step.at(q), splat(0.45f))) +
                 square(b.at(q), min(m.step.at(q) * splat(1.4815f), splat(0.45f))));
  const Block body = m.band(h.filter_[0], h.state_[0], x), click = m.falling(h.decay_[0]);
  m.each([&](int q) {
    return splat(0.5f) * body.at(q) *
           (splat(0.45f * (0.5f + snap)) * click.at(q) + splat(0.55f) * m.s.A.at(q));
  });
}

void Recipes::shaker(Hit& h, const Mix& m) {
  const Block body = m.band(h.filter_[0], h.state_[0], m.s.noise);
  const Block grains = m.high(h.filter_[1], h.state_[1], body);
  const f4 share = splat(m.inverseRate / shakerRise(h.s_)), count = {0, 1, 2, 3};
  m.each([&](int q) {
    const f4 ramp = min((count + splat(float(m.s.age + u32(4 * q)))) * share, splat(1));
    return splat(1.6f) * grains.at(q) * ramp * ramp * m.s.A.at(q);
  });
}

void Recipes::cymbal(Hit& h, const Mix& m) {
  const float snap = h.s_.snap;
  Block x = m.metal(h.phase_, 1.9f);
  for (int q = 0; q < quads(m.s.n); q++) x.put(q, x.at(q) + splat(0.35f) * m.s.noise.at(q));
  const Block edge = m.high(h.filter_[0], h.state_[0], x), body = m.band(h.filter_[2], h.state_[2], x);
  const Block bell = m.band(h.filter_[1], h.state_[1], edge);
  const Block second = m.power(h.decay_[0]), click = m.falling(h.decay_[1]);
  m.each([&](int q) {
    return m.s.A.at(q) * (splat(0.6f) * body.at(q) * second.at(q) + splat(0.9f) * edge.at(q) +
                          splat(0.5f) * bell.at(q)) +
           splat(0.4f * snap) * edge.at(q) * click.at(q);
  });
}

void Recipes::zap(Hit& h, const Mix& m) {
  const float tone = h.s_.tone, snap = h.s_.snap;
  const PhaseBlock a = m.phases(h.phase_[0]);
  const Block click = m.falling(h.decay_[0]);
  m.each([&](int q) {
    const u4 p = a.at(q);
    const f4 bend = splat(0.35f * tone * inRadians) * m.s.A.at(q) * sinePoly(p + p);
    return splat(0.9f) * sinePoly(bent(p, bend)) * m.s.A.at(q) * m.s.at.at(q) +
           splat(0.3f * snap) * m.s.noise.at(q) * click.at(q);
  });
}

void Recipes::conga(Hit& h, const Mix& m) {
  const float snap = h.s_.snap;
  const PhaseBlock a = m.phases(h.phase_[0]), b = m.phases(h.phase_[1], 1.504f);
  const Block second = m.power(h.decay_[0]), click = m.falling(h.decay_[1]);
  const Block hand = m.band(h.filter_[0], h.state_[0], m.s.noise);
  m.each([&](int q) {
    return m.s.at.at(q) * (splat(0.7f) * sinePoly(a.at(q)) * m.s.A.at(q) +
                           splat(0.3f) * sinePoly(b.at(q)) * second.at(q)) +
           splat(0.8f * snap) * hand.at(q) * click.at(q);
  });
}

void Recipes::noise(Hit& h, const Mix& m) {
  for (int i = 0; i < m.s.n; i++) {
    const SvfOut o = h.state_[0].step(h.filter_[0], m.s.noise[i]);
    m.out[i] = (0.63f * o.low + 0.95f * o.band) * m.s.A[i] * m.s.at[i];
  }
}

void Recipes::kick(Hit& h, const Mix& m) {
  const float tone = h.s_.tone, snap = h.s_.snap;
  const PhaseBlock a = m.phases(h.phase_[0]);
  const Phase beater = phaseStep(1800 * (1 + tone) * m.inverseRate), from = h.phase_[1];
  const Block click = m.falling(h.decay_[0]), thump = m.low(h.pole_[0], m.s.noise);
  h.phase_[1] += u32(m.s.n) * beater;
  const u4 count = {0, 1, 2, 3};
  m.each([&](int q) {
    const u4 p = a.at(q), b = (count + u32(4 * q)) * beater + from;
    const f4 bend = splat(0.1f * tone * inRadians) * sinePoly(p);
    return splat(0.9f) * sinePoly(bent(p, bend)) * m.s.at.at(q) * m.s.A.at(q) +
           splat(snap) * click.at(q) * (splat(0.45f) * thump.at(q) + splat(0.35f) * sinePoly(b));
  });
}

void Recipes::render(Hit& h, const Hit::Stretch& s, Block& out) {
  using Recipe = void (*)(Hit&, const Mix&);
  static constexpr Recipe recipes[models] = {kick,    snare,  clap,   hat, hat,   tom,  rim,
                                             cowbell, shaker, cymbal, zap, conga, noise};
  Mix m{s, out, float(1 / h.rate_), {}};
  for (int q = 0; q < segment / 4; q++) m.step.put(q, splat(h.f0_ * m.inverseRate) * s.r.at(q));
  recipes[h.s_.model](h, m);
}

}  // namespace synth::drums
