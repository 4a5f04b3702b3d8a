// How the two threads of an Engine meet: rings, a triple buffer and state words. Neither side ever waits,
// locks or allocates. Each queue has one producer and one consumer.
#pragma once

#include <atomic>
#include <cstring>

#include "core/Project.h"

namespace synth {

inline constexpr std::size_t cacheLine = 64;

// Free-running indices on cache lines of their own; full when they are N apart.
template <class T, u32 N>
class Ring {
  static_assert((N & (N - 1)) == 0);

 public:
  // Producer. False on a full ring.
  bool push(const T& value) {
    const u32 at = producer_.load(std::memory_order_relaxed);
    if (at - consumer_.load(std::memory_order_acquire) == N) return false;
    entries_[at & (N - 1)] = value;
    producer_.store(at + 1, std::memory_order_release);
    return true;
  }
  // Consumer. False on an empty ring.
  bool pop(T& value) {
    const u32 at = consumer_.load(std::memory_order_relaxed);
    if (at == producer_.load(std::memory_order_acquire)) return false;
    value = entries_[at & (N - 1)];
    consumer_.store(at + 1, std::memory_order_release);
    return true;
  }

 private:
  alignas(cacheLine) std::atomic<u32> producer_{0};
  alignas(cacheLine) std::atomic<u32> consumer_{0};
  alignas(cacheLine) T entries_[N]{};
};

// The reader sees whole values only and skips those it was too slow for.
template <class T>
class TripleBuffer {
 public:
  // Producer.
  void publish(const T& value) {
    buffers_[back_] = value;
    back_ = state_.exchange(back_ | fresh, std::memory_order_acq_rel) & 3;
  }
  // Consumer. False when nothing newer was published since the last call.
  bool read(T& value) {
    if (!(state_.load(std::memory_order_acquire) & fresh)) return false;
    front_ = state_.exchange(front_, std::memory_order_acq_rel) & 3;
    value = buffers_[front_];
    return true;
  }

 private:
  static constexpr u32 fresh = 4;
  T buffers_[3]{};
  u32 back_ = 0, front_ = 1;
  alignas(cacheLine) std::atomic<u32> state_{2};
};

// A few places that values are handed through, each with a word that says whose it is. A place holds
// nothing of use until it has been written.
template <class T, int N>
class Slots {
 public:
  enum : u32 { Free = 0, Writing = 1, Published = 2 };

  // Control side: the first free place, now being written, or -1.
  int take() {
    for (int i = 0; i < N; i++) {
      u32 expected = Free;
      if (state_[i].compare_exchange_strong(expected, Writing, std::memory_order_acq_rel)) return i;
    }
    return -1;
  }
  void publish(int i) { state_[i].store(Published, std::memory_order_release); }
  // Either side, whoever owns the place.
  void release(int i) { state_[i].store(Free, std::memory_order_release); }
  T& operator[](int i) { return places_[i].value; }
  const T& operator[](int i) const { return places_[i].value; }

 private:
  static_assert(std::is_trivially_copyable_v<T>);
  // Left as the memory was: filling megabytes that the first writer replaces would only take time.
  union Place {
    T value;
    Place() {}
  };
  std::atomic<u32> state_[N]{};
  Place places_[N];
};

}  // namespace synth
