#include "engine/sinks/FfmpegSink.h"

#include <sys/stat.h>

#include <stdexcept>

namespace synth {
namespace {

void check(bool ok, const std::string& error) {
  if (!ok) throw std::runtime_error(error);
}

}  // namespace

bool FfmpegSink::available() { return !programPath("ffmpeg").empty(); }

void FfmpegSink::begin(u32 sampleRate, u64) {
  const std::string program = programPath("ffmpeg");
  check(!program.empty(), "This system cannot encode the format: ffmpeg is not installed");
  std::string error;
  check(file_.open(path_, error), error);
  // Without dates and version texts, so that the same song gives the same bytes.
  check(encoder_.start({program,
                        "-nostdin",
                        "-v",
                        "quiet",
                        "-y",
                        "-f",
                        "f32le",
                        "-ar",
                        std::to_string(sampleRate),
                        "-ac",
                        "2",
                        "-i",
                        "pipe:0",
                        "-c:a",
                        "aac",
                        "-b:a",
                        "256k",
                        "-map_metadata",
                        "-1",
                        "-fflags",
                        "+bitexact",
                        "-flags:a",
                        "+bitexact",
                        "-f",
                        "ipod",
                        "file:" + file_.temporary()}),
        "Cannot set up the encoder");
}

void FfmpegSink::write(const float* left, const float* right, unsigned frames) {
  float values[2 * 256];
  for (unsigned done = 0; done < frames;) {
    unsigned n = 0;
    for (; done < frames && n < 256; done++, n++) {
      values[2 * n] = left[done];
      values[2 * n + 1] = right[done];
    }
    check(encoder_.feed(values, 2 * n * sizeof(float)), "Encoding failed");
  }
}

void FfmpegSink::finish() {
  const int status = encoder_.finish();
  check(status == 0, "Encoding failed (error " + std::to_string(status) + ")");
  struct stat info;
  check(::stat(file_.temporary().c_str(), &info) == 0 && info.st_size > 0,
        "Encoding failed (nothing was written)");
  std::string error;
  check(file_.commit(error), error);
}

}  // namespace synth
