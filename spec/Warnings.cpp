#include "spec/Warnings.h"

#include <algorithm>
#include <set>

#include "base/Text.h"
#include "core/Names.h"
#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "core/model/Tracks.h"
#include "core/params/Targets.h"
#include "engine/kinds/Kind.h"
#include "spec/Arrangement.h"

namespace synth::spec {
namespace {

constexpr size_t mostListed = 6;

using Warnings = std::vector<std::string>;

std::string trackText(const Project& p, int t) {
  return "Track " + std::to_string(t) + " (" + std::string(nameText(p.tracks[t].name)) + ")";
}

std::string listed(std::vector<std::string> items) {
  const size_t more = items.size() > mostListed ? items.size() - mostListed : 0;
  items.resize(items.size() - more);
  std::string out = text::joined(items, ", ");
  return more ? out + " (+" + std::to_string(more) + " more)" : out;
}

bool hasNotes(const Project& p, int t) {
  for (int i = 0; i < p.noteCount; i++)
    if (p.notes[i].track == t) return true;
  return false;
}

void chokeGroups(const Project& p, int t, Warnings& out) {
  const Track& track = p.tracks[t];
  for (int a = 0; a < limits::pads; a++)
    for (int b = a + 1; b < limits::pads; b++) {
      if (!track.pad_choke[a] || track.pad_choke[a] != track.pad_choke[b]) continue;
      bool playsA = false, playsB = false;
      for (int i = 0; i < p.noteCount; i++)
        if (p.notes[i].track == t) {
          playsA |= p.notes[i].pitch == a;
          playsB |= p.notes[i].pitch == b;
        }
      const std::string name = std::string(padName(track, a));
      // A closed hat that cuts the open one off is what choke groups are for.
      const bool hats =
          name.find("HAT") != name.npos && std::string(padName(track, b)).find("HAT") != std::string::npos;
      if (!playsA || !playsB || hats) continue;
      out.push_back(trackText(p, t) + ": Pads " + std::to_string(a) + " (" + padName(track, a) + ") and " +
                    std::to_string(b) + " (" + padName(track, b) + ") share choke group " +
                    std::to_string(track.pad_choke[a]) +
                    " and cut each other off; set pad_choke to NONE unless " + "that is intended");
    }
}

void patterns(const Project& p, Warnings& out) {
  std::vector<std::string> empty, late;
  for (int i = 0; i < p.patternCount; i++) {
    const PatternRec& r = p.patterns[i];
    if (r.isFront) continue;
    const std::string name = std::to_string(r.id) + " of " + trackText(p, r.track);
    if (patternNotes(p, r.track, r.id).empty()) empty.push_back(name);
    if (patternExtent(p, r.track, r.id) > r.length) late.push_back(name);
  }
  if (!empty.empty()) out.push_back("Patterns without Notes: " + listed(empty));
  if (!late.empty())
    out.push_back("Patterns with Notes past their length, which do not play: " + listed(late));
}

void chords(const Project& p, int t, Warnings& out) {
  const Track& track = p.tracks[t];
  if (isDrums(track)) return;
  const bool mono = track.voice_mode == 1 || track.voice_mode == 2;
  int most = 0;
  for (int i = 0; i < p.noteCount;) {
    int k = i;
    while (k < p.noteCount && p.notes[k].track == p.notes[i].track &&
           p.notes[k].pattern == p.notes[i].pattern && p.notes[k].step == p.notes[i].step)
      k++;
    if (p.notes[i].track == t) most = std::max(most, k - i);
    i = k;
  }
  if (mono && most > 1)
    out.push_back(trackText(p, t) + " plays one voice, but up to " + std::to_string(most) +
                  " notes start together; only the lowest sounds");
  else if (most > track.polyphony)
    out.push_back(trackText(p, t) + " starts up to " + std::to_string(most) +
                  " notes together, but its polyphony is " + std::to_string(track.polyphony));
}

// Whether a Lane or a Lock gives the Track a level of its own.
bool levelMoves(const Project& p, int t) {
  for (int row = laneRow(t, 0); row < laneRow(t, 0) + limits::lanesPerOwner; row++)
    if (p.lanes[row].enabled && p.lanes[row].count && p.lanes[row].target == automation::LEVEL + 1)
      return true;
  for (int i = 0; i < p.noteCount; i++)
    for (const LockRec& lock : p.notes[i].locks)
      if (p.notes[i].track == t && lock.target == automation::LEVEL + 1) return true;
  return false;
}

void levels(const Project& p, Warnings& out) {
  std::vector<std::string> unheard, solo, muted;
  bool anySolo = false;
  for (int t = 0; t < p.track_count; t++) anySolo |= p.tracks[t].solo != 0;
  for (int t = 0; t < p.track_count; t++) {
    const Track& track = p.tracks[t];
    if (!hasNotes(p, t)) continue;
    if (track.mute || (track.level == 0 && !levelMoves(p, t))) muted.push_back(trackText(p, t));
    if (anySolo && !track.solo) solo.push_back(trackText(p, t));
  }
  for (int t = p.track_count; t < limits::tracks; t++)
    if (trackHasContent(p, t)) unheard.push_back(trackText(p, t));
  if (!unheard.empty()) out.push_back("Past track_count, so not heard: " + listed(unheard));
  if (!muted.empty()) out.push_back("Muted or at level 0, with Notes: " + listed(muted));
  if (!solo.empty()) out.push_back("Silent because other Tracks are soloed: " + listed(solo));
}

void sends(const Project& p, int t, Warnings& out) {
  const f32 amounts[] = {p.tracks[t].send_1, p.tracks[t].send_2};
  for (int bus : {SendI, SendII})
    if (hasNotes(p, t) && amounts[bus] > 0 && sendFx(p, bus).type == FX_OFF)
      out.push_back(trackText(p, t) + " feeds Send " + busKey(bus) + ", whose effect is OFF");
}

void macroLane(const Project& p, int t, int target, const std::string& name, Warnings& out) {
  if (target - automation::firstMacroTarget >= p.tracks[t].macroCount)
    out.push_back(name + " moves " + automation::targetName(target) + ", which the sound does not have");
}

void lanes(const Project& p, Warnings& out) {
  for (int r = 0; r < limits::lanes; r++) {
    const LaneRow& lane = p.lanes[r];
    const int owner = r / limits::lanesPerOwner;
    const bool master = r >= limits::firstMasterLane, track = owner < limits::tracks;
    const std::string name =
        master  ? "Master lane " + std::to_string(r - limits::firstMasterLane)
        : track ? "Lane " + std::to_string(r % 8) + " of " + trackText(p, owner)
                : "Lane " + std::to_string(r % 8) + " of bus " + busKey(owner - limits::tracks);
    if (lane.target && !lane.count) out.push_back(name + " has a target but no points");
    if (!lane.enabled && lane.count) out.push_back(name + " is drawn but off");
    if (!lane.target || !lane.count || !lane.enabled) continue;
    const int first = master ? limits::firstMasterLane : owner * limits::lanesPerOwner;
    for (int k = first; k < r; k++)
      if (p.lanes[k].enabled && p.lanes[k].count && p.lanes[k].target == lane.target) {
        out.push_back(name + " has the target of an earlier lane, which plays instead");
        break;
      }
    if (track && automation::isMacroTarget(lane.target - 1)) macroLane(p, owner, lane.target - 1, name, out);
    if (track && !automation::laneable(lane.target - 1, isDrums(p.tracks[owner])))
      out.push_back(name + " moves " + automation::targetName(lane.target - 1) +
                    ", which a Drums track does not use");
    if (!master && !track &&
        !automation::busHolds(p, owner - limits::tracks, *automation::targetInfo(lane.target - 1)))
      out.push_back(name + " moves " + automation::targetName(lane.target - 1) +
                    ", which the loaded effect does not have");
  }
}

void ducking(const Project& p, int t, Warnings& out) {
  const Track& track = p.tracks[t];
  if (!(track.duck_amount > 0)) return;
  const int source = track.duck_source / 9, pad = track.duck_source % 9 - 1;
  for (int i = 0; i < p.noteCount; i++)
    if (p.notes[i].track == source && (pad < 0 || p.notes[i].pitch == pad)) return;
  out.push_back(trackText(p, t) + " ducks under " + duckSourceName(p, track.duck_source) +
                ", which has no Notes");
}

void idleMacros(const Project& p, int t, Warnings& out) {
  std::vector<std::string> idle;
  for (int m = 0; m < p.tracks[t].macroCount; m++)
    if (!p.tracks[t].macros[m].targetCount) idle.emplace_back(nameText(p.tracks[t].macros[m].name));
  if (!idle.empty()) out.push_back(trackText(p, t) + " has Macros that move nothing: " + listed(idle));
}

void silentEngine(const Project& p, int t, Warnings& out) {
  const Track& track = p.tracks[t];
  if (!isDrums(track) && hasNotes(p, t) && !kinds::rendererOf(track.engine))
    out.push_back(trackText(p, t) + " has an engine that makes no sound in this version");
}

}  // namespace

std::vector<std::string> warningsOf(const Project& p) {
  Warnings out;
  patterns(p, out);
  levels(p, out);
  for (int t = 0; t < p.track_count; t++) {
    if (isDrums(p.tracks[t])) chokeGroups(p, t, out);
    chords(p, t, out);
    sends(p, t, out);
    ducking(p, t, out);
    idleMacros(p, t, out);
    silentEngine(p, t, out);
  }
  lanes(p, out);
  for (int i = 0; i < p.markerCount; i++)
    if (p.markers[i].step >= songEnd(p))
      out.push_back("Marker " + std::string(nameText(p.markers[i].name)) +
                    " stands at or past the Song's end");
  return out;
}

}  // namespace synth::spec
