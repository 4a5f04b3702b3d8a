// A control thread and an audio thread for real: edits, commands and readings while it plays.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "engine/Exchange.h"
#include "support/RandomProject.h"
#include "support/Rendered.h"

namespace synth::test {
namespace {

TEST(Threads, RingsKeepOrderAndLoseNothingThatWasTaken) {
  static Ring<RecordedNote, 512> ring;
  constexpr int count = 200000;
  std::thread producer([] {
    for (int i = 0; i < count;) {
      RecordedNote note;
      note.step = i;
      note.note.length = u16(i);
      if (ring.push(note))
        i++;
      else
        std::this_thread::yield();
    }
  });
  int next = 0;
  while (next < count) {
    RecordedNote note;
    if (!ring.pop(note)) {
      std::this_thread::yield();
      continue;
    }
    ASSERT_EQ(note.step, next);
    ASSERT_EQ(note.note.length, u16(next));
    next++;
  }
  producer.join();
}

TEST(Threads, ASnapshotIsNeverTorn) {
  struct Wide {
    u64 words[500];
  };
  static TripleBuffer<Wide> buffer;
  std::atomic<bool> done{false};
  std::thread writer([&] {
    Wide w;
    for (u64 i = 1; i <= 20000; i++) {
      for (u64& word : w.words) word = i;
      buffer.publish(w);
    }
    done = true;
  });
  u64 last = 0;
  Wide w;
  while (!done || buffer.read(w)) {
    if (!buffer.read(w)) continue;
    for (u64 word : w.words) ASSERT_EQ(word, w.words[0]);
    ASSERT_GE(w.words[0], last);
    last = w.words[0];
  }
  writer.join();
}

TEST(Threads, ControlAndAudioTogether) {
  Engine engine(48000);
  std::atomic<bool> done{false};
  std::atomic<u64> rendered{0};
  std::thread audio([&] {
    static float l[512], r[512];
    Random random(5);
    while (!done) {
      const unsigned n = unsigned(random.between(1, 512));
      engine.render(l, r, n);
      rendered += n;
    }
  });
  Random random(9);
  const char* wanted = std::getenv("QUOREL_SOAK_SECONDS");
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(wanted ? std::atoi(wanted) : 3);
  u64 snapshots = 0, notes = 0;
  for (u32 seed = 1; std::chrono::steady_clock::now() < end; seed++) {
    engine.submitProject(*randomSong(seed % 16));
    switch (seed % 8) {
      case 0: engine.playFrom(random.below(16)); break;
      case 1: engine.setRecording(seed % 3 != 0); break;
      case 2: engine.setLoop({1, 0, 16}); break;
      case 3: engine.setPlaying(seed % 5 != 0); break;
      case 4: engine.panic(); break;
      case 5: engine.stopPlayback(); break;
      default: break;
    }
    for (int i = 0; i < 10; i++) engine.noteOn(random.below(6), random.between(36, 80), random.below(128));
    for (int i = 0; i < 10; i++)
      engine.setTouch(random.below(6), random.below(46), random.unit(), random.chance(50));
    for (int i = 0; i < 4; i++)
      engine.setTouch(random.between(16, 18), random.between(64, 161), random.unit(), random.chance(50));
    Engine::Audition audition;
    audition.track = u32(random.below(6));
    audition.count = 4;
    for (int i = 0; i < 4; i++) audition.entries[i] = {u16(i), 100, u8(50 + i), 90};
    engine.audition(audition);
    Telemetry t;
    snapshots += engine.readTelemetry(t);
    RecordedNote note;
    while (engine.pollRecorded(note)) notes++;
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
  }
  done = true;
  audio.join();
  EXPECT_GT(rendered, 1000u);
  EXPECT_GT(snapshots, 10u);
}

}  // namespace
}  // namespace synth::test
