#include "engine/SampleSlots.h"

#include <algorithm>
#include <cstring>

namespace synth {
namespace {

bool inRange(int slot) { return slot >= 0 && slot < SampleSlots::count; }
bool zero(const u8 (&hash)[32]) {
  return std::all_of(std::begin(hash), std::end(hash), [](u8 b) { return b == 0; });
}

}  // namespace

float* SampleSlots::data(int slot, u32 frames) {
  if (!inRange(slot) || frames < 1 || frames > mostFrames || !isFree(slot)) return nullptr;
  Slot& s = slots_[slot];
  if (s.capacity < frames || s.capacity > 2 * u64(frames)) {
    s.pcm.reset(new float[frames]());
    s.capacity = frames;
  }
  return s.pcm.get();
}

bool SampleSlots::publish(int slot, const u8 (&hash)[32], u32 frames) {
  if (!inRange(slot) || zero(hash) || frames == 0 || frames > slots_[slot].capacity || !isFree(slot))
    return false;
  Slot& s = slots_[slot];
  std::memcpy(s.hash, hash, sizeof hash);
  s.frames = frames;
  s.state.store(1, std::memory_order_release);
  return true;
}

std::size_t SampleSlots::bytes() const {
  std::size_t total = 0;
  for (const Slot& s : slots_) total += s.capacity * sizeof(float);
  return total;
}

bool SampleSlots::isFree(int slot) const {
  return inRange(slot) && slots_[slot].state.load(std::memory_order_acquire) == 0;
}

bool SampleSlots::hashOf(int slot, u8 (&hash)[32]) const {
  if (!inRange(slot) || isFree(slot)) return false;
  std::memcpy(hash, slots_[slot].hash, sizeof hash);
  return true;
}

int SampleSlots::find(const u8 (&hash)[32]) const {
  if (zero(hash)) return -1;
  for (int i = 0; i < count; i++)
    if (!isFree(i) && std::memcmp(slots_[i].hash, hash, sizeof hash) == 0) return i;
  return -1;
}

void SampleSlots::free(int slot) { slots_[slot].state.store(0, std::memory_order_release); }

const float* SampleSlots::frames(int slot, u32& length) const {
  length = slots_[slot].frames;
  return slots_[slot].pcm.get();
}

}  // namespace synth
