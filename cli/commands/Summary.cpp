#include "cli/commands/Summary.h"

#include "core/Names.h"
#include "core/model/Clips.h"

namespace synth::cli {

Json projectSummary(const Project& p) {
  Json tracks = Json::array();
  for (int t = 0; t < p.track_count; t++) tracks.push(nameText(p.tracks[t].name));
  Json o = Json::object();
  o.add("name", projectName(p)).add("bpm", p.bpm).add("track_count", int(p.track_count));
  o.add("song_steps", double(songEnd(p))).add("tracks", std::move(tracks));
  o.add("patterns", int(p.patternCount)).add("clips", int(p.clipCount)).add("notes", int(p.noteCount));
  return o;
}

Json textList(const std::vector<std::string>& texts) {
  Json list = Json::array();
  for (const std::string& text : texts) list.push(text);
  return list;
}

void addAll(Json& object, Json members) {
  for (Json::Member& member : members.members()) object.add(std::move(member.key), std::move(member.value));
}

}  // namespace synth::cli
