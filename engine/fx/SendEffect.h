// The contract of a Send effect: what the frame of a Send asks of each kind.
#pragma once

#include <memory>

#include "core/Project.h"
#include "engine/fx/Parts.h"

namespace synth::fx {

class SendEffect {
 public:
  virtual ~SendEffect() = default;

  // Every sixteen samples of the clock, and before the first one after a clear with `snap`, which takes all
  // targets at once.
  virtual void setUp(const SendFx& fx, double bpm, bool snap) = 0;
  // The wet sound of n samples, all within one tick. `clock` is the sample clock at the first.
  virtual void run(const Stereo& in, Stereo& out, int n, u64 clock) = 0;
  // Back to silence; costs nothing but the filters' states.
  virtual void clear() = 0;

  // For how many seconds sound may lie inside without being heard.
  virtual double longestDelay() const = 0;
  virtual std::size_t bytes() const = 0;
};

// Null for OFF.
std::unique_ptr<SendEffect> makeSendEffect(int type, double rate);

std::unique_ptr<SendEffect> makeDelay(double rate);
std::unique_ptr<SendEffect> makeTapeEcho(double rate);
std::unique_ptr<SendEffect> makeHall(double rate);
std::unique_ptr<SendEffect> makePlate(double rate);
std::unique_ptr<SendEffect> makeShimmer(double rate);
std::unique_ptr<SendEffect> makeChorus(double rate);

// The longest delay that a tempo and an option of `*_sync` give, halved until it is at most `most` seconds.
double syncedSeconds(int sync, double bpm, double most);

// The slow irregularity of a tape: a random target, drawn anew twice a second, and its follower.
struct Wander {
  u32 seed = 0x51F15EEDu;
  float value = 0, target = 0, share = 0;
  u32 left = 0, interval = 1;

  void prepare(double rate);
  float next();
};

}  // namespace synth::fx
