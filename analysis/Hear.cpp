#include "analysis/Hear.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>

#include "analysis/reading/ReadAudio.h"
#include "base/Scraps.h"
#include "core/model/Clips.h"
#include "core/sounds/Solo.h"
#include "engine/AudioFormats.h"

namespace synth::analysis {
namespace {

struct Passes {
  int count = 1;
  double tailSeconds = 0;
};

// As many as cover the seconds and an hour holds. What an export would have let ring out after the last of
// them rings out here too, and is no reason to begin another.
Passes passesFor(const Project& project, const Part& part, double seconds) {
  constexpr double usualTail = 2.05, mostPasses = 64;
  const double pass =
      spanFrames(project, part.whole ? 0 : part.from, part.whole ? songEnd(project) : part.to) / renderRate;
  if (!(pass > 0)) return {};
  if (pass > longestSeconds) throw std::runtime_error("A pass lasts longer than an hour");
  const double ringing = std::min(usualTail, 0.6 * pass);
  const double most = std::min(mostPasses, std::floor(longestSeconds / pass));
  const int count = int(std::clamp(std::ceil((seconds - ringing) / pass), 1.0, most));
  return {count, std::clamp(seconds - count * pass, 0.0, ringing)};
}

}  // namespace

Audio hear(const Project& project, const Part& part, double atLeast, const Progress& progress) {
  auto copy = copyOf(project);
  if (part.pad >= 0)
    soloPad(*copy, part.track, part.pad);
  else if (part.track >= 0)
    soloTrack(*copy, part.track);

  const Passes passes = passesFor(project, part, atLeast);
  const TemporaryFolder folder;
  const std::string path = folder.path() + "/render.wav";
  Scrap rendered;
  rendered.enroll(path, Scrap::File);
  std::string error;
  auto sink = makeFileSink(AudioFormat::Wav, path);
  const bool ok = part.whole ? renderSong(*copy, passes.count, *sink, error, passes.tailSeconds, progress)
                             : renderSpan(*copy, part.from, part.to, passes.count, *sink, error,
                                          passes.tailSeconds, progress);
  if (!ok) throw std::runtime_error(error);
  return readAudio(path);
}

}  // namespace synth::analysis
