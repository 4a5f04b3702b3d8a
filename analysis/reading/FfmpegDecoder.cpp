#include "analysis/reading/FfmpegDecoder.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "analysis/reading/Wav.h"
#include "base/Riff.h"

namespace synth::analysis {
namespace {

// Containers that hold their own sound. Play lists are none of them: they could name any other file.
constexpr char containers[] =
    "aac,ac3,aiff,amr,ape,asf,avi,caf,dsf,eac3,flac,flv,matroska,mov,mp3,mpc,mpc8,mpegts,ogg,tta,webm,wv";

constexpr std::size_t headerStep = 256, largestHeader = 65536;

}  // namespace

std::unique_ptr<Decoder> FfmpegDecoder::open(const std::string& path) {
  const std::string program = programPath("ffmpeg");
  if (program.empty()) return nullptr;
  auto decoder = std::make_unique<FfmpegDecoder>();
  // "file:" keeps a name from being an option or an address. -xerror: damage ends it instead of being
  // skipped.
  const bool started = decoder->program_.startReading({program,        "-nostdin",
                                                       "-v",           "quiet",
                                                       "-xerror",      "-protocol_whitelist",
                                                       "file,pipe",    "-format_whitelist",
                                                       containers,     "-i",
                                                       "file:" + path, "-map",
                                                       "0:a:0",        "-map_metadata",
                                                       "-1",           "-c:a",
                                                       "pcm_f32le",    "-f",
                                                       "wav",          "pipe:1"});
  if (!started || !decoder->readHeader()) return nullptr;
  return decoder;
}

// What comes is a WAV of unknown length: its samples begin behind the header of "data" and end with the
// stream.
bool FfmpegDecoder::readHeader() {
  while (ahead_.size() < largestHeader) {
    const std::size_t size = ahead_.size();
    ahead_.resize(size + headerStep);
    const std::size_t got = program_.read(ahead_.data() + size, headerStep);
    ahead_.resize(size + got);
    MemoryBytes bytes(ahead_);
    if (!isRiff(bytes, "WAVE")) return false;
    const WavLayout layout = wavLayout(bytes);
    if (layout.hasData) {
      rate = layout.rate;
      channels_ = layout.channels;
      ahead_.erase(ahead_.begin(), ahead_.begin() + std::ptrdiff_t(layout.dataAt));
      return rate > 0 && channels_ > 0 && layout.bits == 32;
    }
    if (got < headerStep) return false;
  }
  return false;
}

std::size_t FfmpegDecoder::take(unsigned char* to, std::size_t size) {
  const std::size_t first = std::min(size, ahead_.size());
  std::copy_n(ahead_.begin(), first, to);
  ahead_.erase(ahead_.begin(), ahead_.begin() + std::ptrdiff_t(first));
  return first + program_.read(to + first, size - first);
}

bool FfmpegDecoder::read(StereoBlock& block) {
  interleaved_.resize(blockFrames * channels_);
  const std::size_t frameBytes = channels_ * sizeof(float);
  const std::size_t got =
      take(reinterpret_cast<unsigned char*>(interleaved_.data()), blockFrames * frameBytes) / frameBytes;
  if (got == 0) {
    if (program_.finish() != 0) throw std::runtime_error(decodingFailed);
    return false;
  }
  takeStereo(interleaved_.data(), channels_, got, block);
  return true;
}

}  // namespace synth::analysis
