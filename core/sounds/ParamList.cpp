#include "core/sounds/ParamList.h"

#include <algorithm>

#include "base/Text.h"
#include "core/Names.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/params/Targets.h"
#include "core/sounds/MacroTravel.h"
#include "core/sounds/Macros.h"

namespace synth::paramlist {
namespace {

struct Title {
  const char *prefix, *title;
};

// Groups that the list divides further than the registry, by how a key begins.
constexpr Title titles[] = {
    {"pad_sweep", "PAD SWEEP"},
    {"pad_tail", "PAD TONE"},
    {"pad_drop", "PAD TONE"},
    {"pad_gate", "PAD GATE"},
    {"pad_hold", "PAD GATE"},
    {"pad_level", "PAD MIX"},
    {"pad_pan", "PAD MIX"},
    {"pad_choke", "PAD MIX"},
    {"pad_", "PAD TONE"},
    {"send_", "SEND"},
    {"duck_", "DUCK"},
    {"room_", "ROOM"},
    {"mod_", "MOD FX"},
    {"lfo2_", "LFO 2"},
    {"lfo_", "LFO 1"},
    {"drawbar_", "DRAWBARS"},
    {"sample_", "SAMPLE"},
    {"timbre_", "TIMBRE"},
    {"velocity_", "VELOCITY"},
    {"insert_drive", "DRIVE"},
    {"crush_", "DRIVE"},
    {"width", "STEREO/OUT"},
    {"mono_below", "STEREO/OUT"},
    {"trim", "STEREO/OUT"},
};

std::string titleOf(const param::Info& info) {
  const std::string_view key = info.key;
  for (const Title& t : titles)
    if (key.substr(0, std::string_view(t.prefix).size()) == t.prefix) return t.title;
  return info.group;
}

// Words that people type for a key that has another name.
struct Synonym {
  const char *key, *words;
};
constexpr Synonym synonyms[] = {
    {"glide", "portamento slide"},
    {"cutoff", "filter frequency brightness"},
    {"resonance", "q peak emphasis"},
    {"highpass", "hpf low cut bass cut"},
    {"lowpass", "lpf high cut treble cut"},
    {"level", "volume gain loudness"},
    {"trim", "gain volume"},
    {"pan", "balance position"},
    {"polyphony", "voices chords"},
    {"unison", "voices stack supersaw"},
    {"insert_drive", "distortion overdrive saturation"},
    {"filter_drive", "distortion saturation"},
    {"crush_bits", "bitcrusher lofi"},
    {"crush_rate", "downsample lofi"},
    {"duck_amount", "sidechain pump"},
    {"duck_source", "sidechain trigger"},
    {"duck_release", "sidechain"},
    {"lfo_depth", "vibrato tremolo wobble"},
    {"lfo2_depth", "vibrato tremolo wobble"},
    {"room_mix", "reverb ambience"},
    {"room_size", "reverb"},
    {"room_decay", "reverb tail"},
    {"send_1", "effect echo reverb"},
    {"send_2", "effect echo reverb"},
    {"mod_type", "chorus ensemble flanger phaser vinyl"},
    {"sub_level", "bass octave"},
    {"noise_mix", "hiss air breath"},
    {"transpose", "octave semitones pitch"},
    {"fine", "detune cents tune"},
    {"width", "stereo mono"},
    {"mono_below", "bass mono"},
    {"sustain", "hold"},
    {"pad_choke", "mute group hihat"},
    {"pad_pitch", "tune tuning"},
    {"pad_snap", "attack click transient"},
    {"comp_amount", "compressor glue"},
    {"limiter_ceiling", "maximizer"},
    {"saturation", "warmth tape distortion"},
};

Row rowOf(const param::Info& info) { return {info.key, info.label, titleOf(info), &info, -1}; }

}  // namespace

std::vector<Row> rows(const Project& p, int track) {
  std::vector<Row> list;
  if (track < 0 || track >= limits::tracks) return list;
  const Track& t = p.tracks[track];
  for (int m = 0; m < t.macroCount; m++) {
    const std::string name(nameText(t.macros[m].name));
    list.push_back({name, name, "MACROS", nullptr, m});
  }
  for (const param::Info& info : param::all())
    if (listed(&info, t.track_kind, t.engine)) list.push_back(rowOf(info));
  // The Engine's four are called what they do there.
  for (Row& row : list)
    if (const int target = row.info ? automation::targetOf(*row.info) : -1;
        target >= automation::ENGINE_1 && target <= automation::ENGINE_4)
      row.label = automation::targetLabel(p, track, target);
  // One title's rows stand together, in the order in which the titles first come.
  std::vector<std::string> order;
  for (const Row& row : list)
    if (std::find(order.begin(), order.end(), row.group) == order.end()) order.push_back(row.group);
  auto place = [&](const Row& row) {
    return std::find(order.begin(), order.end(), row.group) - order.begin();
  };
  std::stable_sort(list.begin(), list.end(), [&](const Row& a, const Row& b) { return place(a) < place(b); });
  return list;
}

std::vector<Row> busRows(const Project& p, int bus) {
  std::vector<Row> list;
  for (const param::Info& info : param::all())
    if (info.scope == param::ScopeProject && automation::busHolds(p, bus, info)) list.push_back(rowOf(info));
  return list;
}

namespace {

// Letters and digits in lower case, everything between them one blank: "lfo_rate" is "LFO RATE".
std::string plain(std::string_view text) {
  std::string out;
  for (const char c : text::lower(text)) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || (c & 0x80);
    if (letter)
      out += c;
    else if (!out.empty() && out.back() != ' ')
      out += ' ';
  }
  if (!out.empty() && out.back() == ' ') out.pop_back();
  return out;
}

}  // namespace

search::Match match(const Row& row, std::string_view query) {
  std::string text = row.key + " " + row.label + " " + row.group;
  search::Match best = search::match(query, text);
  for (const Synonym& s : synonyms)
    if (row.key == s.key) best = search::better(best, search::match(query, text + " " + s.words));
  if (best.rank != search::Match::Exact) return best;
  // An exact row hides the others: "cut" is a word of LOW CUT, but may still become "cutoff".
  const std::string whole = plain(query);
  if (!whole.empty() && whole != plain(row.key) && whole != plain(row.label))
    best.rank = search::Match::WordStart;
  return best;
}

// ---- What does nothing at the moment.

namespace {

bool begins(std::string_view key, std::string_view prefix) { return key.substr(0, prefix.size()) == prefix; }

// Whether a Lane or some Note's Lock moves the target.
bool drivenItself(const Project& p, int track, int target) {
  for (int s = 0; s < limits::lanesPerOwner; s++) {
    const LaneRow& lane = p.lanes[laneRow(track, s)];
    if (lane.enabled && lane.count && lane.target == target + 1) return true;
  }
  for (int i = 0; i < p.noteCount; i++) {
    if (p.notes[i].track != track) continue;
    for (const LockRec& lock : p.notes[i].locks)
      if (lock.target == target + 1) return true;
  }
  return false;
}

// The same for the target or a Macro that moves it.
bool driven(const Project& p, int track, int target) {
  if (drivenItself(p, track, target)) return true;
  const param::Info* info = automation::targetInfo(target);
  const Track& t = p.tracks[track];
  for (int m = 0; info && m < t.macroCount; m++)
    for (int i = 0; i < t.macros[m].targetCount; i++)
      if (t.macros[m].targets[i].param == info->id &&
          drivenItself(p, track, automation::firstMacroTarget + m))
        return true;
  return false;
}

// A Track as it plays: with what its Macros make of their targets.
Track moved(const Project& p, int track) {
  Track t = p.tracks[track];
  for (int m = 0; m < t.macroCount; m++)
    for (int i = 0; i < t.macros[m].targetCount; i++) {
      const MacroTarget& target = t.macros[m].targets[i];
      if (const param::Info* info = param::find(target.param))
        info->set(macros::resulting(p, track, *info, target.pad), t, target.pad);
    }
  return t;
}

Inactive of(const char* key, const char* badge) { return {key, badge}; }

Inactive engineInactive(const Track& t, std::string_view key) {
  const bool bars = begins(key, "drawbar_") && key != "drawbar_custom";
  switch (t.engine) {
    case SAMPLER:
      if (key == "engine2" && t.sample_mode == 0) return of("sample_mode", "ONE-SHOT");
      break;
    case ORGAN:
      if (t.drawbar_custom && (key == "engine1" || key == "engine2")) return of("drawbar_custom", "BARS");
      if (!t.drawbar_custom && bars) return of("drawbar_custom", "TYPE");
      break;
    case ANALOG: {
      // The second oscillator's rows; in SYNC mode the ratio is the first one's.
      const bool second =
          key == "osc_b_shape" || key == "engine3" || (key == "engine2" && t.analog_mode == 0);
      if (second && t.osc_b_level <= 0) return of("osc_b_level", "OSC B OFF");
      break;
    }
    default: break;
  }
  return {};
}

Inactive lfoInactive(const Project& p, int track, const Track& t, std::string_view key) {
  const bool second = begins(key, "lfo2_");
  if (!second && !begins(key, "lfo_")) return {};
  const std::string_view rest = key.substr(second ? 5 : 4);
  const f32 depth = second ? t.lfo2_depth : t.lfo_depth;
  const int depthTarget = second ? automation::LFO2_DEPTH : automation::LFO_DEPTH;
  if (rest != "depth" && depth <= 0 && !driven(p, track, depthTarget))
    return of(second ? "lfo2_depth" : "lfo_depth", "NO DEPTH");
  const bool synced = second ? t.lfo2_sync : t.lfo_sync;
  if (rest == "rate" && synced && !driven(p, track, second ? automation::LFO2_RATE : automation::LFO_RATE))
    return of(second ? "lfo2_sync" : "lfo_sync", "SYNCED");
  return {};
}

Inactive voiceInactive(const Track& t, std::string_view key) {
  if (begins(key, "timbre_") && key != "timbre_amount" && t.timbre_amount == 0)
    return of("timbre_amount", "NO TIMBRE");
  if ((key == "unison_detune" || key == "unison_spread") && t.unison < 2) return of("unison", "1 VOICE");
  if (key == "pitch_env_time" && t.pitch_env == 0) return of("pitch_env", "NO P.ENV");
  if (key == "glide" && t.voice_mode == 0) return of("voice_mode", "POLY");
  if (key == "poly_glide_mode" && t.glide <= 0) return of("glide", "NO GLIDE");
  const bool filterEnv =
      begins(key, "filter_") && (begins(key, "filter_attack") || begins(key, "filter_decay") ||
                                 begins(key, "filter_sustain") || begins(key, "filter_release"));
  if (filterEnv && !t.filter_adsr) return of("filter_adsr", "AUTO");
  return {};
}

Inactive chainInactive(const Project& p, int track, const Track& t, std::string_view key) {
  if (key == "eq_mid_freq" && t.eq_mid == 0 && !driven(p, track, automation::EQ_MID))
    return of("eq_mid", "NO MID");
  if (begins(key, "mod_") && key != "mod_type") {
    if (t.mod_type == 0) return of("mod_type", "OFF");
    if (key != "mod_mix" && t.mod_mix <= 0 && !driven(p, track, automation::MOD_MIX))
      return of("mod_mix", "NO MIX");
    if (key == "mod_rate" && t.mod_sync) return of("mod_sync", "SYNCED");
  }
  if (begins(key, "room_") && key != "room_mix" && t.room_mix <= 0 && !driven(p, track, automation::ROOM_MIX))
    return of("room_mix", "NO MIX");
  if (key == "insert_drive_type" && t.insert_drive <= 0 && !driven(p, track, automation::DRIVE))
    return of("insert_drive", "NO DRIVE");
  if ((key == "duck_release" || key == "duck_source") && t.duck_amount <= 0 &&
      !driven(p, track, automation::DUCK_AMOUNT))
    return of("duck_amount", "NO DUCK");
  return {};
}

Inactive padInactive(const Track& t, std::string_view key, int pad) {
  if (pad < 0 || pad >= limits::pads) return {};
  if (key == "pad_tail_time" && t.pad_tail_drift[pad] == 0) return of("pad_tail_drift", "NO DRIFT");
  if (key == "pad_drop_time" && t.pad_drop[pad] <= 0) return of("pad_drop", "NO DROP");
  return {};
}

}  // namespace

Inactive inactive(const Project& p, int track, int code, int pad) {
  if (track < 0 || track >= limits::tracks) return {};
  const int macro = code - limits::firstMacroPin;
  if (const Track& t = p.tracks[track]; macro >= 0)
    return macro < t.macroCount && t.macros[macro].targetCount == 0
               ? Inactive{macros::name(t, macro), "NO TARGETS"}
               : Inactive{};
  const param::Info* info = param::find(u16(code));
  if (!info) return {};
  const std::string_view key = info->key;
  const Track t = moved(p, track);
  if (info->scope == param::ScopePad) return padInactive(t, key, pad);
  if (!isDrums(t)) {
    for (const Inactive& why : {engineInactive(t, key), lfoInactive(p, track, t, key), voiceInactive(t, key)})
      if (why) return why;
  }
  return chainInactive(p, track, t, key);
}

Inactive busInactive(const Project& p, int bus, int code) {
  const param::Info* info = param::find(u16(code));
  if (!info || (bus != SendI && bus != SendII)) return {};
  const std::string prefix = bus == SendI ? "fx1_" : "fx2_";
  const SendFx& fx = sendFx(p, bus);
  if (prefix + "delay_time" == info->key && fx.delay_sync) return {prefix + "delay_sync", "SYNCED"};
  if (prefix + "tape_rate" == info->key && fx.tape_sync) return {prefix + "tape_sync", "SYNCED"};
  return {};
}

std::string inactiveTip(const Project& p, int track, int code, const Inactive& why) {
  if (!why) return "";
  if (code >= limits::firstMacroPin) return "Moves nothing yet: it has no targets";
  const param::Info* info = param::find(why.key);
  if (!info) return "Does nothing while " + why.badge;
  const bool ofTrack = info->scope == param::ScopeTrack && track >= 0 && track < limits::tracks;
  if (info->scope == param::ScopePad) return "Does nothing while " + std::string(info->label) + " is 0";
  const f32 value = ofTrack ? info->get(p.tracks[track]) : info->get(p);
  return "Does nothing while " + titleOf(*info) + " " + info->label + " is " +
         param::formatted(*info, value, &p, ofTrack ? track : 255);
}

}  // namespace synth::paramlist
