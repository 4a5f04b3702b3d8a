#include "engine/kinds/Kind.h"

namespace synth::kinds {
namespace {

struct Row {
  Render render;
  float gain;
};

constexpr Row rows[] = {
    {renderAnalog, 0.7f}, {renderFm, 0.595f}, {renderTine, 0.42f}, {nullptr, 0.91f},
    {nullptr, 0.7f},      {nullptr, 0.945f},  {nullptr, 0.42f},    {nullptr, 1.4f},
    {nullptr, 1.12f},     {nullptr, 0.9f},    {nullptr, 1},
};

}  // namespace

Render rendererOf(int kind) { return kind >= 0 && kind <= SAMPLER ? rows[kind].render : nullptr; }
float outputGain(int kind) { return kind >= 0 && kind <= SAMPLER ? rows[kind].gain : 0; }
bool softens(int kind) { return kind == ANALOG || kind == WAVETABLE || kind == SWARM; }

}  // namespace synth::kinds
