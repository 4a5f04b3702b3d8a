#include "core/model/Defaults.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/Names.h"
#include "core/model/Clips.h"
#include "core/model/Tracks.h"
#include "core/params/Options.h"
#include "core/params/Registry.h"
#include "core/params/Targets.h"
#include "core/sounds/Factory.h"

namespace synth {
namespace {

struct Starter {
  const char* preset;  // null for the plain kit
  f32 level, pan, send1, send2;
};

constexpr Starter starters[limits::tracks] = {
    {nullptr, 0.7f, 0, 0, 0.04f},
    {"BEDROCK", 0.3f, 0, 0.12f, 0.03f},
    {"PAPER KEYS", 0.5f, -0.1f, 0.08f, 0.15f},
    {"GLASS", 0.45f, 0.12f, 0.15f, 0.2f},
    {"AFTERGLOW", 0.45f, 0, 0.05f, 0.3f},
    {"STRING MACHINE", 0.45f, 0.1f, 0, 0.3f},
    {"VOWEL LEAD", 0.45f, 0, 0.2f, 0.15f},
    {"SHIMMER PAD", 0.4f, -0.15f, 0.1f, 0.35f},
    {"ASH", 0.45f, 0.15f, 0.1f, 0.2f},
    {"NEON", 0.45f, -0.2f, 0.1f, 0.2f},
    {"CHROME", 0.45f, 0.2f, 0.1f, 0.2f},
    {"REED", 0.45f, 0, 0.1f, 0.2f},
    {"DRIFT", 0.45f, -0.25f, 0.1f, 0.2f},
    {"ORBIT", 0.45f, 0.25f, 0.1f, 0.2f},
    {"SWARM CLOUD", 0.45f, -0.1f, 0.1f, 0.2f},
    {"TINE EP", 0.45f, 0.1f, 0.1f, 0.2f},
};

Track makeStarter(int slot) {
  const Starter& starter = starters[slot];
  Track track = defaultTrack(slot == 0 ? DRUMS : MELODIC);
  if (starter.preset) preset::applyFactory(track, starter.preset);
  track.level = starter.level;
  track.pan = starter.pan;
  track.send_1 = starter.send1;
  track.send_2 = starter.send2;
  track.origin = u8(slot);
  setName(track.name, starterTrackName(slot));
  return track;
}

constexpr u8 trackCountOfNewProject = 4;

}  // namespace

ProjectPtr makeBlank() {
  auto project = makeProject();
  clearArrangement(*project);
  project->track_count = limits::tracks;
  return project;
}

ProjectPtr makeProject() {
  auto project = newProject();
  for (int i = 0; i < limits::tracks; i++) project->tracks[i] = starterTrack(i);
  project->track_count = trackCountOfNewProject;
  for (int i = 0; i < trackCountOfNewProject; i++) addLoop(*project, i, 16, 0, 0);
  return project;
}

Track defaultTrack(TrackKind kind) {
  Track track;
  track.track_kind = kind;
  return track;
}

const Track& starterTrack(int slot) {
  static const auto* const tracks = [] {
    auto* made = new std::array<Track, limits::tracks>;
    for (int i = 0; i < limits::tracks; i++) (*made)[size_t(i)] = makeStarter(i);
    return made;
  }();
  return (*tracks)[size_t(std::clamp(slot, 0, limits::tracks - 1))];
}

Track originTrack(const Track& track) {
  return track.origin < limits::tracks ? starterTrack(track.origin)
                                       : defaultTrack(TrackKind(track.track_kind));
}

void setSynthKind(Track& track, int kind) {
  if (kind < 0 || kind > SAMPLER) return;
  track.engine = u8(kind);
  track.engine1 = track.engine2 = track.engine3 = track.engine4 = 0.5f;
  std::memset(track.preset_name, 0, sizeof track.preset_name);
  track.pins = PinList{};
  for (MacroRec& macro : track.macros) macro = MacroRec{};
  track.macroCount = 0;
}

void assignSample(Track& track, const u8 (&hash)[32], std::string_view name, int root, f32 tune) {
  std::memcpy(track.sample_hash, hash, sizeof hash);
  setName(track.sample_name, name);
  track.sample_root = u8(std::clamp(root, 0, 127));
  track.sample_tune = std::isfinite(tune) ? std::clamp(tune, -100.0f, 100.0f) : 0;
}

void clearSample(Track& track) {
  std::memset(track.sample_hash, 0, sizeof track.sample_hash);
  std::memset(track.sample_name, 0, sizeof track.sample_name);
  track.sample_root = 0;
  track.sample_tune = 0;
}

void applyLfoQuick(Track& track, int lfo, LfoQuick quick) {
  struct Movement {
    u8 shape, target;
    f32 rate, depth;
  };
  constexpr u8 sine = 0, triangle = 1, smooth = 6, cutoff = 0, pitch = 1, amp = 2;
  constexpr Movement movements[] = {{sine, amp, 5, 0.5f},
                                    {sine, pitch, 5.5f, 0.2f},
                                    {triangle, cutoff, 2, 0.6f},
                                    {smooth, pitch, 0.3f, 0.1f}};
  if (quick > LfoQuick::Drift) return;
  const Movement& m = movements[int(quick)];
  (lfo ? track.lfo2_shape : track.lfo_shape) = m.shape;
  (lfo ? track.lfo2_target : track.lfo_target) = m.target;
  (lfo ? track.lfo2_sync : track.lfo_sync) = 0;
  (lfo ? track.lfo2_rate : track.lfo_rate) = m.rate;
  (lfo ? track.lfo2_depth : track.lfo_depth) = m.depth;
}

std::string freeTrackName(const Project& project, std::string_view wanted) {
  auto used = [&](std::string_view name) {
    for (int t = 0; t < project.track_count; t++)
      if (nameText(project.tracks[t].name) == name) return true;
    return false;
  };
  char cleaned[16];
  setName(cleaned, wanted);
  const std::string base(nameText(cleaned));
  if (!used(base)) return base;
  for (int n = 2;; n++) {
    const std::string number = " " + std::to_string(n);
    std::string name = base.substr(0, limits::shortName - number.size());
    while (!name.empty() && name.back() == ' ') name.pop_back();
    if (!used(name + number)) return name.empty() ? number.substr(1) : name + number;
  }
}

int inferTrackCount(const Project& project) {
  for (int t = limits::tracks - 1; t > 0; t--)
    if (trackHasContent(project, t) || !sameBytes(project.tracks[t], starterTrack(t))) return t + 1;
  return 1;
}

std::string sendName(const Project& project, int bus) { return automation::busName(project, bus); }

const char* padName(const Track& track, int pad) {
  const int model = track.pad_model[std::clamp(pad, 0, limits::pads - 1)];
  return param::options::drumModel[model < param::options::drumModels ? model : 0];
}

}  // namespace synth
