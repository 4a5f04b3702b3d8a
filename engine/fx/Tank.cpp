#include "engine/fx/Parts.h"

namespace synth::fx {

using namespace dsp;

void Tank::prepare(const double (&seconds)[lines], double swing, double rate) {
  for (int i = 0; i < lines; i++) line_[i].prepare((seconds[i] + swing) * rate + 4);
}

void Tank::clear() {
  clock_.clear();
  for (float& y : low_) y = 0;
}

std::size_t Tank::bytes() const {
  std::size_t sum = 0;
  for (const DelayLine& l : line_) sum += l.bytes();
  return sum;
}

void Tank::aim(const float (&delays)[lines], bool snap) {
  for (int i = 0; i < lines; i++) delay_[i].aim(std::min(delays[i], float(line_[i].longest())), snap);
}

void Tank::setGains(const float (&gains)[lines]) {
  meanSquare_ = 0;
  for (int i = 0; i < lines; i++) {
    gain_[i] = gains[i];
    meanSquare_ += gains[i] * gains[i] / lines;
  }
}

void Tank::flush() {
  for (float& y : low_) y = flushed(y);
}

void Tank::read(Block (&y)[lines], int n) {
  const f4 least = splat(float(segment + 2));
  for (int q = 0; q < quads(n); q++) {
    const u4 at = clock_.after(q);
    f4 x[lines];
    for (int i = 0; i < lines; i++) x[i] = splat(gain_[i]) * line_[i].read(at, max(delay_[i].four(q), least));
    // The low passes run sample by sample, four lines to a vector.
    transpose(x[0], x[1], x[2], x[3]);
    transpose(x[4], x[5], x[6], x[7]);
    f4 a = load(low_), b = load(low_ + 4);
    const f4 c = splat(damping_);
    const int count = std::min(4, n - 4 * q);
    for (int k = 0; k < count; k++) {
      x[k] = a += c * (x[k] - a);
      x[4 + k] = b += c * (x[4 + k] - b);
    }
    store(low_, a);
    store(low_ + 4, b);
    transpose(x[0], x[1], x[2], x[3]);
    transpose(x[4], x[5], x[6], x[7]);
    for (int i = 0; i < lines; i++) y[i].put(q, x[i]);
  }
  for (Ramp& d : delay_) d.advance(n);
}

void Tank::write(const Block (&x)[lines], int n) {
  for (int i = 0; i < lines; i++) line_[i].put(clock_.now + 1, x[i].v, n);
  clock_.advance(n);
}

}  // namespace synth::fx
