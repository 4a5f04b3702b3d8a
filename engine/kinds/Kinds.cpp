#include "engine/kinds/Kind.h"
#include "engine/kinds/Wavetables.h"

namespace synth::kinds {
namespace {

struct Row {
  Render render;
  float gain;
};

constexpr Row rows[] = {
    {renderAnalog, 0.7f},    {renderFm, 0.595f},    {renderTine, 0.42f},  {renderOrgan, 0.91f},
    {renderWavetable, 0.7f}, {renderSwarm, 0.945f}, {renderVoice, 0.42f}, {renderMachine, 1.4f},
    {renderRift, 1.12f},     {renderPerc, 0.9f},    {nullptr, 1},
};

}  // namespace

Render rendererOf(int kind) { return kind >= 0 && kind <= SAMPLER ? rows[kind].render : nullptr; }
float outputGain(int kind) { return kind >= 0 && kind <= SAMPLER ? rows[kind].gain : 0; }
void prepare() {
  dsp::sineTable();
  wavetable(0, 0, 0);
}
bool softens(int kind) { return kind == ANALOG || kind == WAVETABLE || kind == SWARM; }

}  // namespace synth::kinds
