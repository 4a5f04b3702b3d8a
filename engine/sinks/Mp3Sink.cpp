#include "engine/sinks/Mp3Sink.h"

#include <lame/lame.h>

#include <stdexcept>

#include "base/Library.h"

namespace synth {
namespace {

constexpr int jointStereo = 1, kbps = 320, quality = 2;

struct Lame {
  Library library{"libmp3lame.so.0"};
  decltype(lame_init)* init = nullptr;
  decltype(lame_set_in_samplerate)* setInRate = nullptr;
  decltype(lame_set_out_samplerate)* setOutRate = nullptr;
  decltype(lame_set_num_channels)* setChannels = nullptr;
  decltype(lame_set_mode)* setMode = nullptr;
  decltype(lame_set_VBR)* setVbr = nullptr;
  decltype(lame_set_brate)* setBitRate = nullptr;
  decltype(lame_set_quality)* setQuality = nullptr;
  decltype(lame_set_bWriteVbrTag)* setTag = nullptr;
  decltype(lame_init_params)* initParams = nullptr;
  decltype(lame_encode_buffer_ieee_float)* encode = nullptr;
  decltype(lame_encode_flush)* flush = nullptr;
  decltype(lame_get_lametag_frame)* tagFrame = nullptr;
  decltype(lame_close)* close = nullptr;

  Lame() {
    library.find("lame_init", init);
    library.find("lame_set_in_samplerate", setInRate);
    library.find("lame_set_out_samplerate", setOutRate);
    library.find("lame_set_num_channels", setChannels);
    library.find("lame_set_mode", setMode);
    library.find("lame_set_VBR", setVbr);
    library.find("lame_set_brate", setBitRate);
    library.find("lame_set_quality", setQuality);
    library.find("lame_set_bWriteVbrTag", setTag);
    library.find("lame_init_params", initParams);
    library.find("lame_encode_buffer_ieee_float", encode);
    library.find("lame_encode_flush", flush);
    library.find("lame_get_lametag_frame", tagFrame);
    library.find("lame_close", close);
  }
  bool whole() const {
    return init && setInRate && setOutRate && setChannels && setMode && setVbr && setBitRate && setQuality &&
           setTag && initParams && encode && flush && tagFrame && close;
  }
};

const Lame& lame() {
  static const Lame* const loaded = new Lame;
  return *loaded;
}

void check(bool ok, const std::string& error) {
  if (!ok) throw std::runtime_error(error);
}

}  // namespace

bool Mp3Sink::available() { return lame().whole(); }

Mp3Sink::~Mp3Sink() {
  if (lame_) lame().close(lame_);
}

void Mp3Sink::begin(u32 sampleRate, u64) {
  lame_ = available() ? lame().init() : nullptr;
  check(lame_ != nullptr, "Cannot start the MP3 encoder");
  lame().setInRate(lame_, int(sampleRate));
  lame().setOutRate(lame_, int(sampleRate));
  lame().setChannels(lame_, 2);
  lame().setMode(lame_, MPEG_mode(jointStereo));
  lame().setVbr(lame_, vbr_off);
  lame().setBitRate(lame_, kbps);
  lame().setQuality(lame_, quality);
  lame().setTag(lame_, 1);
  check(lame().initParams(lame_) >= 0, "Cannot set up the MP3 encoder");
  std::string error;
  check(file_.open(path_, error), error);
}

void Mp3Sink::append(int size) {
  check(size >= 0, "MP3 encoding failed (LAME error " + std::to_string(size) + ")");
  std::string error;
  check(size == 0 || file_.write(buffer_.data(), std::size_t(size), error), error);
}

void Mp3Sink::write(const float* left, const float* right, unsigned frames) {
  buffer_.resize(frames + frames / 4 + 7200);  // the most that LAME may give back at once
  append(lame().encode(lame_, left, right, int(frames), buffer_.data(), int(buffer_.size())));
}

void Mp3Sink::finish() {
  buffer_.resize(7200);
  append(lame().flush(lame_, buffer_.data(), int(buffer_.size())));
  // The first frame was left empty for what is known only now: how many frames there are, and the delays.
  std::vector<unsigned char> tag(lame().tagFrame(lame_, nullptr, 0));
  const std::size_t size = lame().tagFrame(lame_, tag.data(), tag.size());
  std::string error;
  if (size > 0 && size <= tag.size())
    check(file_.seek(0, error) && file_.write(tag.data(), size, error), error);
  check(file_.commit(error), error);
}

}  // namespace synth
