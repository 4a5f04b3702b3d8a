#include "core/sounds/DemoStage.h"

#include "core/Names.h"
#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Notes.h"
#include "core/model/Tracks.h"
#include "core/sounds/Solo.h"

namespace synth::preset {

bool placeDemo(Project& p, int track, const Demo& demo) {
  clearArrangement(p);
  const int id = addLoop(p, track, demo.steps, 0, 0);
  std::vector<Step> steps(size_t(demo.steps));
  for (const DemoNote& from : demo.notes) {
    Note note;
    note.pitch = u8(from.pitch);
    note.velocity = u8(from.velocity);
    note.length = u16(from.length);
    note.flags = from.flags;
    Step& step = steps[size_t(from.step)];
    const int slot = step.freeSlot(isDrums(p.tracks[track]), note.pitch);
    if (slot >= 0) step.notes[slot] = note;
  }
  if (id < 0 || !setSteps(p, track, id, steps.data(), demo.steps)) return false;
  soloTrack(p, track);
  return true;
}

ProjectPtr dryStage(const Preset& preset, const Demo& demo) {
  auto stage = makeBlank();
  stage->tracks[0] = defaultTrack(preset.kind);
  setName(stage->tracks[0].name, "DEMO");
  apply(*stage, 0, preset);
  placeDemo(*stage, 0, demo);
  return stage;
}

}  // namespace synth::preset
