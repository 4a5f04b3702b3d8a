#include "core/sounds/SendPresets.h"

#include <algorithm>
#include <span>

#include "core/params/Options.h"

namespace synth::sendfx {
namespace {

// One value of a kind: a float or a byte field of SendFx.
struct Field {
  f32 SendFx::*real = nullptr;
  u8 SendFx::*byte = nullptr;

  constexpr Field(f32 SendFx::*f) : real(f) {}
  constexpr Field(u8 SendFx::*b) : byte(b) {}
  f32 get(const SendFx& fx) const { return real ? fx.*real : f32(fx.*byte); }
  void set(SendFx& fx, f32 v) const {
    if (real)
      fx.*real = v;
    else
      fx.*byte = u8(v);
  }
};

struct Kind {
  std::span<const Field> fields;
  std::span<const f32> values;  // one row of fields a preset
  std::span<const char* const> names;
  u8 SendFx::*number = nullptr;
};

// Row 0 of each table is the block of a new Project, so that a new Project shows it unchanged.
using S = SendFx;
constexpr Field delayFields[] = {&S::delay_time,    &S::delay_feedback, &S::delay_ping_pong,
                                 &S::delay_low_cut, &S::delay_high_cut, &S::delay_wow,
                                 &S::delay_duck,    &S::delay_sync};
constexpr const char* delayNames[] = {"DOTTED", "PING PONG", "SLAP", "QUARTER",
                                      "DUB",    "TRIPLET",   "WASH", "CRISP"};
constexpr f32 delayValues[] = {
    0.75f,   0.4f,  0.6f, 180, 6500,  0.1f,  0,     14,  // 1/8D
    0.5f,    0.42f, 1,    200, 8000,  0,     0.2f,  7,   // 1/8
    0.1875f, 0.08f, 0,    120, 5500,  0.03f, 0,     0,   // FREE
    1,       0.4f,  0.3f, 180, 5000,  0.08f, 0.35f, 5,   // 1/4
    1.5f,    0.72f, 0.5f, 300, 2600,  0.3f,  0.3f,  13,  // 1/4D
    0.3333f, 0.45f, 0.7f, 160, 7000,  0.05f, 0.25f, 8,   // 1/8T
    2,       0.8f,  0.6f, 250, 3200,  0.45f, 0.5f,  4,   // 1/2
    0.25f,   0.3f,  0.8f, 400, 14000, 0,     0.1f,  9,   // 1/16
};

constexpr Field tapeFields[] = {&S::tape_rate, &S::tape_intensity, &S::tape_tone,  &S::tape_wow,
                                &S::tape_age,  &S::tape_spring,    &S::tape_heads, &S::tape_sync};
constexpr const char* tapeNames[] = {"CLASSIC", "SINGLE", "LONG", "GALLOP", "FULL", "WORN", "DUB", "RUNAWAY"};
constexpr f32 tapeValues[] = {
    1,    0.45f, 0,     0.25f, 0.35f, 0,     3, 0,  // 1+2
    1,    0.35f, 0,     0.15f, 0.2f,  0,     0, 0,  // 1
    0.6f, 0.5f,  -0.1f, 0.25f, 0.35f, 0.1f,  2, 0,  // 3
    1.2f, 0.4f,  0.1f,  0.2f,  0.3f,  0.1f,  4, 0,  // 1+3
    1,    0.5f,  0,     0.25f, 0.35f, 0.2f,  6, 0,  // 1+2+3
    0.8f, 0.55f, -0.3f, 0.6f,  0.9f,  0.2f,  5, 0,  // 2+3
    0.7f, 0.85f, -0.2f, 0.35f, 0.5f,  0.35f, 1, 0,  // 2
    1,    1.05f, 0,     0.3f,  0.6f,  0.2f,  6, 0,  // 1+2+3
};

constexpr Field hallFields[] = {&S::hall_decay, &S::hall_size,  &S::hall_predelay, &S::hall_damping,
                                &S::hall_mod,   &S::hall_width, &S::hall_low_cut,  &S::hall_high_cut};
constexpr const char* hallNames[] = {"CONCERT", "CHAMBER", "CATHEDRAL", "STAGE",
                                     "DARK",    "BRIGHT",  "SMALL",     "DRIFT"};
constexpr f32 hallValues[] = {
    0.5f,  0.6f,  0.02f,  0.45f, 0.25f, 1,    150, 9000,   //
    0.3f,  0.35f, 0.01f,  0.3f,  0.2f,  0.9f, 120, 12000,  //
    0.8f,  1,     0.05f,  0.45f, 0.3f,  1,    90,  8000,   //
    0.4f,  0.55f, 0.018f, 0.25f, 0.25f, 1,    100, 13000,  //
    0.6f,  0.8f,  0.03f,  0.75f, 0.35f, 1,    60,  4500,   //
    0.45f, 0.6f,  0.02f,  0.05f, 0.3f,  1,    200, 18000,  //
    0.15f, 0.15f, 0.004f, 0.3f,  0.15f, 0.8f, 150, 12000,  //
    0.75f, 0.9f,  0.06f,  0.4f,  0.9f,  1,    150, 9000,   //
};

constexpr Field plateFields[] = {&S::plate_decay, &S::plate_predelay, &S::plate_diffusion, &S::plate_damping,
                                 &S::plate_mod,   &S::plate_width,    &S::plate_low_cut,   &S::plate_gate};
constexpr const char* plateNames[] = {"STUDIO", "VOCAL", "SNARE", "DARK", "LONG", "GATED", "TIGHT", "MONO"};
constexpr f32 plateValues[] = {
    1.8f, 0.01f,  0.65f, 0.4f,  0.2f,  1,    180, 0,      //
    2.4f, 0.035f, 0.72f, 0.25f, 0.2f,  1,    200, 0,      //
    1.1f, 0,      0.65f, 0.2f,  0.15f, 1,    150, 0,      //
    2.6f, 0.02f,  0.75f, 0.75f, 0.3f,  1,    80,  0,      //
    6,    0.03f,  0.78f, 0.35f, 0.4f,  1,    150, 0,      //
    2.2f, 0,      0.7f,  0.15f, 0.1f,  1,    150, 0.22f,  //
    0.6f, 0,      0.6f,  0.3f,  0.1f,  0.8f, 200, 0,      //
    1.6f, 0.01f,  0.7f,  0.35f, 0.2f,  0,    120, 0,      //
};

constexpr Field shimmerFields[] = {&S::shimmer_decay,  &S::shimmer_amount, &S::shimmer_bloom,
                                   &S::shimmer_tone,   &S::shimmer_mod,    &S::shimmer_low_cut,
                                   &S::shimmer_freeze, &S::shimmer_pitch};
constexpr const char* shimmerNames[] = {"OCTAVE", "FIFTHS", "HALO", "CRYSTAL", "ABYSS", "ORGAN"};
constexpr f32 shimmerValues[] = {
    6,  0.5f,  0.5f, 0.6f,  0.3f,  200, 0, 0,  // +12
    7,  0.45f, 0.6f, 0.5f,  0.35f, 180, 0, 1,  // +7
    12, 0.6f,  0.8f, 0.65f, 0.4f,  250, 0, 0,  // +12
    8,  0.4f,  0.4f, 0.9f,  0.3f,  400, 0, 3,  // +24
    10, 0.5f,  0.7f, 0.25f, 0.3f,  40,  0, 4,  // -12
    9,  0.55f, 0.5f, 0.45f, 0.2f,  200, 0, 2,  // +19
};

constexpr Field chorusFields[] = {&S::chorus_rate, &S::chorus_depth,   &S::chorus_width,
                                  &S::chorus_tone, &S::chorus_low_cut, &S::chorus_mode};
constexpr const char* chorusNames[] = {"CLASSIC", "SLOW", "FAST", "STRINGS", "SEASICK"};
constexpr f32 chorusValues[] = {
    0.5f,  0.45f, 0.8f, 0.6f,  120, 0,  // CHORUS
    0.18f, 0.65f, 1,    0.6f,  100, 0,  // CHORUS
    2.6f,  0.3f,  0.9f, 0.75f, 150, 0,  // CHORUS
    0.6f,  0.7f,  1,    0.8f,  150, 1,  // ENSEMBLE
    4.5f,  0.8f,  1,    0.5f,  100, 0,  // CHORUS
};

constexpr Kind kinds[] = {
    {delayFields, delayValues, delayNames, &S::delay_preset},
    {tapeFields, tapeValues, tapeNames, &S::tape_preset},
    {hallFields, hallValues, hallNames, &S::hall_preset},
    {plateFields, plateValues, plateNames, &S::plate_preset},
    {shimmerFields, shimmerValues, shimmerNames, &S::shimmer_preset},
    {chorusFields, chorusValues, chorusNames, &S::chorus_preset},
};

const Kind* kindOf(int type) { return type >= FX_DELAY && type < FX_OFF ? &kinds[type] : nullptr; }

}  // namespace

const char* typeName(int type) { return param::options::fxType[type < 0 || type > FX_OFF ? FX_OFF : type]; }

int presetCount(int type) {
  const Kind* kind = kindOf(type);
  return kind ? int(kind->names.size()) : 0;
}

const char* preset(int type, int index) {
  const Kind* kind = kindOf(type);
  return kind ? kind->names[size_t(std::clamp(index, 0, presetCount(type) - 1))] : "";
}

const char* const* presetNames(int type) {
  const Kind* kind = kindOf(type);
  return kind ? kind->names.data() : nullptr;
}

int typeOf(const Project& project, int bus) { return sendFx(project, bus).type; }

bool load(Project& project, int bus, int type, int index) {
  const Kind* kind = kindOf(type);
  if (!kind || (bus != SendI && bus != SendII) || index < 0 || index >= presetCount(type)) return false;
  SendFx& fx = sendFx(project, bus);
  const size_t width = kind->fields.size();
  for (size_t i = 0; i < width; i++) kind->fields[i].set(fx, kind->values[size_t(index) * width + i]);
  fx.type = u8(type);
  fx.*kind->number = u8(index);
  return true;
}

int presetOf(const Project& project, int bus) {
  const SendFx& fx = sendFx(project, bus);
  const Kind* kind = kindOf(fx.type);
  return kind ? fx.*kind->number : -1;
}

bool changed(const Project& project, int bus) {
  const SendFx& fx = sendFx(project, bus);
  const Kind* kind = kindOf(fx.type);
  if (!kind) return false;
  const size_t width = kind->fields.size();
  const size_t row = size_t(std::min<int>(fx.*kind->number, presetCount(fx.type) - 1)) * width;
  for (size_t i = 0; i < width; i++)
    if (kind->fields[i].get(fx) != kind->values[row + i]) return true;
  return false;
}

std::string key(int bus, std::string_view suffix) {
  return (bus == SendII ? "fx2_" : "fx1_") + std::string(suffix);
}

}  // namespace synth::sendfx
