// project grid: Patterns as text, to lay beside the grid of a reference.
#include <algorithm>

#include "base/Text.h"
#include "cli/Args.h"
#include "cli/Error.h"
#include "cli/LoadAny.h"
#include "cli/commands/Commands.h"
#include "core/Names.h"
#include "core/PitchNames.h"
#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"

namespace synth::cli::commands {
namespace {

constexpr char legend[] =
    "X loud (velocity 77 and up), x soft, . none; one character per Step, groups of four, bars apart by |; "
    "melodic tracks: note names per Step";

// 0.6 of the velocities, where the grid of audio divides its onsets too.
constexpr int loudVelocity = 77, accentAdds = 20, shownName = 12;

char markOf(const NoteRec& n) {
  const int velocity = n.velocity + (n.note().accent() ? accentAdds : 0);
  return velocity >= loudVelocity ? 'X' : 'x';
}

std::string padded(std::string text, size_t width) {
  text.resize(std::max(text.size(), width), ' ');
  return text;
}

// A row a Pad.
Json drumRows(const Project& p, int t, int id, int length) {
  Json rows = Json::array();
  const auto notes = patternNotes(p, t, id);
  for (int pad = 0; pad < limits::pads; pad++) {
    std::string marks(size_t(length), '.');
    for (const NoteRec& n : notes)
      if (n.step < length && n.pitch == pad && marks[n.step] != 'X') marks[n.step] = markOf(n);
    std::string row = padded(padName(p.tracks[t], pad), shownName);
    for (int s = 0; s < length; s++) {
      if (s % 16 == 0 && s > 0)
        row += " | ";
      else if (s % 4 == 0)
        row += ' ';
      row += marks[size_t(s)];
    }
    rows.push(row);
  }
  return rows;
}

// A row a Step.
Json noteRows(const Project& p, int t, int id, int length) {
  Json rows = Json::array();
  for (int s = 0; s < length; s++) {
    std::vector<int> pitches;
    for (const NoteRec& n : stepNotes(p, t, id, s)) pitches.push_back(n.pitch);
    std::sort(pitches.begin(), pitches.end());
    std::vector<std::string> names;
    for (int pitch : pitches) names.push_back(noteName(pitch));
    rows.push(text::print("%3d ", s) + (names.empty() ? "." : text::joined(names, " ")));
  }
  return rows;
}

int chosenPattern(const Args& args, const Project& p, int t) {
  const int id = intOption(args, "pattern", 0, 0, 65535);
  if (patternIndex(p, t, id) >= 0) return id;
  std::vector<std::string> ids;
  for (int i = 0; i < p.patternCount; i++)
    if (p.patterns[i].track == t) ids.push_back(std::to_string(p.patterns[i].id));
  throw usage("Track " + std::to_string(t) + " has no pattern " + std::to_string(id),
              ids.empty() ? "It has none" : "Patterns: " + text::joined(ids, ", "));
}

Json trackGrid(const Project& p, int t, int id) {
  const int length = patternLength(p, t, id);
  Json o = Json::object();
  o.add("track", t).add("name", nameText(p.tracks[t].name)).add("pattern", id).add("length", length);
  o.add("rows", isDrums(p.tracks[t]) ? drumRows(p, t, id, length) : noteRows(p, t, id, length));
  return o;
}

Json run(const Args& args) {
  if (args.has("pattern") && !args.has("track")) throw usage("--pattern needs --track");
  auto project = loadAny(args.positionals[0]);
  const Project& p = *project;
  const int only = args.has("track") ? trackOption(p, args.at("track")) : -1;
  Json tracks = Json::array();
  for (int t = 0; t < p.track_count; t++) {
    if (only >= 0 && t != only) continue;
    if (args.has("pattern"))
      tracks.push(trackGrid(p, t, chosenPattern(args, p, t)));
    else if (const auto clips = clipsOf(p, t); !clips.empty())
      tracks.push(trackGrid(p, t, clips[0].pattern));
  }
  Json o = Json::object();
  o.add("legend", legend).add("tracks", std::move(tracks));
  return o;
}

}  // namespace

Command projectGrid() {
  return {"project grid",
          "Print a project's Patterns as text, to compare with the grid of a reference.",
          {positional("input", "path.quorel|spec.json|@app", "the project").needed(),
           option("track", "index|name", "only this Track"),
           option("pattern", "int", "this Pattern of --track instead of its first Clip's")},
          "{legend, tracks: [{track, name, pattern, length, rows}]}",
          false,
          {"quorel project grid song.quorel --track DRUMS"},
          run};
}

}  // namespace synth::cli::commands
