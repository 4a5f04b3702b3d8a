// Changing the rate of a signal: windowed-sinc interpolation, 24 samples of the lower rate to each side
// under a Blackman window, cut off at 0.94 of the lower rate's half.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace synth::analysis {

// floor(n x toRate / fromRate) samples; rates in Hz, above 0.
std::vector<float> resample(std::span<const float> samples, double fromRate, double toRate);

// The same for several channels that arrive piece by piece; it keeps no more of the input than the filter
// spans.
class Resampler {
 public:
  Resampler(double fromRate, double toRate, int channels);

  // Makes room for what so many input samples will give.
  void expect(std::uint64_t count);
  // The next `count` samples of each channel.
  void push(std::span<const float* const> channels, std::size_t count);
  // The input is over. Then each channel can be taken, once.
  void finish();
  std::vector<float> take(int channel);

 private:
  using i64 = std::int64_t;
  using u64 = std::uint64_t;
  struct Channel {
    std::vector<float> input, output;
  };
  // What one output sample is made of: weights over consecutive input samples, and their sum. With `far`
  // they lie between those of two rows, `mix` of the way.
  struct Taps {
    i64 first = 0;
    std::size_t count = 0;
    double part = 0;  // of the place; for the grid
    const float *near = nullptr, *far = nullptr;
    double mix = 0, sum = 1;

    i64 last() const { return first + i64(count) - 1; }
  };
  struct Row {
    i64 first = 0;       // the input sample of the first weight
    std::size_t at = 0;  // of the first weight in the table
  };
  // Where an output lies among the inputs: at a whole sample and a part of one.
  struct Place {
    i64 whole;
    double part;
  };

  u64 outputs(u64 inputs) const;
  Place place(u64 output) const;
  Taps taps(u64 output);
  Taps rowTaps(u64 output);
  void makeGrid();
  void weighByGrid(Taps& taps);
  void computeWeights(double part, double from, double to);
  void emit(Taps taps);
  void dropUsed(i64 next);

  double ratio_, halfWidth_, cutoff_;
  // Whole rates, reduced: after `phases_` outputs the weights come again, `stride_` inputs further. 0: never.
  u64 phases_ = 0, stride_ = 0;
  // With few phases the table holds a row for each of the first outputs, in order. Otherwise a grid of rows
  // across one input sample, each with its sum; what lies between two of them is interpolated.
  bool exactRows_ = false;
  std::vector<Row> rows_;
  std::vector<double> gridSums_;
  std::vector<float> table_;
  std::vector<double> scratch_;

  std::vector<Channel> channels_;
  i64 base_ = 0;  // the input sample that `input` begins with
  u64 received_ = 0, done_ = 0;
};

}  // namespace synth::analysis
