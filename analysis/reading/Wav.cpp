#include "analysis/reading/Wav.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "base/Riff.h"

namespace synth::analysis {
namespace {

constexpr unsigned integerTag = 1, floatTag = 3, extensibleTag = 0xFFFE;
constexpr unsigned leastRate = 1000, leastBits = 8;
constexpr std::size_t bufferBytes = 1 << 20;

template <class Value>
Value littleEndian(const unsigned char* from) {
  Value value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

float unsigned8(const unsigned char* p) { return float(int(*p) - 128) / 128; }
float signed16(const unsigned char* p) { return littleEndian<std::int16_t>(p) / 32768.0f; }
float signed24(const unsigned char* p) {
  const std::uint32_t upper =
      std::uint32_t(p[0]) << 8 | std::uint32_t(p[1]) << 16 | std::uint32_t(p[2]) << 24;
  return float(std::int32_t(upper) >> 8) / 8388608.0f;
}
float signed32(const unsigned char* p) { return float(littleEndian<std::int32_t>(p)) / 2147483648.0f; }
float float32(const unsigned char* p) { return littleEndian<float>(p); }
float float64(const unsigned char* p) { return float(littleEndian<double>(p)); }

template <float (*sample)(const unsigned char*)>
void convertWith(const unsigned char* from, std::size_t frameBytes, std::size_t count, float* to) {
  for (std::size_t i = 0; i < count; i++) to[i] = sample(from + i * frameBytes);
}

}  // namespace

const WavDecoder::Encoding WavDecoder::encodings[] = {
    {floatTag, 32, convertWith<float32>},    {floatTag, 64, convertWith<float64>},
    {integerTag, 16, convertWith<signed16>}, {integerTag, 24, convertWith<signed24>},
    {integerTag, 32, convertWith<signed32>}, {integerTag, 8, convertWith<unsigned8>},
};

WavLayout wavLayout(ByteSource& bytes) {
  WavLayout layout;
  RiffWalk walk(bytes);
  for (RiffChunk chunk; walk.next(chunk);) {
    if (chunk.is("fmt ")) {
      unsigned char f[26];
      const std::size_t size =
          bytes.read(chunk.at, f, std::size_t(std::min<std::uint64_t>(chunk.length, sizeof f)));
      if (size < 16) continue;
      layout.tag = littleEndian<std::uint16_t>(f);
      layout.channels = littleEndian<std::uint16_t>(f + 2);
      layout.rate = littleEndian<std::uint32_t>(f + 4);
      layout.bits = littleEndian<std::uint16_t>(f + 14);
      if (layout.tag == extensibleTag && size >= 26) layout.tag = littleEndian<std::uint16_t>(f + 24);
    } else if (chunk.is("data")) {
      layout.hasData = true;
      layout.dataAt = chunk.at;
      layout.dataBytes = chunk.length;
    }
  }
  return layout;
}

WavDecoder::WavDecoder(std::unique_ptr<ByteSource> bytes)
    : bytes_(std::move(bytes)), layout_(wavLayout(*bytes_)) {
  if (!layout_.hasData || layout_.channels == 0 || layout_.rate < leastRate)
    throw std::runtime_error("WAV without fmt or data");
  if (layout_.bits < leastBits) throw std::runtime_error("bad WAV sample size");
  for (const Encoding& row : encodings)
    if (row.tag == layout_.tag && row.bits == layout_.bits) convert_ = row.convert;
  if (!convert_)
    throw std::runtime_error("unsupported WAV encoding (format " + std::to_string(layout_.tag) + ", " +
                             std::to_string(layout_.bits) + " bit)");
  sampleBytes_ = layout_.bits / 8;
  frameBytes_ = sampleBytes_ * layout_.channels;
  rate = layout_.rate;
  frames = layout_.dataBytes / frameBytes_;
  exact = true;
}

bool WavDecoder::read(StereoBlock& block) {
  const std::uint64_t room = std::max<std::uint64_t>(1, bufferBytes / frameBytes_);
  const std::size_t count = std::size_t(std::min({frames - done_, std::uint64_t(blockFrames), room}));
  if (count == 0) return false;
  buffer_.resize(count * frameBytes_);
  if (bytes_->read(layout_.dataAt + done_ * frameBytes_, buffer_.data(), buffer_.size()) != buffer_.size())
    throw std::runtime_error(decodingFailed);
  block.resize(count);
  convert_(buffer_.data(), frameBytes_, count, block.left.data());
  if (layout_.channels > 1)
    convert_(buffer_.data() + sampleBytes_, frameBytes_, count, block.right.data());
  else
    block.right = block.left;
  done_ += count;
  return true;
}

}  // namespace synth::analysis
