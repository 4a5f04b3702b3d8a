// The whole song document as one flat value: no pointers, no heap, and no padding that is not named.
// Copies are byte copies, two Projects are equal when their bytes are, and unused rows always hold the
// default record, so a Project's bytes are a function of what it means.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

namespace synth {

using u8 = std::uint8_t;
using i8 = std::int8_t;
using i16 = std::int16_t;
using u16 = std::uint16_t;
using i32 = std::int32_t;
using u32 = std::uint32_t;
using i64 = std::int64_t;
using u64 = std::uint64_t;
using f32 = float;

// The limits of the model, as `version` prints them and as the reader and the validator enforce them.
namespace limits {
inline constexpr int tracks = 16;
inline constexpr int pads = 8;
inline constexpr int patterns = 256;
inline constexpr int patternLength = 1024;
inline constexpr int clips = 1024;
inline constexpr u32 songSteps = 1048576;
inline constexpr int notes = 16384;
inline constexpr int slots = 8;
inline constexpr int locks = 8;
inline constexpr int laneOwners = 19;
inline constexpr int lanesPerOwner = 8;
inline constexpr int masterLanes = 12;
inline constexpr int firstMasterLane = laneOwners * lanesPerOwner;
inline constexpr int lanes = firstMasterLane + masterLanes;
inline constexpr int lanePoints = 32768;
inline constexpr u32 lanePosition = songSteps * 16;
inline constexpr int markers = 64;
inline constexpr int macros = 16;
inline constexpr int macroTargets = 16;
inline constexpr int pins = 32;
inline constexpr int projectName = 63;
inline constexpr int shortName = 12;
inline constexpr int presetName = 20;
inline constexpr u16 firstMacroPin = 1000;
}  // namespace limits

enum TrackKind : u8 { MELODIC, DRUMS };
enum SynthKind : u8 { ANALOG, FM, TINE, ORGAN, WAVETABLE, SWARM, VOICE, MACHINE, RIFT, PERC, SAMPLER };
enum FxType : u8 { FX_DELAY, FX_TAPE, FX_HALL, FX_PLATE, FX_SHIMMER, FX_CHORUS, FX_OFF };
enum class LfoQuick : u8 { Tremolo, Vibrato, Wobble, Drift };
// Rows of Lanes, Pins and bus targets that belong to no Track.
enum Bus : int { SendI, SendII, MasterBus };

// A parameter value pinned to one Note. `target` is the target number plus 1; 0 is an empty Lock.
struct LockRec {
  u8 target = 0, reserved = 0;
  u16 value = 0;
};

// A Note as a value, without its place: what Steps, scheduled events and recordings hold.
struct Note {
  u8 pitch = 60, velocity = 0;  // velocity 0 is an empty slot
  u16 length = 192;             // in 1/256 Step
  i8 nudge = 0;                 // in 1/128 Step
  u8 flags = 0;
  u8 reserved[2] = {};
  LockRec locks[limits::locks];

  static constexpr u8 slideBit = 1, accentBit = 2;
  bool slide() const { return flags & slideBit; }
  bool accent() const { return flags & accentBit; }
  int hits() const { return (flags >> 2 & 3) + 1; }
  int chance() const { return flags >> 4 ? flags >> 4 : 16; }  // sixteenths; 16 always plays
  int lockCount() const {
    int n = 0;
    while (n < limits::locks && locks[n].target) n++;
    return n;
  }
};

// A Note in the arena, with its place.
struct NoteRec {
  u8 track = 0, slot = 0;
  u16 pattern = 0, step = 0;
  u8 pitch = 60, velocity = 0;
  u16 length = 192;
  i8 nudge = 0;
  u8 flags = 0;
  LockRec locks[limits::locks];

  Note note() const;
  void setNote(const Note& note);
};

struct PatternRec {
  u8 track = 0, isFront = 0;
  u16 id = 0, length = 16, frontId = 0;  // frontId: 1 + the front's id, 0 for none
};

struct ClipRec {
  u8 track = 0, repeats = 0;
  u16 pattern = 0;
  u32 start = 0, length = 16;
  u16 offset = 0, reserved = 0;
};

struct LaneRow {
  u8 enabled = 0, target = 0;  // target: the number plus 1; master rows: the Move plus 1
  u16 first = 0, count = 0;
};

struct LanePoint {
  u32 position = 0;  // in 1/16 Step
  u16 value = 0;
  u8 rest = 0, reserved = 0;
};

struct MarkerRec {
  u32 step = 0;
  char name[16] = {};
};

struct MacroTarget {
  u16 param = 0;
  u8 pad = 0, reserved = 0;
  f32 amount = 0, amount_down = 0, window_from = 0, window_to = 1;
};

struct MacroRec {
  char name[16] = {};
  u8 polarity = 0, targetCount = 0, reserved[2] = {};
  f32 value = 0;
  MacroTarget targets[limits::macroTargets];
};

struct PinList {
  u16 ids[limits::pins] = {};
  u8 count = 0, custom = 0;
};

// A Send effect keeps the settings of all six kinds at once; `type` picks the one that is heard.
struct SendFx {
  u8 type = FX_DELAY, reserved0[3] = {};
  f32 returnLevel = 1;
  f32 delay_time = 0.75f, delay_feedback = 0.4f, delay_ping_pong = 0.6f, delay_low_cut = 180,
      delay_high_cut = 6500, delay_wow = 0.1f, delay_duck = 0;
  u8 delay_sync = 14, delay_preset = 0, reserved1[2] = {};
  f32 tape_rate = 1, tape_intensity = 0.45f, tape_tone = 0, tape_wow = 0.25f, tape_age = 0.35f,
      tape_spring = 0;
  u8 tape_heads = 3, tape_sync = 0, tape_preset = 0, reserved2[1] = {};
  f32 hall_decay = 0.5f, hall_size = 0.6f, hall_predelay = 0.02f, hall_damping = 0.45f, hall_mod = 0.25f,
      hall_width = 1, hall_low_cut = 150, hall_high_cut = 9000;
  u8 hall_preset = 0, reserved3[3] = {};
  f32 plate_decay = 1.8f, plate_predelay = 0.01f, plate_diffusion = 0.65f, plate_damping = 0.4f,
      plate_mod = 0.2f, plate_width = 1, plate_low_cut = 180, plate_gate = 0;
  u8 plate_preset = 0, reserved4[3] = {};
  f32 shimmer_decay = 6, shimmer_amount = 0.5f, shimmer_bloom = 0.5f, shimmer_tone = 0.6f, shimmer_mod = 0.3f,
      shimmer_low_cut = 200, shimmer_freeze = 0;
  u8 shimmer_pitch = 0, shimmer_preset = 0, reserved5[2] = {};
  f32 chorus_rate = 0.5f, chorus_depth = 0.45f, chorus_width = 0.8f, chorus_tone = 0.6f, chorus_low_cut = 120;
  u8 chorus_mode = 0, chorus_preset = 0, reserved6[2] = {};
};

using PadValues = f32[limits::pads];

// One record for every kind of Track: a Drums Track ignores the melodic fields, so that switching the
// kind never loses them. A field that bears a parameter's key is that parameter's value.
struct Track {
  u8 engine = ANALOG, track_kind = MELODIC, origin = 255, visual = 0;
  char name[16] = {};
  char preset_name[24] = {};
  f32 engine1 = 0.5f, engine2 = 0.5f, engine3 = 0.5f, engine4 = 0.5f;
  u8 mute = 0, solo = 0, reserved0[2] = {};
  f32 level = 0.64f, pan = 0, send_1 = 0, send_2 = 0;
  f32 cutoff = 20000, resonance = 0;
  f32 attack = 0.003f, decay = 0.3f, sustain = 0.7f, release = 0.2f;
  f32 filter_env = 0, lfo_rate = 4, lfo_depth = 0;
  u8 voice_mode = 0, timbre_target = 0, reserved1[2] = {};
  f32 glide = 0, velocity_brightness = 0;
  f32 timbre_amount = 0, timbre_attack = 0.005f, timbre_decay = 0.4f, timbre_sustain = 0,
      timbre_release = 0.4f;
  PadValues pad_pitch = {};
  PadValues pad_decay = {0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f};
  PadValues pad_tone = {0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f};
  PadValues pad_level = {0.8f, 0.8f, 0.8f, 0.8f, 0.8f, 0.8f, 0.8f, 0.8f};
  u8 polyphony = 8, unison = 1, reserved2[2] = {};
  f32 unison_detune = 0.2f, unison_spread = 0.5f;
  f32 transpose = 0, fine = 0, pitch_env = 0, pitch_env_time = 0.05f;
  f32 sub_level = 0, click = 0, velocity_amp = 1;
  u8 perc_model = 0, filter_type = 0, filter_adsr = 0, reserved3[1] = {};
  f32 filter_drive = 0, key_track = 0, highpass = 20;
  f32 filter_attack = 0.005f, filter_decay = 0.3f, filter_sustain = 0.4f, filter_release = 0.3f;
  u8 lfo_shape = 0, lfo_sync = 0, lfo_target = 0;
  u8 lfo2_shape = 0, lfo2_sync = 0, lfo2_target = 1, lfo_retrigger = 0, lfo2_retrigger = 0;
  f32 lfo2_rate = 5, lfo2_depth = 0, lfo2_fade = 0;
  u8 insert_drive_type = 0, mod_type = 0, reserved4[2] = {};
  f32 insert_drive = 0, crush_bits = 0, crush_rate = 0;
  f32 eq_low = 0, eq_mid = 0, eq_mid_freq = 1000, eq_high = 0;
  f32 mod_rate = 0.5f, mod_depth = 0.5f, mod_feedback = 0, mod_mix = 0.5f, mod_tone = 0.5f;
  f32 width = 1;
  f32 room_size = 0.4f, room_decay = 0.5f, room_damp = 0.4f, room_mix = 0;
  f32 duck_amount = 0, duck_release = 0.2f;
  u8 duck_source = 1;
  u8 pad_model[limits::pads] = {0, 1, 3, 4, 2, 5, 6, 7};
  u8 pad_choke[limits::pads] = {0, 0, 1, 1, 0, 0, 0, 0};
  u8 reserved5[3] = {};
  PadValues pad_sweep = {0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f};
  PadValues pad_snap = {0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f};
  PadValues pad_drive = {}, pad_pan = {}, pad_sweep_time = {}, pad_gate = {};
  PadValues pad_note = {-1, -1, -1, -1, -1, -1, -1, -1};
  PadValues pad_highpass = {20, 20, 20, 20, 20, 20, 20, 20};
  u8 drawbar_custom = 0, poly_glide_mode = 0, mod_sync = 0, analog_mode = 0;
  f32 drawbar_1 = 0.8f, drawbar_2 = 1, drawbar_3 = 0.5f, drawbar_4 = 0.6f, drawbar_5 = 0.3f, drawbar_6 = 0.3f,
      drawbar_7 = 0.1f, drawbar_8 = 0.1f;
  f32 noise_mix = 0;
  u8 mod_side = 0, key_sync = 0, reserved6[2] = {};
  f32 osc_level = 1, osc_b_shape = -1, trim = 0, mono_below = 20, osc_b_level = 0, lfo_phase = 0,
      lfo2_phase = 0;
  PadValues pad_tail_drift = {};
  PadValues pad_tail_time = {0.3f, 0.3f, 0.3f, 0.3f, 0.3f, 0.3f, 0.3f, 0.3f};
  PadValues pad_drop = {};
  PadValues pad_drop_time = {0.3f, 0.3f, 0.3f, 0.3f, 0.3f, 0.3f, 0.3f, 0.3f};
  PadValues pad_hold = {}, pad_sweep_hold = {};
  PadValues pad_lowpass = {20000, 20000, 20000, 20000, 20000, 20000, 20000, 20000};
  f32 lowpass = 20000;
  u8 sample_hash[32] = {};
  char sample_name[16] = {};
  u8 sample_mode = 0, sample_root = 60, reserved7[2] = {};
  f32 sample_tune = 0, sample_lofi = 0, sample_speed = 1;
  PinList pins;
  u8 reserved8[2] = {};
  MacroRec macros[limits::macros];
  u8 macroCount = 0, reserved9[3] = {};
};

struct Project {
  char name[64] = {};
  f32 bpm = 120, swing = 0.5f, master = 0.85f;
  u8 markerCount = 0, reserved0 = 0, track_count = 16, key_root = 0;
  Track tracks[limits::tracks];
  u16 patternCount = 0, clipCount = 0, noteCount = 0, lanePointCount = 0;
  PatternRec patterns[limits::patterns];
  ClipRec clips[limits::clips];
  NoteRec notes[limits::notes];
  LaneRow lanes[limits::lanes];
  LanePoint lanePoints[limits::lanePoints];
  MarkerRec markers[limits::markers];
  u32 loopStart = 0, loopEnd = 0;
  SendFx fx1, fx2{.type = FX_HALL};
  f32 fx_chain = 0;
  u8 key_scale = 1, reserved1[3] = {};
  f32 master_eq[10] = {};
  f32 comp_amount = 0, comp_release = 0.15f, limiter_ceiling = 0.95f, saturation = 0, humanize = 0;
  PinList busPins[3];
  u8 reserved2[2] = {};
};

static_assert(sizeof(LockRec) == 4 && sizeof(Note) == 40 && sizeof(NoteRec) == 44 && sizeof(PatternRec) == 8);
static_assert(sizeof(ClipRec) == 16 && sizeof(LaneRow) == 6 && sizeof(LanePoint) == 8 &&
              sizeof(MarkerRec) == 20);
static_assert(sizeof(MacroTarget) == 20 && sizeof(MacroRec) == 344 && sizeof(PinList) == 66);
static_assert(sizeof(SendFx) == 196 && sizeof(Track) == 6664 && sizeof(Project) == 1111116);
static_assert(std::is_trivially_copyable_v<Project> && std::is_standard_layout_v<Project>);

// A Project is too large for a stack: it lives on the heap.
using ProjectPtr = std::unique_ptr<Project>;
ProjectPtr newProject();
ProjectPtr copyOf(const Project& project);
// A Project that was never touched, to reset from and to compare with.
const Project& defaultProject();

bool sameBytes(const Project& a, const Project& b);
template <class T>
bool sameBytes(const T& a, const T& b) {
  static_assert(std::is_trivially_copyable_v<T>);
  return std::memcmp(&a, &b, sizeof(T)) == 0;
}

inline const SendFx& sendFx(const Project& p, int bus) { return bus == SendII ? p.fx2 : p.fx1; }
inline SendFx& sendFx(Project& p, int bus) { return bus == SendII ? p.fx2 : p.fx1; }
inline bool isTrack(int index) { return index >= 0 && index < limits::tracks; }
inline bool isDrums(const Track& t) { return t.track_kind == DRUMS; }

}  // namespace synth
