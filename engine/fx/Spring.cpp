#include "engine/fx/Spring.h"

#include <cmath>

namespace synth::fx {
namespace {

using namespace dsp;

constexpr double loopSeconds[2] = {0.0331, 0.0417};
constexpr double timeConstant = 0.3;
constexpr float dispersion = 0.62f;

}  // namespace

void Spring::prepare(double rate) {
  for (int k = 0; k < 2; k++) {
    Loop& l = loop_[k];
    l.length = std::uint32_t(loopSeconds[k] * rate);
    l.gain = float(math::exp(-double(l.length) / (timeConstant * rate)));
    l.line.prepare(l.length);
  }
  high_.highAt(150, rate);
  low_.lowAt(4200, rate);
}

void Spring::clear() {
  clock_.clear();
  for (Loop& l : loop_)
    for (f4& s : l.state) s = splat(0);
  high_.clear();
  low_.clear();
  for (float& x : in_) x = 0;
  for (float& x : out_) x = 0;
}

void Spring::four() {
  Block x;
  x.put(0, load(in_));
  high_.run(x, 4);
  low_.run(x, 4);
  high_.state.flush();
  low_.state.flush();
  const f4 a = splat(dispersion);
  f4 sum = splat(0);
  for (Loop& l : loop_) {
    f4 y = x.at(0) + splat(l.gain) * l.line.four(clock_.now + 1 - l.length);
    for (f4& s : l.state) {
      // (a + z^-4) / (1 + a z^-4), transposed: the state is what the last four samples left.
      const f4 in = y;
      y = a * in + s;
      s = flushed(in - a * y);
    }
    float written[4];
    store(written, y);
    l.line.put(clock_.now + 1, written, 4);
    sum += y;
  }
  clock_.advance(4);
  store(out_, sum * splat(0.5f));
}

void Spring::run(const Block& in, Block& out, int n, std::uint64_t clock) {
  for (int i = 0; i < n; i++) {
    const int k = int((clock + std::uint64_t(i)) & 3);
    out[i] = out_[k];
    in_[k] = in[i];
    if (k == 3) four();
  }
}

}  // namespace synth::fx
