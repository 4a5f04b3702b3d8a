// What the listening commands hear: audio files as they are, projects and specs as they play.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "analysis/Features.h"
#include "analysis/Hear.h"
#include "cli/Command.h"
#include "cli/Error.h"
#include "core/Project.h"

namespace synth::cli {

// Something to listen to; `project` is null for audio.
struct Source {
  std::string path;
  ProjectPtr project;
  analysis::Part part;

  // A project's tempo, 0 for audio.
  double bpm() const { return project ? double(project->bpm) : 0; }
};

// Which part of a project is meant: of "range", "section", "track" and "pad" the named ones.
std::vector<ArgSpec> partOptions(const std::vector<std::string>& names);

// Looks at the path and at the part options. `projectOptions` are those of the command that audio has no use
// for; there they are refused.
Source sourceOf(const Args& args, const std::string& path, const std::vector<std::string>& projectOptions);

// Reads or renders it; a project plays as often as it takes to last `atLeast` seconds. Shows how far it is.
analysis::Audio hear(const Source& source, double atLeast = 0);
analysis::Audio hearFile(const std::string& path);

// What the analyses throw as text, as an error of the command line.
template <class Work>
auto orInvalidAudio(Work work, const char* hint = "") {
  try {
    return work();
  } catch (const CliError&) {
    throw;
  } catch (const std::runtime_error& error) {
    throw CliError("invalid_audio", error.what(), hint);
  }
}

// Measures audio, and shows how far that is where it takes long.
analysis::Features measure(const analysis::Audio& audio, const std::string& path,
                           const analysis::Score& score = {});

// Shows how far an analysis of so much audio is, or nothing where it is short.
class ListeningLine {
 public:
  ListeningLine(const std::string& path, double seconds);
  ~ListeningLine();
  analysis::Watch watch();

 private:
  std::unique_ptr<class ProgressLine> line_;
};

}  // namespace synth::cli
