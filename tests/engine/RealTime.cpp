// Nothing inside render allocates, frees or locks: every such call on the rendering thread is counted.
#include <gtest/gtest.h>
#include <pthread.h>

#include <cstdlib>
#include <new>

#include "core/model/Notes.h"
#include "support/RandomProject.h"
#include "support/Rendered.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QUOREL_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QUOREL_SANITIZED 1
#endif
#endif

namespace {
thread_local bool watching = false;
thread_local int forbidden = 0;
void note() {
  if (watching) forbidden++;
}
}  // namespace

#ifndef QUOREL_SANITIZED
extern "C" {
void* __libc_malloc(size_t);
void __libc_free(void*);
void* __libc_realloc(void*, size_t);
void* __libc_calloc(size_t, size_t);
int __pthread_mutex_lock(pthread_mutex_t*);
void* malloc(size_t size) {
  note();
  return __libc_malloc(size);
}
void free(void* p) {
  if (p) note();
  __libc_free(p);
}
void* realloc(void* p, size_t size) {
  note();
  return __libc_realloc(p, size);
}
void* calloc(size_t n, size_t size) {
  note();
  return __libc_calloc(n, size);
}
}
#else
void* operator new(std::size_t size) {
  note();
  if (void* p = std::malloc(size)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept {
  note();
  std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
  note();
  std::free(p);
}
#endif

namespace synth::test {
namespace {

int forbiddenCalls(Engine& engine, int blocks) {
  static float left[256], right[256];
  forbidden = 0;
  watching = true;
  for (int i = 0; i < blocks; i++) engine.render(left, right, 256);
  watching = false;
  return forbidden;
}

TEST(RealTime, TheWatchSeesAnAllocation) {
  watching = true;
  forbidden = 0;
  void* volatile p = ::operator new(8);
  ::operator delete(p);
  watching = false;
  EXPECT_GE(forbidden, 2);
}

TEST(RealTime, RenderNeverAllocates) {
  for (u32 seed = 1; seed <= 12; seed++) {
    Engine engine(48000);
    ASSERT_TRUE(engine.submitProject(*randomSong(seed)));
    engine.setPlaying(true);
    EXPECT_EQ(forbiddenCalls(engine, 200), 0) << "seed " << seed;
  }
}

TEST(RealTime, TakingCommandsNeverAllocates) {
  Engine engine(48000);
  auto a = randomSong(3), b = randomSong(4);
  ASSERT_TRUE(engine.submitProject(*a));
  engine.playFrom(0);
  engine.setRecording(true);
  for (int note = 40; note < 52; note++) engine.noteOn(note % 6, note, 90);
  for (int target = 0; target < 46; target++) engine.setTouch(1, target, 0.4f, true);
  EXPECT_EQ(forbiddenCalls(engine, 20), 0);
  ASSERT_TRUE(engine.submitProject(*b));
  engine.setAutomationPlayback(false);
  for (int note = 40; note < 52; note++) engine.noteOff(note % 6, note);
  engine.stopPlayback();
  Engine::Audition audition;
  audition.track = 2;
  audition.count = 3;
  for (int i = 0; i < 3; i++) audition.entries[i] = {u16(i), 128, u8(60 + i), 100};
  ASSERT_TRUE(engine.audition(audition));
  EXPECT_EQ(forbiddenCalls(engine, 100), 0);
}

}  // namespace
}  // namespace synth::test
