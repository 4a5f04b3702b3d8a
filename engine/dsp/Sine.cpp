#include "engine/dsp/Sine.h"

#include "base/Math.h"

namespace synth::dsp {
namespace {

struct Table {
  float v[sineSize + 1];
  Table() {
    for (int i = 0; i < sineSize; i++) v[i] = float(math::sin(2 * math::pi * i / sineSize));
    v[sineSize] = math::sin(float(2 * math::pi));
  }
};

}  // namespace

const float* sineTable() {
  static const Table table;
  return table.v;
}

}  // namespace synth::dsp
