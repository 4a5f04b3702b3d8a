// The same Song gives the same bytes whatever the size of the render calls.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include "core/model/Defaults.h"
#include "support/RandomProject.h"
#include "support/Rendered.h"

namespace synth::test {
namespace {

TEST(BlockSize, ChangesNoByteOfRandomSongs) {
  for (u32 seed = 1; seed <= 12; seed++) {
    auto song = randomSong(seed);
    const Audio whole = renderProject(*song, 1.2, 4096);
    ASSERT_GT(whole.size(), 0u) << seed;
    EXPECT_TRUE(allFinite(whole)) << seed;
    for (unsigned block : {1u, 37u, 64u, 256u})
      EXPECT_TRUE(sameBytes(whole, renderProject(*song, 1.2, block)))
          << "seed " << seed << ", blocks of " << block;
  }
}

TEST(BlockSize, ChangesNoByteOfATailAfterTheSong) {
  for (u32 seed = 40; seed < 44; seed++) {
    auto song = randomSong(seed);
    song->bpm = 240;
    Audio renders[2];
    for (int i = 0; i < 2; i++) {
      Engine engine(44100);
      ASSERT_TRUE(engine.submitProject(*song));
      engine.setPlaying(true);
      renders[i] = renderFrames(engine, 44100 * 4, i ? 1000 : 16);
    }
    EXPECT_TRUE(sameBytes(renders[0], renders[1])) << seed;
  }
}

// What hands do while a Song plays, each at its sample.
struct Event {
  size_t at;
  std::function<void(Engine&)> act;
};

std::vector<Event> randomHands(Random& r, const Project& song, size_t end) {
  std::vector<Event> events;
  auto at = [&](size_t earliest) { return earliest + size_t(r.below(int(end - earliest))); };
  auto add = [&](size_t when, std::function<void(Engine&)> act) { events.push_back({when, std::move(act)}); };
  for (int i = 0; i < 20; i++) {
    const size_t when = at(1);
    const int t = r.below(6), note = r.between(40, 70), velocity = r.between(1, 127), target = r.below(46);
    const float value = r.unit();
    switch (r.below(8)) {
      case 0: add(when, [](Engine& e) { e.setPlaying(false); }); break;
      case 1: add(when, [](Engine& e) { e.setPlaying(true); }); break;
      case 2: {
        std::shared_ptr<Project> edited = copyOf(song);
        edited->tracks[t].cutoff = 200 + 4000 * value;
        edited->tracks[t].voice_mode = u8(r.below(4));
        edited->bpm = f32(r.between(60, 200));
        add(when, [edited](Engine& e) { e.submitProject(*edited); });
        break;
      }
      case 3:
        add(when, [=](Engine& e) { e.setTouch(t, target, value, true); });
        add(at(when), [=](Engine& e) { e.setTouch(t, target, value, false); });
        break;
      case 4: {
        Engine::Audition a;
        a.track = u32(t);
        a.count = 4;
        for (int k = 0; k < 4; k++) a.entries[k] = {u16(k), 200, u8(t ? note + 2 * k : k), u8(velocity)};
        add(when, [a](Engine& e) {
          e.stopPlayback();
          e.audition(a);
        });
        break;
      }
      case 5: add(when, [](Engine& e) { e.panic(); }); break;
      default:
        add(when, [=](Engine& e) { e.noteOn(t, t ? note : note % 8, velocity); });
        add(at(when), [=](Engine& e) { e.noteOff(t, t ? note : note % 8); });
    }
  }
  std::stable_sort(events.begin(), events.end(), [](const Event& a, const Event& b) { return a.at < b.at; });
  return events;
}

TEST(BlockSize, ChangesNoByteWhileHandsAreAtIt) {
  constexpr size_t end = 90000;
  for (u32 seed = 60; seed < 68; seed++) {
    auto song = randomSong(seed);
    Random r(seed);
    const std::vector<Event> events = randomHands(r, *song, end);
    auto played = [&](unsigned block) {
      Engine engine(48000);
      engine.submitProject(*song);
      engine.setLoop({1, 0, 12});
      engine.setPlaying(true);
      Audio audio;
      audio.left.resize(end);
      audio.right.resize(end);
      auto next = events.begin();
      for (size_t at = 0; at < end;) {
        for (; next != events.end() && next->at == at; ++next) next->act(engine);
        const size_t until = std::min(end, next == events.end() ? end : next->at);
        const unsigned n = unsigned(std::min<size_t>(block, until - at));
        engine.render(audio.left.data() + at, audio.right.data() + at, n);
        at += n;
      }
      return audio;
    };
    const Audio whole = played(4096);
    EXPECT_TRUE(allFinite(whole)) << seed;
    for (unsigned block : {1u, 16u, 37u})
      EXPECT_TRUE(sameBytes(whole, played(block))) << seed << ", " << block;
  }
}

TEST(BlockSize, ASecondRenderRepeatsTheFirst) {
  auto song = randomSong(7);
  EXPECT_TRUE(sameBytes(renderProject(*song, 2), renderProject(*song, 2)));
}

}  // namespace
}  // namespace synth::test
