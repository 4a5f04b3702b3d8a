// The PCM of Samples, handed from the control thread to the audio thread: a slot's buffer belongs to the
// control thread while the slot is free, and to the audio thread, read-only, once it is published.
#pragma once

#include <atomic>
#include <memory>

#include "core/Project.h"

namespace synth {

class SampleSlots {
 public:
  static constexpr int count = 17;  // one a Track, and one so that a new Sample can replace a sounding one
  static constexpr u32 mostFrames = 14400000;

  // Control thread.
  float* data(int slot, u32 frames);
  bool publish(int slot, const u8 (&hash)[32], u32 frames);
  std::size_t bytes() const;

  // Either thread.
  bool isFree(int slot) const;
  bool hashOf(int slot, u8 (&hash)[32]) const;
  int find(const u8 (&hash)[32]) const;

  // Audio thread.
  void free(int slot);
  const float* frames(int slot, u32& length) const;

 private:
  struct Slot {
    std::atomic<u32> state{0};  // 0 free, 1 published
    u8 hash[32] = {};
    u32 frames = 0, capacity = 0;
    std::unique_ptr<float[]> pcm;
  };
  Slot slots_[count];
};

}  // namespace synth
