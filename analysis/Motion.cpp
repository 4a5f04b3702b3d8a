#include "analysis/Motion.h"

#include "analysis/Envelope.h"
#include "analysis/Measure.h"

namespace synth::analysis {
namespace {

// The squares that a least-squares line through the series leaves.
double residual(const std::vector<double>& y) {
  const int n = int(y.size());
  if (n < 3) return 0;
  const double meanX = (n - 1) / 2.0, meanY = sum(y.data(), n) / n;
  double xy = 0, xx = 0, left = 0;
  for (int i = 0; i < n; i++) {
    xy += (i - meanX) * (y[size_t(i)] - meanY);
    xx += (i - meanX) * (i - meanX);
  }
  for (int i = 0; i < n; i++) {
    const double off = y[size_t(i)] - meanY - xy / xx * (i - meanX);
    left += off * off;
  }
  return left;
}

// Frames of one held sound, one behind the other.
class Runs {
 public:
  void add(double brightness, double level, double flux) {
    if (!levels_.empty()) fluxes_.push_back(flux);
    brightness_.push_back(brightness);
    levels_.push_back(level);
  }
  void close() {
    constexpr size_t shortest = 10;
    if (levels_.size() >= shortest) {
      brightnessLeft_ += residual(brightness_);
      levelLeft_ += residual(levels_);
      fluxSum_ += sum(fluxes_.data(), int(fluxes_.size()));
      fluxCount_ += fluxes_.size();
      frames_ += levels_.size();
    }
    brightness_.clear();
    levels_.clear();
    fluxes_.clear();
  }
  void summarize(Features& f) {
    close();
    if (frames_ == 0) return;
    f.centroidVariationOct = std::sqrt(brightnessLeft_ / double(frames_));
    f.levelVariationDb = std::sqrt(levelLeft_ / double(frames_));
    f.fluxDb = fluxSum_ / double(fluxCount_);
    f.heldS = double(frames_) / framesPerSecond;
  }

 private:
  std::vector<double> brightness_, levels_, fluxes_;
  double brightnessLeft_ = 0, levelLeft_ = 0, fluxSum_ = 0;
  size_t frames_ = 0, fluxCount_ = 0;
};

// The mean step of the bands that count in a frame.
double fluxOf(const Features& f, size_t frame) {
  const auto &now = f.melDb[frame], &before = f.melDb[frame - 1];
  const float floor = *std::max_element(now.begin(), now.end()) - 60;
  double step = 0;
  int count = 0;
  for (size_t m = 0; m < now.size(); m++) {
    if (!(now[m] > floor)) continue;
    step += std::fabs(double(now[m]) - double(before[m]));
    count++;
  }
  return count ? step / count : 0;
}

// The last moment at or before a sample, walking on with it.
class LastBefore {
 public:
  explicit LastBefore(std::vector<Moment> moments) : moments_(std::move(moments)) {}
  long at(long sample) {
    while (next_ < moments_.size() && moments_[next_].sample <= sample) next_++;
    return next_ ? moments_[next_ - 1].sample : -1;
  }

 private:
  std::vector<Moment> moments_;
  size_t next_ = 0;
};

}  // namespace

void measureMotion(const Spectra& spectra, const Score& score, Features& f) {
  constexpr long edge = 1024, settled = sampleRate / 4;
  if (f.frames() == 0) return;
  const float quiet = *std::max_element(f.levelDb.begin(), f.levelDb.end()) - 30;
  const long length = long(std::lround(f.seconds * sampleRate));
  LastBefore hits(hitsOf(f, score)), offs(momentsOf(score.noteOff));
  Runs runs;
  for (int i = 0; i < f.frames(); i++) {
    const size_t at = size_t(i);
    const long sample = long(i) * frameHop, hit = hits.at(sample), off = offs.at(sample);
    const bool released = off >= 0 && off > hit;
    const bool held = !released && sample >= edge && length - sample >= edge && spectra.active(i) &&
                      (hit < 0 || sample - hit >= settled) && f.levelDb[at] > quiet &&
                      f.centroidHighFrames[at] > 0;
    if (held)
      runs.add(math::log2(double(f.centroidHighFrames[at])), double(f.levelDb[at]), fluxOf(f, at));
    else
      runs.close();
  }
  runs.summarize(f);
}

}  // namespace synth::analysis
