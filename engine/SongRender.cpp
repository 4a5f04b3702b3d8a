#include "engine/SongRender.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "core/model/Clips.h"
#include "core/model/Validate.h"
#include "engine/Engine.h"

namespace synth {
namespace {

constexpr unsigned chunk = 256;
constexpr u64 fadeFrames = 959;

bool checkProject(const Project& project, std::string& error) {
  error.clear();
  if (!std::memchr(project.name, 0, sizeof project.name)) {
    error = "Project name must fit in 63 bytes";
    return false;
  }
  return validateProject(project, error);
}

void require(bool ok, const char* text) {
  if (!ok) throw std::runtime_error(text);
}

void checkAmounts(int loops, bool empty, double tailSeconds) {
  require(loops >= 1 && loops <= 64, "Export loops must be 1..64");
  require(!empty, "Nothing to export: the Song has no Clips");
  require(tailSeconds >= 0 && tailSeconds <= longestTail, "Tail must be 0..12 seconds");
}

// Pulls frames from the Engine, fades the file's end and hands them to the sink.
class Stretch {
 public:
  Stretch(Engine& engine, AudioSink& sink, u64 total, const Progress& progress)
      : engine_(engine), sink_(sink), progress_(progress), total_(total) {
    sink_.begin(renderRate, total);
  }

  void renderUntil(u64 end) {
    while (at_ < end) {
      const unsigned n = unsigned(std::min<u64>(chunk, end - at_));
      engine_.render(left_, right_, n);
      for (unsigned i = 0; i < n; i++) finish(i, at_ + i);
      sink_.write(left_, right_, n);
      at_ += n;
      if (progress_) progress_(double(at_) / double(total_));
    }
  }

 private:
  // The fade lies on the file's end, not on the Song's.
  void finish(unsigned i, u64 index) {
    const float gain =
        index + fadeFrames < total_ ? 1 : float(double(total_ - 1 - index) / double(fadeFrames));
    for (float* x : {left_ + i, right_ + i}) {
      *x *= gain;
      require(std::isfinite(*x), "Non-finite audio during export");
      *x = std::clamp(*x, -1.0f, 1.0f);
    }
  }

  Engine& engine_;
  AudioSink& sink_;
  const Progress& progress_;
  u64 total_, at_ = 0;
  float left_[chunk] = {}, right_[chunk] = {};
};

}  // namespace

double spanFrames(const Project& project, u32 from, u32 to) {
  const double straight = renderRate * 60.0 / project.bpm / 4, swing = project.swing;
  const u64 even = (to + 1) / 2 - (from + 1) / 2, odd = to / 2 - from / 2;
  return double(even) * 2 * swing * straight + double(odd) * 2 * (1 - swing) * straight;
}

bool renderSong(const Project& project, int loops, AudioSink& sink, std::string& error, double tailSeconds,
                const Progress& progress) {
  if (!checkProject(project, error)) return false;
  const u32 end = songEnd(project);
  checkAmounts(loops, end == 0, tailSeconds);
  const double seconds = double(end) * 60 / (double(project.bpm) * 4);
  const u64 songFrames = u64(seconds * loops * renderRate), tailFrames = u64(tailSeconds * renderRate);

  Engine engine(renderRate);
  require(engine.submitProject(project), "Engine rejected export project");
  if (loops > 1) engine.setLoop({1, 0, i32(end)});
  engine.setPlaying(true);
  Stretch stretch(engine, sink, songFrames + tailFrames, progress);
  // The loop goes off half a pass before the end, so that the last pass runs out to the Song's own end.
  if (loops > 1) {
    stretch.renderUntil(songFrames - u64(seconds * renderRate) / 2);
    engine.setLoop({0, 0, i32(end)});
  }
  stretch.renderUntil(songFrames);
  engine.setPlaying(false);
  stretch.renderUntil(songFrames + tailFrames);
  sink.finish();
  return true;
}

bool renderSpan(const Project& project, u32 from, u32 to, int loops, AudioSink& sink, std::string& error,
                double tailSeconds, const Progress& progress) {
  if (!checkProject(project, error)) return false;
  checkAmounts(loops, songEnd(project) == 0 || from >= to, tailSeconds);
  const u64 frames = u64(spanFrames(project, from, to) * loops), tailFrames = u64(tailSeconds * renderRate);
  Engine engine(renderRate);
  require(engine.submitProject(project), "Engine rejected export project");
  engine.setLoop({1, i32(from), i32(to)});
  engine.playFrom(int(from));
  Stretch stretch(engine, sink, frames + tailFrames, progress);
  stretch.renderUntil(frames);
  engine.setPlaying(false);
  stretch.renderUntil(frames + tailFrames);
  sink.finish();
  return true;
}

bool exportWav(const Project& project, const std::string& path, int loops, std::string& error,
               double tailSeconds) {
  return exportAudio(project, path, AudioFormat::Wav, loops, error, tailSeconds);
}

bool exportAudio(const Project& project, const std::string& path, AudioFormat format, int loops,
                 std::string& error, double tailSeconds) {
  auto sink = makeFileSink(format, path);
  if (!sink) {
    error = "Unknown format";
    return false;
  }
  return renderSong(project, loops, *sink, error, tailSeconds);
}

}  // namespace synth
