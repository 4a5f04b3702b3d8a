#include "analysis/Hear.h"

#include <stdlib.h>

#include <cmath>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "analysis/reading/ReadAudio.h"
#include "core/model/Clips.h"
#include "core/sounds/Solo.h"
#include "engine/AudioFormats.h"

namespace synth::analysis {
namespace {

namespace fs = std::filesystem;

// A fresh folder that goes with all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::error_code none;
    fs::path base = fs::temp_directory_path(none);
    if (base.empty()) base = "/tmp";
    path_ = (base / "synth-cli.XXXXXX").string();
    if (!::mkdtemp(path_.data()))
      throw std::runtime_error("Cannot create a temporary folder in " + base.string());
  }
  ~TemporaryFolder() {
    std::error_code none;
    fs::remove_all(path_, none);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

int passesFor(const Project& project, const Part& part, double seconds) {
  const double frames =
      spanFrames(project, part.whole ? 0 : part.from, part.whole ? songEnd(project) : part.to);
  if (!(frames > 0)) return 1;
  return int(std::clamp(std::ceil(seconds * renderRate / frames - 1e-6), 1.0, 64.0));
}

}  // namespace

Audio hear(const Project& project, const Part& part, double atLeast, const Progress& progress) {
  auto copy = copyOf(project);
  if (part.pad >= 0)
    soloPad(*copy, part.track, part.pad);
  else if (part.track >= 0)
    soloTrack(*copy, part.track);

  const TemporaryFolder folder;
  const std::string path = folder.path() + "/render.wav";
  const int passes = passesFor(project, part, atLeast);
  std::string error;
  auto sink = makeFileSink(AudioFormat::Wav, path);
  const bool ok = part.whole ? renderSong(*copy, passes, *sink, error, 0, progress)
                             : renderSpan(*copy, part.from, part.to, passes, *sink, error, 0, progress);
  if (!ok) throw std::runtime_error(error);
  return readAudio(path);
}

}  // namespace synth::analysis
