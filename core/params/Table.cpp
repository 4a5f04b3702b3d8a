// The rows of the registry, in the order in which files and exports write them.
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <vector>

#include "core/params/Options.h"
#include "core/params/TableRows.h"
#include "core/sounds/SendPresets.h"

namespace synth::param {
namespace {

struct Options {
  const char* const* labels = nullptr;
  int count = 0;
};

template <size_t N>
constexpr Options of(const char* const (&labels)[N]) {
  return {labels, int(N)};
}

const Options none;
Options presetsOf(int type) { return {sendfx::presetNames(type), sendfx::presetCount(type)}; }

const char* const lfoShape[] = {"SINE", "TRIANGLE", "SAW DOWN", "SAW UP", "SQUARE", "S&H", "SMOOTH RND"};
const char* const lfoTarget[] = {"CUTOFF",   "PITCH",    "AMP",      "PAN",      "ENGINE 1",
                                 "ENGINE 2", "ENGINE 3", "ENGINE 4", "RESONANCE"};
const char* const engineNames[] = {"ANALOG", "FM",      "TINE", "ORGAN", "WAVETABLE", "SWARM",
                                   "VOICE",  "MACHINE", "RIFT", "PERC",  "SAMPLER"};
const char* const voiceMode[] = {"POLY", "RETRIGGER", "LEGATO", "POLY LEGATO"};
const char* const timbreTarget[] = {"ENGINE 1", "ENGINE 2", "ENGINE 3", "ENGINE 4"};
const char* const filterType[] = {"LADDER", "LOWPASS", "HIGHPASS", "BANDPASS", "NOTCH"};
const char* const driveType[] = {"SOFT", "TUBE", "HARD", "FOLD"};
const char* const modType[] = {"OFF", "CHORUS", "ENSEMBLE", "FLANGER", "PHASER", "VINYL"};
const char* const glideMode[] = {"ALL NOTES", "SLIDE NOTES"};
const char* const analogMode[] = {"DUAL", "SYNC"};
const char* const sampleMode[] = {"ONE-SHOT", "KEYS"};
const char* const choke[] = {"NONE", "GROUP 1", "GROUP 2", "GROUP 3", "GROUP 4"};
const char* const tapeHeads[] = {"1", "2", "3", "1+2", "1+3", "2+3", "1+2+3"};
const char* const shimmerPitch[] = {"+12", "+7", "+19", "+24", "-12"};
const char* const chorusMode[] = {"CHORUS", "ENSEMBLE"};
const char* const visuals[] = {
    "AUTO",        "PRISM",      "PILE DRIVER", "PUMP JACK", "PINBALL",      "ROCKET",
    "TESLA COIL",  "LEAD ORGAN", "SPIROGRAPH",  "BELLS",     "WIND MACHINE", "WAVETABLE PRISM",
    "MURMURATION", "MOUTH",      "FORGE",       "FILM REEL", "DRUM",         "ARCADE"};

// "BASS" for a whole starter Track, "BASS PAD 3" for one Pad of it.
struct DuckSources {
  char texts[144][20];
  const char* labels[144];
  DuckSources() {
    for (int s = 0; s < 144; s++) {
      const char* track = starterTrackName(s / 9);
      if (s % 9)
        std::snprintf(texts[s], sizeof texts[s], "%s PAD %d", track, s % 9);
      else
        std::snprintf(texts[s], sizeof texts[s], "%s", track);
      labels[s] = texts[s];
    }
  }
};

Options duckSources() {
  static const DuckSources sources;
  return {sources.labels, 144};
}

template <class T>
constexpr bool byteField = sizeof(std::remove_all_extents_t<T>) == 1;

class Builder {
 public:
  std::vector<Info> rows;

  void add(u16 id, const char* key, const char* label, Scope scope, const char* unit, Curve curve, f32 min,
           f32 max, Options options, u32 offset, bool isByte, const char* meaning) {
    rows.push_back({id, key, label, group_, unit, scope, curve, applies_, min,
                    options.labels && max == 0 ? f32(options.count - 1) : max, options.labels,
                    u8(options.count), mix_, meaning, offset, isByte});
  }
  void group(const char* name, Applies applies = AnyTrack) {
    group_ = name;
    applies_ = applies;
    mix_ = false;
  }
  void mix(bool on) { mix_ = on; }
  void applies(Applies applies) { applies_ = applies; }

 private:
  const char* group_ = "";
  Applies applies_ = AnyTrack;
  bool mix_ = false;
};

// Field of a Project, of the Send effect `bus`, of a Track, of a Pad: id, field (its key), label, unit,
// curve, min, max, meaning. Enumerations name their labels instead of a range.
#define P(id, field, label, unit, curve, lo, hi, text)                                        \
  b.add(id, #field, label, ScopeProject, unit, curve, lo, hi, none, offsetof(Project, field), \
        byteField<decltype(Project::field)>, text)
#define PE(id, field, label, labels, text) \
  b.add(id, #field, label, ScopeProject, "", Enumeration, 0, 0, labels, offsetof(Project, field), true, text)
#define S_AT(field) u32((bus ? offsetof(Project, fx2) : offsetof(Project, fx1)) + offsetof(SendFx, field))
#define S(n, field, label, unit, curve, lo, hi, text)                                                        \
  b.add(u16(400 + 100 * bus + n), bus ? "fx2_" #field : "fx1_" #field, label, ScopeProject, unit, curve, lo, \
        hi, none, S_AT(field), false, text)
#define SE(n, field, label, labels, text)                                                                    \
  b.add(u16(400 + 100 * bus + n), bus ? "fx2_" #field : "fx1_" #field, label, ScopeProject, "", Enumeration, \
        0, 0, labels, S_AT(field), true, text)
#define T(id, field, label, unit, curve, lo, hi, text)                                    \
  b.add(id, #field, label, ScopeTrack, unit, curve, lo, hi, none, offsetof(Track, field), \
        byteField<decltype(Track::field)>, text)
#define TE(id, field, label, labels, text) \
  b.add(id, #field, label, ScopeTrack, "", Enumeration, 0, 0, labels, offsetof(Track, field), true, text)
#define D(id, field, label, unit, curve, lo, hi, text)                                  \
  b.add(id, #field, label, ScopePad, unit, curve, lo, hi, none, offsetof(Track, field), \
        byteField<decltype(Track::field)>, text)
#define DE(id, field, label, labels, text) \
  b.add(id, #field, label, ScopePad, "", Enumeration, 0, 0, labels, offsetof(Track, field), true, text)

void transportAndMaster(Builder& b) {
  b.group("TRANSPORT");
  P(1, bpm, "TEMPO", "", Linear, 40, 240, "The tempo, in beats per minute.");
  P(2, swing, "SWING", "%", Linear, 0.5f, 0.75f, "Delays every second sixteenth for a shuffle.");
  P(45, track_count, "TRACKS", "", Integer, 1, 16, "How many Tracks are active.");
  P(32, humanize, "HUMANIZE", "%", Linear, 0, 1, "Lets Notes fall a little late and vary in strength.");
  PE(56, key_root, "KEY", of(options::keyRoot), "The Song's key note; AUTO and OFF leave it to the Notes.");
  PE(57, key_scale, "SCALE", of(options::keyScale), "The Song's scale.");
  b.group("MASTER");
  P(3, master, "LEVEL", "%", Linear, 0, 1, "The loudness of the whole mix.");
  P(28, comp_amount, "COMP", "%", Linear, 0, 1, "How hard the compressor holds the mix together.");
  P(29, comp_release, "RELEASE", "s", Logarithmic, 0.02f, 1.5f, "How fast the compressor lets go.");
  P(30, limiter_ceiling, "CEILING", "%", Linear, 0.5f, 1, "The level that no peak of the mix passes.");
  P(31, saturation, "SATURATE", "%", Linear, 0, 1, "Warms and thickens the mix.");
}

void sendTypes(Builder& b) {
  b.group("SEND FX");
  P(22, fx_chain, "INTO II", "%", Linear, 0, 1, "How much of Send I feeds Send II.");
  for (int bus : {SendI, SendII}) {
    SE(0, type, "TYPE", of(options::fxType), "The effect in this Send slot.");
    b.add(u16(401 + 100 * bus), bus ? "fx2_return" : "fx1_return", "RETURN", ScopeProject, "%", Linear, 0, 2,
          none, S_AT(returnLevel), false, "How loud the effect comes back into the mix.");
  }
}

void delayRows(Builder& b, int bus) {
  SE(2, delay_preset, "PRESET", presetsOf(FX_DELAY), "The delay preset that was loaded last.");
  SE(3, delay_sync, "SYNC", of(options::sync), "Ties the echo time to the tempo; FREE uses TIME.");
  S(4, delay_time, "TIME", "beat", Linear, 0.0625f, 2, "The time between echoes, in beats.");
  S(5, delay_feedback, "FEEDBACK", "%", Linear, 0, 0.95f, "How much of each echo feeds the next.");
  S(6, delay_ping_pong, "PING PONG", "%", Linear, 0, 1, "Lets the echoes cross from side to side.");
  S(7, delay_low_cut, "LOW CUT", "Hz", Logarithmic, 20, 2000, "Takes the lows out of the echoes.");
  S(8, delay_high_cut, "HIGH CUT", "Hz", Logarithmic, 500, 20000, "Takes the highs out of the echoes.");
  S(9, delay_wow, "WOW", "%", Linear, 0, 1, "Lets the echoes waver in pitch.");
  S(10, delay_duck, "DUCK", "%", Linear, 0, 1, "Lowers the echoes while the dry sound plays.");
}

void hallRows(Builder& b, int bus) {
  SE(11, hall_preset, "PRESET", presetsOf(FX_HALL), "The hall preset that was loaded last.");
  S(12, hall_decay, "DECAY", "%", Linear, 0, 1, "How long the hall rings.");
  S(13, hall_size, "SIZE", "%", Linear, 0, 1, "How large the hall is.");
  S(14, hall_predelay, "PREDELAY", "s", Linear, 0, 0.25f, "The pause before the hall answers.");
  S(15, hall_damping, "DAMPING", "%", Linear, 0, 1, "How fast the highs die in the hall.");
  S(16, hall_mod, "MOD", "%", Linear, 0, 1, "Slow movement inside the hall.");
  S(17, hall_width, "WIDTH", "%", Linear, 0, 1, "How wide the hall sounds.");
  S(18, hall_low_cut, "LOW CUT", "Hz", Logarithmic, 20, 2000, "Keeps the lows out of the hall.");
  S(19, hall_high_cut, "HIGH CUT", "Hz", Logarithmic, 1000, 20000, "Keeps the highs out of the hall.");
}

void chorusRows(Builder& b, int bus) {
  SE(20, chorus_preset, "PRESET", presetsOf(FX_CHORUS), "The chorus preset that was loaded last.");
  SE(21, chorus_mode, "MODE", of(chorusMode), "One moving voice a side, or a string ensemble of three.");
  S(22, chorus_rate, "RATE", "Hz", Logarithmic, 0.02f, 10, "How fast the chorus moves.");
  S(23, chorus_depth, "DEPTH", "%", Linear, 0, 1, "How far the chorus bends the pitch.");
  S(24, chorus_width, "WIDTH", "%", Linear, 0, 1, "How wide the chorus sounds.");
  S(25, chorus_tone, "TONE", "%", Linear, 0, 1, "How bright the chorus is.");
  S(26, chorus_low_cut, "LOW CUT", "Hz", Logarithmic, 20, 1000, "Keeps the lows out of the chorus.");
}

void tapeRows(Builder& b, int bus) {
  SE(27, tape_preset, "PRESET", presetsOf(FX_TAPE), "The tape preset that was loaded last.");
  SE(28, tape_heads, "HEADS", of(tapeHeads), "Which playback heads of the tape are heard.");
  SE(29, tape_sync, "SYNC", of(options::sync), "Ties the head spacing to the tempo; FREE uses RATE.");
  S(30, tape_rate, "RATE", "", Logarithmic, 0.5f, 2,
    "The speed of the tape: faster brings the echoes closer.");
  S(31, tape_intensity, "INTENSITY", "%", Linear, 0, 1.1f, "How much of the echoes is recorded again.");
  S(32, tape_tone, "TONE", "", Linear, -1, 1, "Tilts the echoes from dark to bright.");
  S(33, tape_wow, "WOW", "%", Linear, 0, 1, "Lets the tape run unevenly.");
  S(34, tape_age, "AGE", "%", Linear, 0, 1, "Wears the tape: duller, dirtier, noisier.");
  S(35, tape_spring, "SPRING", "%", Linear, 0, 1, "Adds a spring reverb behind the echoes.");
}

void plateRows(Builder& b, int bus) {
  SE(36, plate_preset, "PRESET", presetsOf(FX_PLATE), "The plate preset that was loaded last.");
  S(37, plate_decay, "DECAY", "s", Logarithmic, 0.3f, 10, "How long the plate rings.");
  S(38, plate_predelay, "PREDELAY", "s", Linear, 0, 0.25f, "The pause before the plate answers.");
  S(39, plate_diffusion, "DIFFUSION", "", Linear, 0.3f, 0.8f, "How fast the reflections blur together.");
  S(40, plate_damping, "DAMPING", "%", Linear, 0, 1, "How fast the highs die in the plate.");
  S(41, plate_mod, "MOD", "%", Linear, 0, 1, "Slow movement inside the plate.");
  S(42, plate_width, "WIDTH", "%", Linear, 0, 1, "How wide the plate sounds.");
  S(43, plate_low_cut, "LOW CUT", "Hz", Logarithmic, 20, 2000, "Keeps the lows out of the plate.");
  S(44, plate_gate, "GATE", "s", Linear, 0, 0.6f,
    "Cuts the plate off this long after a hit; 0 lets it ring.");
}

void shimmerRows(Builder& b, int bus) {
  SE(45, shimmer_preset, "PRESET", presetsOf(FX_SHIMMER), "The shimmer preset that was loaded last.");
  S(46, shimmer_decay, "DECAY", "s", Logarithmic, 1, 30, "How long the shimmer rings.");
  SE(47, shimmer_pitch, "PITCH", of(shimmerPitch), "The interval, in semitones, by which the tail climbs.");
  S(48, shimmer_amount, "AMOUNT", "%", Linear, 0, 1, "How much of the tail is shifted in pitch.");
  S(49, shimmer_bloom, "BLOOM", "%", Linear, 0, 1, "How slowly the shimmer opens.");
  S(50, shimmer_tone, "TONE", "%", Linear, 0, 1, "How bright the shifted tail is.");
  S(51, shimmer_mod, "MOD", "%", Linear, 0, 1, "Slow movement inside the shimmer.");
  S(52, shimmer_low_cut, "LOW CUT", "Hz", Logarithmic, 20, 2000, "Keeps the lows out of the shimmer.");
  S(53, shimmer_freeze, "FREEZE", "%", Linear, 0, 1, "Holds the tail for ever and lets nothing new in.");
}

void masterEqRows(Builder& b) {
  static const char* const keys[] = {"master_eq_31",  "master_eq_63", "master_eq_125", "master_eq_250",
                                     "master_eq_500", "master_eq_1k", "master_eq_2k",  "master_eq_4k",
                                     "master_eq_8k",  "master_eq_16k"};
  static const char* const labels[] = {"31", "63", "125", "250", "500", "1K", "2K", "4K", "8K", "16K"};
  b.group("MASTER EQ");
  for (int i = 0; i < 10; i++)
    b.add(u16(46 + i), keys[i], labels[i], ScopeProject, "dB", Linear, -12, 12, none,
          u32(offsetof(Project, master_eq) + sizeof(f32) * size_t(i)), false,
          "Boosts or cuts the whole mix around this band.");
}

void sourceRows(Builder& b) {
  b.group("TRACK");
  TE(214, track_kind, "KIND", of(options::trackKind),
     "Whether the Track plays notes or a kit of eight Pads.");
  b.group("ENGINE", MelodicOnly);
  TE(100, engine, "ENGINE", of(engineNames), "The kind of synthesis that makes the sound.");
  T(101, engine1, "ENGINE 1", "%", Linear, 0, 1, nullptr);
  T(102, engine2, "ENGINE 2", "%", Linear, 0, 1, nullptr);
  T(103, engine3, "ENGINE 3", "%", Linear, 0, 1, nullptr);
  T(104, engine4, "ENGINE 4", "%", Linear, 0, 1, nullptr);
  TE(151, perc_model, "MODEL", of(options::drumModel), "Which drum the PERC engine plays.");
  T(205, osc_b_level, "OSC B", "%", Linear, 0, 1, "The level of the second oscillator.");
  T(210, osc_b_shape, "B SHAPE", "", Linear, -1, 1,
    "The second oscillator's wave; below zero it mirrors the first.");
  TE(213, analog_mode, "MODE", of(analogMode), "Two free oscillators, or a second one synced to the first.");
}

void mixRows(Builder& b) {
  b.group("MIX");
  b.mix(true);
  T(107, mute, "MUTE", "", Integer, 0, 1, "Silences the Track.");
  T(108, solo, "SOLO", "", Integer, 0, 1, "Lets only this and other soloed Tracks sound.");
  T(109, level, "LEVEL", "%", Linear, 0, 1, "The Track's loudness in the mix.");
  T(110, pan, "PAN", "", Linear, -1, 1, "The Track's place between left and right.");
  T(111, send_1, "SEND I", "%", Linear, 0, 1, "How much of the Track feeds Send I.");
  T(112, send_2, "SEND II", "%", Linear, 0, 1, "How much of the Track feeds Send II.");
  b.mix(false);
  T(156, highpass, "LOW CUT", "Hz", Logarithmic, 20, 4000, "Cuts everything below this frequency.");
  T(186, width, "WIDTH", "%", Linear, 0, 2, "Narrows the sound to mono or widens it.");
  T(203, trim, "TRIM", "dB", Linear, -24, 24, "The sound's own level, before the mix.");
  T(204, mono_below, "MONO BELOW", "Hz", Logarithmic, 20, 1000,
    "Makes everything below this frequency mono.");
}

void filterAndAmpRows(Builder& b) {
  b.group("FILTER", MelodicOnly);
  T(114, cutoff, "CUTOFF", "Hz", Logarithmic, 20, 20000, "The frequency from which the filter takes away.");
  T(115, resonance, "RESONANCE", "%", Linear, 0, 1, "How much the filter rings at its cutoff.");
  T(120, filter_env, "ENV AMT", "", Linear, -1, 1, "How far the envelope opens or closes the filter.");
  TE(152, filter_type, "TYPE", of(filterType), "The filter's shape.");
  T(154, filter_drive, "DRIVE", "%", Linear, 0, 1, "Drives the sound into the filter.");
  T(155, key_track, "KEY TRACK", "%", Linear, 0, 1, "Lets the cutoff follow the note.");
  b.group("AMP ENV", MelodicOnly);
  T(116, attack, "ATTACK", "s", Logarithmic, 0.001f, 5, "How long a note takes to reach full level.");
  T(117, decay, "DECAY", "s", Logarithmic, 0.01f, 5, "How fast a note falls to its sustain level.");
  T(118, sustain, "SUSTAIN", "%", Linear, 0, 1, "The level that a held note keeps.");
  T(119, release, "RELEASE", "s", Logarithmic, 0.01f, 8, "How long a note rings after its end.");
}

void lfo1Rows(Builder& b) {
  b.group("LFO 1", MelodicOnly);
  T(121, lfo_rate, "RATE", "Hz", Logarithmic, 0.01f, 30, "How fast LFO 1 moves.");
  T(122, lfo_depth, "DEPTH", "%", Linear, 0, 1, "How far LFO 1 moves its target.");
  TE(161, lfo_shape, "SHAPE", of(lfoShape), "The shape of LFO 1's movement.");
  TE(162, lfo_sync, "SYNC", of(options::sync), "Ties LFO 1 to the tempo; FREE uses RATE.");
  TE(163, lfo_target, "TARGET", of(lfoTarget), "What LFO 1 moves.");
  T(164, lfo_retrigger, "RETRIGGER", "", Integer, 0, 1, "Starts LFO 1 anew with each note.");
  T(206, lfo_phase, "PHASE", "%", Linear, 0, 1, "Where in its cycle LFO 1 starts.");
}

void voiceRows(Builder& b) {
  b.group("VOICE", MelodicOnly);
  TE(126, voice_mode, "MODE", of(voiceMode), "Chords, or one voice that retriggers or glides on.");
  T(128, glide, "GLIDE", "s", Linear, 0, 5, "How long the pitch slides from note to note.");
  T(129, velocity_brightness, "VEL BRIGHT", "%", Linear, 0, 1, "How much softer notes lose their highs.");
  T(140, polyphony, "VOICES", "", Integer, 1, 8, "How many notes can sound at once.");
  T(141, unison, "UNISON", "", Integer, 1, 4, "How many copies play each note.");
  T(142, unison_detune, "DETUNE", "%", Linear, 0, 1, "How far the unison copies are out of tune.");
  T(143, unison_spread, "SPREAD", "%", Linear, 0, 1, "How wide the unison copies stand.");
  T(150, velocity_amp, "VEL AMP", "%", Linear, 0, 1, "How much velocity changes the loudness.");
  TE(201, poly_glide_mode, "GLIDE MODE", of(glideMode),
     "Whether all notes of a chord glide, or only slides.");
  T(211, key_sync, "KEY SYNC", "", Integer, 0, 1,
    "Starts the oscillators anew when a note takes over a voice.");
  b.group("TIMBRE", MelodicOnly);
  TE(127, timbre_target, "TARGET", of(timbreTarget), "Which engine control the timbre envelope moves.");
  T(130, timbre_amount, "AMOUNT", "", Linear, -1, 1, "How far the timbre envelope moves it.");
  T(131, timbre_attack, "ATTACK", "s", Logarithmic, 0.001f, 5, "How long the timbre takes to get there.");
  T(132, timbre_decay, "DECAY", "s", Logarithmic, 0.01f, 5, "How fast the timbre falls back.");
  T(133, timbre_sustain, "SUSTAIN", "%", Linear, 0, 1, "The timbre that a held note keeps.");
  T(134, timbre_release, "RELEASE", "s", Logarithmic, 0.01f, 8,
    "How fast the timbre lets go after the note.");
}

void pitchAndSourceRows(Builder& b) {
  b.group("PITCH", MelodicOnly);
  T(144, transpose, "TRANSPOSE", "st", Integer, -48, 48, "Shifts the sound by semitones.");
  T(145, fine, "FINE", "ct", Linear, -100, 100, "Shifts the sound by hundredths of a semitone.");
  T(146, pitch_env, "PITCH ENV", "st", Linear, -48, 48, "Where the pitch starts from on each note.");
  T(147, pitch_env_time, "TIME", "s", Logarithmic, 0.002f, 4, "How fast the pitch arrives at the note.");
  b.group("SOURCE", MelodicOnly);
  T(148, sub_level, "SUB", "%", Linear, 0, 1, "Adds a sine one octave below.");
  T(149, click, "CLICK", "%", Linear, 0, 1, "Adds a short click to each note's start.");
  T(200, noise_mix, "NOISE", "%", Linear, 0, 1, "Mixes noise into the sound.");
  T(212, osc_level, "OSC", "%", Linear, 0, 1, "The level of the engine itself.");
  b.group("FILTER ENV", MelodicOnly);
  T(153, filter_adsr, "OWN ENV", "", Integer, 0, 1, "Gives the filter an envelope of its own.");
  T(157, filter_attack, "ATTACK", "s", Logarithmic, 0.001f, 5, "How long the filter takes to open.");
  T(158, filter_decay, "DECAY", "s", Logarithmic, 0.01f, 5, "How fast the filter falls to its sustain.");
  T(159, filter_sustain, "SUSTAIN", "%", Linear, 0, 1, "How open a held note keeps the filter.");
  T(160, filter_release, "RELEASE", "s", Logarithmic, 0.01f, 8, "How fast the filter closes after the note.");
}

void lfo2Rows(Builder& b) {
  b.group("LFO 2", MelodicOnly);
  TE(165, lfo2_shape, "SHAPE", of(lfoShape), "The shape of LFO 2's movement.");
  TE(166, lfo2_sync, "SYNC", of(options::sync), "Ties LFO 2 to the tempo; FREE uses RATE.");
  TE(167, lfo2_target, "TARGET", of(lfoTarget), "What LFO 2 moves.");
  T(168, lfo2_retrigger, "RETRIGGER", "", Integer, 0, 1, "Starts LFO 2 anew with each note.");
  T(169, lfo2_rate, "RATE", "Hz", Logarithmic, 0.01f, 30, "How fast LFO 2 moves.");
  T(170, lfo2_depth, "DEPTH", "%", Linear, 0, 1, "How far LFO 2 moves its target.");
  T(171, lfo2_fade, "FADE", "s", Linear, 0, 4, "How long LFO 2 takes to come in on each note.");
  T(207, lfo2_phase, "PHASE", "%", Linear, 0, 1, "Where in its cycle LFO 2 starts.");
}

void insertRows(Builder& b) {
  b.group("INSERT");
  TE(172, insert_drive_type, "TYPE", of(driveType), "The colour of the Track's drive.");
  T(173, insert_drive, "DRIVE", "%", Linear, 0, 1, "Overdrives the Track.");
  T(174, crush_bits, "BITS", "%", Linear, 0, 1, "Coarsens the Track's levels.");
  T(175, crush_rate, "RATE", "%", Linear, 0, 1, "Lowers the Track's sample rate.");
  T(208, lowpass, "HIGH CUT", "Hz", Logarithmic, 200, 20000, "Cuts everything above this frequency.");
  b.group("EQ");
  T(176, eq_low, "LOW", "dB", Linear, -18, 18, "Boosts or cuts the lows.");
  T(177, eq_mid, "MID", "dB", Linear, -18, 18, "Boosts or cuts around MID FREQ.");
  T(178, eq_mid_freq, "MID FREQ", "Hz", Logarithmic, 100, 8000, "The middle of the MID band.");
  T(179, eq_high, "HIGH", "dB", Linear, -18, 18, "Boosts or cuts the highs.");
  b.group("MOD FX");
  TE(180, mod_type, "TYPE", of(modType), "The Track's modulation effect.");
  T(181, mod_rate, "RATE", "Hz", Logarithmic, 0.02f, 10, "How fast the effect moves.");
  T(182, mod_depth, "DEPTH", "%", Linear, 0, 1, "How far the effect moves.");
  T(183, mod_feedback, "FEEDBACK", "", Linear, -0.95f, 0.95f,
    "Feeds the effect back into itself; for VINYL, dust.");
  T(184, mod_mix, "MIX", "%", Linear, 0, 1, "How much of the effect is heard.");
  T(185, mod_tone, "TONE", "%", Linear, 0, 1, "The effect's brightness.");
  TE(202, mod_sync, "SYNC", of(options::sync), "Ties the effect to the tempo; FREE uses RATE.");
  T(209, mod_side, "SIDE ONLY", "", Integer, 0, 1, "Adds only the effect's width, and keeps the middle dry.");
  b.group("ROOM");
  T(235, room_size, "SIZE", "%", Linear, 0, 1, "How large the Track's room is.");
  T(236, room_decay, "DECAY", "s", Logarithmic, 0.1f, 2, "How long the room rings.");
  T(237, room_damp, "DAMP", "%", Linear, 0, 1, "How fast the room swallows the highs.");
  T(238, room_mix, "MIX", "%", Linear, 0, 1, "How much of the room is heard.");
}

void visualDuckAndSampleRows(Builder& b) {
  b.group("VISUAL", MelodicOnly);
  TE(239, visual, "SCENE", of(visuals), "The picture that plays along on the screen.");
  b.group("DUCK");
  b.mix(true);
  T(187, duck_amount, "AMOUNT", "%", Linear, 0, 1, "How far the source pushes this Track down.");
  T(188, duck_release, "RELEASE", "s", Logarithmic, 0.02f, 1.5f, "How fast the Track comes back.");
  TE(189, duck_source, "SOURCE", duckSources(), "The Track or Pad whose hits push this Track down.");
  b.group("DRAWBARS", MelodicOnly);
  T(190, drawbar_custom, "CUSTOM", "", Integer, 0, 1, "Uses the eight bars instead of TYPE and BASS.");
  T(191, drawbar_1, "16'", "%", Linear, 0, 1, "The 16' bar: an octave below.");
  T(192, drawbar_2, "8'", "%", Linear, 0, 1, "The 8' bar: the note itself.");
  T(193, drawbar_3, "5 1/3'", "%", Linear, 0, 1, "The 5 1/3' bar: a fifth above.");
  T(194, drawbar_4, "4'", "%", Linear, 0, 1, "The 4' bar: an octave above.");
  T(195, drawbar_5, "2 2/3'", "%", Linear, 0, 1, "The 2 2/3' bar: an octave and a fifth above.");
  T(196, drawbar_6, "2'", "%", Linear, 0, 1, "The 2' bar: two octaves above.");
  T(197, drawbar_7, "1 3/5'", "%", Linear, 0, 1, "The 1 3/5' bar: two octaves and a third above.");
  T(198, drawbar_8, "1 1/3'", "%", Linear, 0, 1, "The 1 1/3' bar: two octaves and a fifth above.");
  b.group("SAMPLE", MelodicOnly);
  TE(215, sample_mode, "MODE", of(sampleMode), "Plays the Sample through, or loops it while a key is held.");
  T(216, sample_root, "ROOT", "note", Integer, 0, 127,
    "The note at which the Sample plays at its own pitch.");
  T(217, sample_tune, "TUNE", "ct", Linear, -100, 100, "Tunes the Sample in hundredths of a semitone.");
  T(234, sample_speed, "SPEED", "×", Logarithmic, 0.25f, 4, "How fast the Sample runs, its pitch with it.");
  T(218, sample_lofi, "LO-FI", "%", Linear, 0, 1, "Coarsens the Sample as an old machine would.");
}

void padRows(Builder& b) {
  b.group("PAD", DrumsOnly);
  D(300, pad_pitch, "PITCH", "st", Linear, -24, 24, "Tunes the drum.");
  D(301, pad_decay, "DECAY", "%", Linear, 0, 1, "How long the drum rings.");
  D(302, pad_tone, "TONE", "%", Linear, 0, 1, "The drum's brightness.");
  D(303, pad_level, "LEVEL", "%", Linear, 0, 1, "The drum's loudness in the kit.");
  DE(304, pad_model, "MODEL", of(options::drumModel), "Which drum the Pad plays.");
  DE(305, pad_choke, "CHOKE", of(choke), "Pads of one group cut each other off.");
  D(306, pad_sweep, "SWEEP", "%", Linear, 0, 1, "How far the pitch falls on a hit.");
  D(307, pad_snap, "SNAP", "%", Linear, 0, 1, "The sharpness of the attack.");
  D(308, pad_drive, "DRIVE", "%", Linear, 0, 1, "Saturates the drum.");
  D(309, pad_pan, "PAN", "", Linear, -1, 1, "The drum's place between left and right.");
  D(310, pad_sweep_time, "SWEEP TIME", "", Linear, -1, 1, "How fast the pitch falls.");
  D(311, pad_gate, "GATE RELEASE", "s", Linear, 0, 2, "Ends the hit after this time; 0 lets it ring out.");
  D(312, pad_note, "NOTE", "", Integer, -1, 127, "Tunes the drum to a note; -1 keeps its own pitch.");
  D(313, pad_highpass, "LOW CUT", "Hz", Logarithmic, 20, 4000, "Cuts the drum below this frequency.");
  D(314, pad_tail_drift, "TAIL DRIFT", "st", Linear, -12, 12, "Where the pitch of the tail moves to.");
  D(315, pad_tail_time, "TAIL TIME", "s", Logarithmic, 0.05f, 2, "How slowly the tail's pitch moves.");
  D(316, pad_hold, "HOLD", "s", Linear, 0, 0.1f, "Keeps the drum at full level before it decays.");
  D(317, pad_sweep_hold, "SWEEP HOLD", "s", Linear, 0, 0.05f, "Keeps the pitch up before it falls.");
  D(318, pad_lowpass, "HIGH CUT", "Hz", Logarithmic, 200, 20000, "Cuts the drum above this frequency.");
  D(319, pad_drop, "DROP", "%", Linear, 0, 1, "A late fall in pitch.");
  D(320, pad_drop_time, "DROP TIME", "s", Logarithmic, 0.05f, 2, "When the late fall begins.");
}

}  // namespace

std::vector<Info> tableRows() {
  Builder b;
  b.rows.reserve(264);
  transportAndMaster(b);
  sendTypes(b);
  using Rows = void (*)(Builder&, int bus);
  struct Kind {
    const char* group;
    Rows rows;
  };
  for (const Kind& kind :
       {Kind{"DELAY", delayRows}, Kind{"HALL", hallRows}, Kind{"CHORUS", chorusRows},
        Kind{"TAPE ECHO", tapeRows}, Kind{"PLATE", plateRows}, Kind{"SHIMMER", shimmerRows}}) {
    b.group(kind.group);
    kind.rows(b, SendI);
    kind.rows(b, SendII);
  }
  masterEqRows(b);
  sourceRows(b);
  mixRows(b);
  filterAndAmpRows(b);
  lfo1Rows(b);
  voiceRows(b);
  pitchAndSourceRows(b);
  lfo2Rows(b);
  insertRows(b);
  visualDuckAndSampleRows(b);
  padRows(b);
  return std::move(b.rows);
}

}  // namespace synth::param
