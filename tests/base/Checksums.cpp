// What breaks if files written elsewhere no longer match their checksum, or Samples their hash.
#include <gtest/gtest.h>

#include "base/Crc32.h"
#include "base/Sha256.h"

namespace synth {
namespace {

TEST(Checksums, Crc32AnswersTheKnownWords) {
  EXPECT_EQ(crc32("", 0), 0u);
  EXPECT_EQ(crc32("123456789", 9), 0xCBF43926u);
  EXPECT_EQ(crc32("a", 1), 0xE8B7BE43u);
  const std::string text = "The quick brown fox jumps over the lazy dog";
  EXPECT_EQ(crc32(text.data(), text.size()), 0x414FA339u);
}

TEST(Checksums, Crc32GoesOnFromAnEarlierResult) {
  std::string bytes;
  for (int i = 0; i < 1000; i++) bytes += char(i * 7);
  const auto whole = crc32(bytes.data(), bytes.size());
  for (size_t cut : {size_t(0), size_t(1), size_t(7), size_t(64), size_t(999), size_t(1000)})
    EXPECT_EQ(crc32(bytes.data() + cut, bytes.size() - cut, crc32(bytes.data(), cut)), whole) << cut;
}

TEST(Checksums, Sha256AnswersTheKnownWords) {
  EXPECT_EQ(hexOf(sha256("")), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(hexOf(sha256("abc")), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(hexOf(sha256("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq")),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(hexOf(sha256(std::string(1000000, 'a'))),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Checksums, Sha256PadsEveryLength) {
  // The hash of the hashes of 0 to 130 letters, as another implementation has it.
  std::string all;
  for (size_t n = 0; n <= 130; n++) all += hexOf(sha256(std::string(n, 'a')));
  EXPECT_EQ(hexOf(sha256(all)), "5eee4c50e1b5ec4f1a47f34c25ca988850b49da7904f5ab1b3abc5cc0ae66ef9");
}

}  // namespace
}  // namespace synth
