#include "support/Rendered.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/model/Defaults.h"
#include "core/model/Tracks.h"

namespace synth::test {

Audio renderFrames(Engine& engine, size_t frames, unsigned block) {
  Audio out{std::vector<float>(frames), std::vector<float>(frames)};
  for (size_t done = 0; done < frames;) {
    const unsigned n = unsigned(std::min<size_t>(block, frames - done));
    engine.render(out.left.data() + done, out.right.data() + done, n);
    done += n;
  }
  return out;
}

Audio renderProject(const Project& project, double seconds, unsigned block, double rate) {
  Engine engine(rate);
  if (!engine.submitProject(project)) return {};
  engine.setPlaying(true);
  return renderFrames(engine, size_t(seconds * rate), block);
}

bool sameBytes(const Audio& a, const Audio& b) {
  return a.size() == b.size() && std::memcmp(a.left.data(), b.left.data(), a.size() * sizeof(float)) == 0 &&
         std::memcmp(a.right.data(), b.right.data(), a.size() * sizeof(float)) == 0;
}

float peak(const std::vector<float>& x) {
  float most = 0;
  for (float v : x) most = std::max(most, std::fabs(v));
  return most;
}

double rms(const std::vector<float>& x, size_t from, size_t to) {
  to = std::min(to, x.size());
  double sum = 0;
  for (size_t i = from; i < to; i++) sum += double(x[i]) * x[i];
  return to > from ? std::sqrt(sum / double(to - from)) : 0;
}

double toDb(double amplitude) { return 20 * std::log10(std::max(amplitude, 1e-10)); }

bool allFinite(const Audio& audio) {
  auto finite = [](float v) { return std::isfinite(v); };
  return std::all_of(audio.left.begin(), audio.left.end(), finite) &&
         std::all_of(audio.right.begin(), audio.right.end(), finite);
}

double sineLevel(const std::vector<float>& x, double hz, double rate, size_t from, size_t to) {
  to = std::min(to, x.size());
  double re = 0, im = 0, weight = 0;
  for (size_t i = from; i < to; i++) {
    // A Hann window keeps what lies beside the frequency out.
    const double w = 0.5 - 0.5 * std::cos(2 * M_PI * double(i - from) / double(to - from));
    re += w * x[i] * std::cos(2 * M_PI * hz * double(i) / rate);
    im += w * x[i] * std::sin(2 * M_PI * hz * double(i) / rate);
    weight += w;
  }
  return 2 * std::sqrt(re * re + im * im) / weight;
}

ProjectPtr oneTrack(int kind) {
  auto project = makeProject();
  clearArrangement(*project);
  project->track_count = 1;
  project->tracks[0] = defaultTrack(MELODIC);
  setSynthKind(project->tracks[0], kind);
  project->tracks[0].level = 0.64f;
  return project;
}

ProjectPtr oneKit() {
  auto project = oneTrack(ANALOG);
  project->tracks[0] = defaultTrack(DRUMS);
  return project;
}

}  // namespace synth::test
