#include "analysis/picture/Cells.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>
#include <thread>

#include "base/Fft.h"

namespace synth::analysis {
namespace {

// Each window serves up to its border and the next from there on.
struct WindowSize {
  int samples;
  double topHz;
};
constexpr WindowSize windowSizes[] = {{32768, 130}, {16384, 520}, {8192, 2080}, {4096, 1e9}};
constexpr int bands = std::size(windowSizes);
constexpr double crossfadeOctaves = 1.0 / 3;

// How far the row at `hz` has gone from window `band` to the next: 0..1.
double crossfade(int band, double hz) {
  const double octaves = math::log2(hz / windowSizes[band].topHz);
  return std::clamp(octaves / crossfadeOctaves + 0.5, 0.0, 1.0);
}

// A row's level comes from two neighbouring bins at its frequency, or from a louder one within its height.
struct Tap {
  int bin;
  float fraction;
  int first, last;
  float weight;
};

// One window size and what it has to deliver.
struct Band {
  explicit Band(int samples) : size(samples), fft(samples), window(std::size_t(samples)) {}

  int size;
  Fft fft;
  // Hann, scaled so that a full-scale sine has power 1.
  std::vector<double> window;
  int firstRow = 0;
  std::vector<Tap> taps;  // from `firstRow` on
  int firstBin = 0, lastBin = 0;
  // Measured at every `step`-th column (the window sees no faster change), or `moments` times within each.
  int step = 1, moments = 1, frames = 0;
  std::vector<float> db;  // frames x taps

  float* frame(int f) { return &db[std::size_t(f) * taps.size()]; }
};

std::vector<Tap> tapsOf(int band, const Axes& axes, int& firstRow) {
  std::vector<Tap> taps;
  const int size = windowSizes[band].samples;
  const double bins = double(size) / sampleRate;
  const int nyquist = size / 2;
  for (int row = 0; row < axes.rows; row++) {
    const double hz = axes.hz(row + 0.5);
    const double above = band + 1 < bands ? crossfade(band, hz) : 0;
    const double weight = (band > 0 ? crossfade(band - 1, hz) : 1) * (1 - above);
    if (!(weight > 0)) continue;
    if (taps.empty()) firstRow = row;
    const double at = std::min(hz * bins, double(nyquist) - 1e-6);
    Tap tap{};
    tap.bin = int(at);
    tap.fraction = float(at - tap.bin);
    tap.first = std::min(int(std::ceil(axes.hz(row + 1.0) * bins)), nyquist + 1);
    tap.last = std::min(int(std::ceil(axes.hz(row) * bins)) - 1, nyquist);
    tap.weight = float(weight);
    taps.push_back(tap);
  }
  return taps;
}

std::unique_ptr<Band> makeBand(int index, const Axes& axes) {
  int firstRow = 0;
  std::vector<Tap> taps = tapsOf(index, axes, firstRow);
  if (taps.empty()) return nullptr;
  const int size = windowSizes[index].samples;
  auto band = std::make_unique<Band>(size);
  for (int i = 0; i < size; i++)
    band->window[std::size_t(i)] = (2 - 2 * math::cos(2 * math::pi * i / size)) / size;
  band->firstRow = firstRow;
  band->taps = std::move(taps);
  band->firstBin = size;
  for (const Tap& tap : band->taps) {
    band->firstBin = std::min({band->firstBin, tap.bin, tap.first});
    band->lastBin = std::max({band->lastBin, tap.bin + 1, tap.last});
  }
  const double columnSamples = axes.columnS() * sampleRate;
  band->step = std::max(1, int(size / 16 / columnSamples));
  band->moments = std::max(1, int(std::ceil(columnSamples / (size / 2))));
  band->frames = (axes.columns - 1 + band->step - 1) / band->step + 1;
  band->db.assign(std::size_t(band->frames) * band->taps.size(), silenceDb);
  return band;
}

// What one thread needs for itself.
struct Bench {
  std::vector<std::unique_ptr<Fft::Work>> works;  // one a band
  std::vector<double> powers[2];
  std::vector<float> db;
};

class Measurement {
 public:
  Measurement(const Audio& audio, const Axes& axes) : audio_(audio), axes_(axes) {
    for (int i = 0; i < bands; i++)
      if (auto band = makeBand(i, axes)) {
        jobs_ += (band->frames + 1) / 2;
        bands_.push_back(std::move(band));
      }
  }

  Cells run(int threads) {
    std::atomic<int> next{0};
    const auto work = [&](Bench& bench) {
      for (int job; (job = next.fetch_add(1, std::memory_order_relaxed)) < jobs_;) this->job(job, bench);
    };
    std::vector<Bench> benches(std::size_t(std::clamp(threads, 1, 16)));
    for (Bench& bench : benches) prepare(bench);
    {
      std::vector<std::jthread> helpers;
      for (std::size_t i = 1; i < benches.size(); i++) helpers.emplace_back(work, std::ref(benches[i]));
      work(benches[0]);
    }
    return blended();
  }

 private:
  void prepare(Bench& bench) const {
    std::size_t bins = 0;
    for (const auto& band : bands_) {
      bench.works.push_back(std::make_unique<Fft::Work>(band->size));
      bins = std::max(bins, std::size_t(band->lastBin - band->firstBin + 1));
    }
    for (auto& powers : bench.powers) powers.resize(bins);
    bench.db.resize(bins);
  }

  // Two neighbouring frames, which share their transforms.
  void job(int number, Bench& bench) const {
    std::size_t i = 0;
    for (; number >= (bands_[i]->frames + 1) / 2; i++) number -= (bands_[i]->frames + 1) / 2;
    Band& band = *bands_[i];
    Fft::Work& work = *bench.works[i];
    const int frame = 2 * number;
    const bool both = frame + 1 < band.frames;
    const int moments = band.moments * (both ? 2 : 1);
    for (int m = 0; m < moments; m += 2) {
      window(band, frame, m, work.re);
      if (m + 1 < moments)
        window(band, frame, m + 1, work.im);
      else
        std::fill(work.im.begin(), work.im.end(), 0.0);
      band.fft.powers(work, band.firstBin, band.lastBin, bench.powers[0].data(), bench.powers[1].data());
      for (int half = 0; half < 2 && m + half < moments; half++)
        read(band, bench.powers[half], bench.db, band.frame(frame + (m + half) / band.moments));
    }
  }

  // The windowed signal around moment `moment`, counted from the start of `frame`.
  void window(const Band& band, int frame, int moment, std::vector<double>& out) const {
    const int column = (frame + moment / band.moments) * band.step;
    const double within = (moment % band.moments + 0.5) / band.moments;
    const double centre = (axes_.fromS + (column + within) * axes_.columnS()) * sampleRate;
    const long start = long(std::floor(centre + 0.5)) - band.size / 2;
    const long first = std::clamp(-start, 0L, long(band.size));
    const long end = std::clamp(long(audio_.size()) - start, first, long(band.size));
    std::fill(out.begin(), out.begin() + first, 0.0);
    std::fill(out.begin() + end, out.end(), 0.0);
    for (long i = first; i < end; i++) {
      const std::size_t at = std::size_t(start + i);
      out[std::size_t(i)] =
          0.5 * (double(audio_.left[at]) + double(audio_.right[at])) * band.window[std::size_t(i)];
    }
  }

  // Raises the rows of a frame to the levels of these bins.
  static void read(const Band& band, const std::vector<double>& powers, std::vector<float>& db, float* rows) {
    constexpr double floorPower = 1e-16;
    const int bins = band.lastBin - band.firstBin + 1;
    for (int k = 0; k < bins; k++)
      db[std::size_t(k)] = float(10 * math::log10(std::max(powers[std::size_t(k)], floorPower)));
    const float* levels = db.data() - band.firstBin;
    for (std::size_t r = 0; r < band.taps.size(); r++) {
      const Tap& tap = band.taps[r];
      float level = levels[tap.bin] + (levels[tap.bin + 1] - levels[tap.bin]) * tap.fraction;
      for (int k = tap.first; k <= tap.last; k++) level = std::max(level, levels[k]);
      rows[r] = std::max(rows[r], level);
    }
  }

  Cells blended() const {
    Cells cells{axes_.columns, axes_.rows, {}};
    cells.db.assign(std::size_t(axes_.columns) * std::size_t(axes_.rows), 0);
    for (const auto& band : bands_)
      for (std::size_t r = 0; r < band->taps.size(); r++) {
        float* row = &cells.db[(std::size_t(band->firstRow) + r) * std::size_t(axes_.columns)];
        const float weight = band->taps[r].weight;
        for (int c = 0; c < axes_.columns; c++) {
          const int frame = c / band->step;
          const float fraction = float(c % band->step) / float(band->step);
          float level = band->frame(frame)[r];
          if (fraction > 0) level += (band->frame(frame + 1)[r] - level) * fraction;
          row[c] += weight * level;
        }
      }
    return cells;
  }

  const Audio& audio_;
  const Axes& axes_;
  std::vector<std::unique_ptr<Band>> bands_;
  int jobs_ = 0;
};

}  // namespace

Cells measureCells(const Audio& audio, const Axes& axes, int threads) {
  return Measurement(audio, axes).run(threads);
}

}  // namespace synth::analysis
