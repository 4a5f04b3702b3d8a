// What breaks if the same value prints as other bytes, or as bytes that read back to another value.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>

#include "base/Json.h"
#include "support/RandomProject.h"

namespace synth::json {
namespace {

Json parsed(const std::string& text) {
  std::string error;
  Json value = parse(text, error);
  EXPECT_EQ(error, "") << text;
  return value;
}

std::string prettied(const char* text) { return pretty(parsed(text)); }

TEST(JsonPrinters, PrintNoWhiteSpaceWhenCompact) {
  EXPECT_EQ(compact(parsed(R"( {"a" : [ 1 , {"b": []} ] , "c":{} } )")), R"({"a":[1,{"b":[]}],"c":{}})");
}

TEST(JsonPrinters, EscapeOnlyWhatTheyMust) {
  EXPECT_EQ(compact(Json("a\"b\\c\nd\te\x01/\x7F\xC3\xA9")),
            "\"a\\\"b\\\\c\\nd\\u0009e\\u0001/\x7F\xC3\xA9\"");
  EXPECT_EQ(compact(Json(std::string("\0", 1))), "\"\\u0000\"");
  EXPECT_EQ(compact(Json::object().add("k\n", Json(true))), "{\"k\\n\":true}");
}

TEST(JsonPrinters, KeepFlatContainersOnOneLine) {
  EXPECT_EQ(prettied("[]"), "[]");
  EXPECT_EQ(prettied(R"({"a":1,"b":[1,2,[]]})"), "{\n  \"a\": 1,\n  \"b\": [1, 2, []]\n}");
  EXPECT_EQ(prettied(R"({"count":0,"changes":[]})"), R"({"count": 0, "changes": []})");
  EXPECT_EQ(prettied(R"({"ok":true,"command":"project diff","data":{"count":0,"changes":[]}})"),
            "{\n  \"ok\": true,\n  \"command\": \"project diff\",\n"
            "  \"data\": {\"count\": 0, \"changes\": []}\n}");
  EXPECT_EQ(prettied(R"([{"track":0,"notes":[[0,0,100]]}])"),
            "[\n  {\n    \"track\": 0,\n    \"notes\": [[0, 0, 100]]\n  }\n]");
  std::string notes = "[[0, 0, 100]";
  for (int i = 0; i < 60; i++) notes += ", [4, 0, 100]";
  EXPECT_EQ(prettied((notes + "]").c_str()), notes + "]");
}

TEST(JsonPrinters, BreakFlatObjectsFrom111Bytes) {
  // {"k": "..."} takes nine bytes around its text.
  auto flat = [](int bytes) { return "{\"k\": \"" + std::string(size_t(bytes - 9), 'x') + "\"}"; };
  auto broken = [](int bytes) { return "{\n  \"k\": \"" + std::string(size_t(bytes - 9), 'x') + "\"\n}"; };
  EXPECT_EQ(prettied(flat(110).c_str()), flat(110));
  EXPECT_EQ(prettied(flat(111).c_str()), broken(111));
  // One level down two bytes fewer fit, whatever the key is.
  auto inner = [&](int bytes) {
    return prettied(("{\"a long key\": " + flat(bytes) + ", \"z\": [[[]]]}").c_str());
  };
  EXPECT_NE(inner(108).find("\"a long key\": " + flat(108) + ",\n"), std::string::npos);
  EXPECT_NE(inner(109).find("\"a long key\": {\n    \"k\": \"x"), std::string::npos);
}

TEST(JsonPrinters, PrintNumbersAsShortAsTheyReadBack) {
  const struct {
    Json number;
    const char* text;
  } cases[] = {
      {128.0, "128"},
      {650, "650"},
      {-3.0, "-3"},
      {0.0, "0"},
      {-0.0, "-0"},
      {999999999999999.0, "999999999999999"},
      {1e15, "1e+15"},
      {-1e15, "-1e+15"},
      {NAN, "null"},
      {-INFINITY, "null"},
      {0.1, "0.1"},
      {0.1f, "0.1"},
      {double(0.1f), "0.10000000149011612"},
      {1e-5, "1e-05"},
      {0.1234567890123456, "0.1234567890123456"},
      {0.30000000000000004, "0.30000000000000004"},
      {1048575.9375, "1048575.9375"},
      {1048575.9375f, "1048575.94"},
      {5e-324, "5e-324"},
      {1.7976931348623157e308, "1.7976931348623157e+308"},
      {3.40282347e38f, "3.4028235e+38"},
  };
  for (auto& c : cases) EXPECT_EQ(compact(c.number), c.text);
}

TEST(JsonPrinters, KeepEverySixteenBitValueThroughFloatText) {
  for (int v = 0; v < 65536; v++) {
    const std::string text = compact(Json(float(v) / 65535.0f));
    ASSERT_LE(text.size(), 13u) << text;
    const double back = parsed(text).number();
    ASSERT_EQ(std::lround(back * 65535.0), v) << text;
    ASSERT_EQ(float(back), float(v) / 65535.0f) << text;
  }
}

TEST(JsonPrinters, KeepEveryFloat) {
  test::Random r(7);
  for (int i = 0; i < 200000; i++) {
    const float v = std::bit_cast<float>(r.next());
    if (!std::isfinite(v)) continue;
    ASSERT_EQ(std::bit_cast<u32>(float(parsed(compact(Json(v))).number())), std::bit_cast<u32>(v));
  }
}

Json randomJson(test::Random& r, int depth) {
  const int kind = r.below(depth > 0 ? 8 : 5);
  if (kind == 0) return Json();
  if (kind == 1) return Json(r.chance(50));
  if (kind == 2) return Json(r.between(-1000000, 1000000));
  if (kind == 3) return Json(std::ldexp(double(r.next()) - 2e9, r.between(-300, 300)));
  if (kind == 4) {
    std::string s;
    for (int n = r.below(12); n > 0; n--) s += char(r.below(256));
    return Json(s);
  }
  Json value = kind == 5 ? Json::array() : Json::object();
  for (int n = r.below(6); n > 0; n--)
    kind == 5 ? value.push(randomJson(r, depth - 1))
              : value.add("key " + std::to_string(n), randomJson(r, depth - 1));
  return value;
}

TEST(JsonPrinters, ReadBackWhateverTheyPrint) {
  test::Random r(11);
  for (int i = 0; i < 2000; i++) {
    const Json value = randomJson(r, 5);
    const std::string text = compact(value), lines = pretty(value);
    ASSERT_EQ(compact(parsed(text)), text);
    ASSERT_EQ(compact(parsed(lines)), text);
    ASSERT_EQ(pretty(parsed(lines)), lines);
  }
}

}  // namespace
}  // namespace synth::json
