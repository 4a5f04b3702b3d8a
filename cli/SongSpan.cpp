#include "cli/SongSpan.h"

#include "base/Text.h"
#include "cli/Args.h"
#include "cli/Error.h"
#include "core/Names.h"
#include "core/model/Clips.h"
#include "core/model/Markers.h"

namespace synth::cli {
namespace {

SongSpan rangeOf(const std::string& text) {
  const size_t colon = text.find(':');
  int from = 0, to = 0;
  if (colon == text.npos || !wholeNumber(text.substr(0, colon), from) ||
      !wholeNumber(text.substr(colon + 1), to) || from < 0 || to <= from || to > int(limits::songSteps))
    throw usage("--range is FROM:TO in Song steps, e.g. 0:64; got " + text);
  return {u32(from), u32(to), false};
}

SongSpan sectionOf(const Project& p, const std::string& name) {
  int row = markerNamed(p, name);
  std::vector<std::string> names;
  for (int i = 0; i < p.markerCount; i++) {
    names.emplace_back(nameText(p.markers[i].name));
    if (row < 0 && text::sameIgnoringCase(names.back(), name)) row = i;
  }
  SongSpan span{0, 0, false};
  if (row < 0)
    throw CliError("unknown_section", "No Marker named " + name,
                   names.empty() ? "The project has no Markers" : "Markers: " + text::joined(names, ", "));
  if (!sectionAt(p, p.markers[row].step, span.from, span.to))
    throw CliError("unknown_section", "The Section of Marker " + name + " is empty",
                   "It begins at the Song's end");
  return span;
}

}  // namespace

ArgSpec rangeOption() {
  return option("range", "FROM:TO", "in Song steps, looped instead of the whole Song");
}
ArgSpec sectionOption() {
  return option("section", "name", "a Marker's name: its Section looped instead of the whole Song");
}

SongSpan songSpan(const Args& args, const Project& p) {
  if (args.has("range") && args.has("section")) throw usage("Choose one of --range and --section");
  if (args.has("range")) return rangeOf(args.at("range"));
  if (args.has("section")) return sectionOf(p, args.at("section"));
  return {0, songEnd(p), true};
}

void requireSound(const Project& p, const SongSpan& span) {
  if (songEnd(p) == 0)
    throw CliError("render_failed", "Render failed: Nothing to export: the Song has no Clips");
  if (span.from >= songEnd(p))
    throw CliError("out_of_range",
                   "The range begins past the Song's end, at Step " + std::to_string(songEnd(p)));
}

}  // namespace synth::cli
