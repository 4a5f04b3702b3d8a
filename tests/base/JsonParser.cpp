// What breaks if a spec or a request is misread, or its author is sent to the wrong line.
#include <gtest/gtest.h>

#include <cmath>

#include "base/Json.h"

namespace synth::json {
namespace {

Json parsed(const std::string& text) {
  std::string error;
  Json value = parse(text, error);
  EXPECT_EQ(error, "") << text;
  return value;
}

std::string refusal(const std::string& text) {
  std::string error;
  EXPECT_TRUE(parse(text, error).isNull()) << text;
  return error;
}

TEST(JsonParser, ReadsEveryKindOfValueInOrder) {
  const Json v =
      parsed("\f\v {\"b\": [1, -2.5e1, 007, 1e999],\r\n\t\"a\": {\"c\": null}, \"t\": true, \"\": false}");
  EXPECT_EQ(compact(v), R"({"b":[1,-25,7,null],"a":{"c":null},"t":true,"":false})");
  EXPECT_EQ(compact(parsed("[]")), "[]");
  EXPECT_EQ(parsed("-0").number(), 0);
  EXPECT_TRUE(std::signbit(parsed("-0").number()));
  EXPECT_EQ(parsed("0x10").number(), 16);
  EXPECT_FALSE(parsed("0.1").float32());
}

TEST(JsonParser, TakesCommentsForWhiteSpace) {
  EXPECT_EQ(compact(parsed("// head\n[1, // one\n// two\n2]// tail")), "[1,2]");
  EXPECT_EQ(parsed("\"a // b\"").string(), "a // b");
  EXPECT_EQ(refusal("/* no */ 1").find("Bad JSON value"), 0u);
}

TEST(JsonParser, DecodesEscapes) {
  EXPECT_EQ(parsed(R"("\b\f\n\r\t\"\\\/\q")").string(), "\b\f\n\r\t\"\\/q");
  EXPECT_EQ(parsed(R"("\u0041\u00e9\u20AC")").string(), "A\xC3\xA9\xE2\x82\xAC");
  EXPECT_EQ(parsed(R"("\u007f\u0080\u07ff\u0800\uffff")").string(),
            "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF");
  EXPECT_EQ(parsed(R"("a\u0000b")").string(), std::string("a\0b", 3));
  // Each half of a surrogate pair stands for itself.
  EXPECT_EQ(parsed(R"("\ud83d\ude00")").string(), "\xED\xA0\xBD\xED\xB8\x80");
  EXPECT_EQ(parsed("\"\xF0\x9F\x98\x80\"").string(), "\xF0\x9F\x98\x80");
}

TEST(JsonParser, FindsTheFirstOfRepeatedKeys) {
  const Json v = parsed(R"({"a": 1, "b": 2, "a": 3})");
  EXPECT_EQ(v.find("a")->number(), 1);
  EXPECT_EQ(v.members().size(), 3u);
  EXPECT_EQ(v.find("A"), nullptr);
}

TEST(JsonParser, SaysWhatIsWrongAndWhere) {
  const struct {
    const char *text, *message;
  } cases[] = {
      {"", "Unexpected end of JSON at line 1, column 1"},
      {"  \n ", "Unexpected end of JSON at line 2, column 2"},
      {"[1, 2", "Unexpected end of JSON at line 1, column 6"},
      {"{\"a\":", "Unexpected end of JSON at line 1, column 6"},
      {"{a: 1}", "Expected a quoted key at line 1, column 2"},
      {"{\"a\": 1,}", "Expected a quoted key at line 1, column 9"},
      {"{\"a\": 1,\n \"b\": 2,\n \"c\"3}", "Expected : at line 3, column 5"},
      {"{\"a\": 1 \"b\": 2}", "Expected , or } at line 1, column 9"},
      {"[1 2]", "Expected , or ] at line 1, column 4"},
      {"[\"\xC3\xA9\", x]", "Bad JSON value at line 1, column 8"},
      {"// c\n[1,]", "Bad JSON value at line 2, column 4"},
      {"1 2", "Unexpected text after the JSON value at line 1, column 3"},
      {"{}}", "Unexpected text after the JSON value at line 1, column 3"},
  };
  for (auto& c : cases) EXPECT_EQ(refusal(c.text), c.message);
}

TEST(JsonParser, RefusesBadScalars) {
  for (const char* text : {"nul", "True", "+1", ".5", "NaN", "Infinity", "-", "'x'", "]", "\\"})
    EXPECT_EQ(refusal(text).find("Bad JSON value at line 1, column 1"), 0u) << text;
  for (const char* text : {"\"a", "\"a\\", "[\"a]"})
    EXPECT_EQ(refusal(text).find("Unterminated string at line 1, column "), 0u) << text;
  for (const char* text : {R"("\u12")", R"("\u12G4")", R"("\u-123")", R"("\u)"})
    EXPECT_EQ(refusal(text).find("Bad \\u escape at line 1, column "), 0u) << text;
}

TEST(JsonParser, NestsWithoutLimit) {
  const int depth = 1000000;
  std::string text;
  for (int i = 0; i < depth; i++) text += "[";
  EXPECT_EQ(refusal(text).find("Unexpected end of JSON"), 0u);
  for (int i = 0; i < depth; i++) text += "]";
  Json v = parsed(text);
  int levels = 1;
  for (const Json* inner = &v; !inner->items().empty(); inner = &inner->items()[0]) levels++;
  EXPECT_EQ(levels, depth);
  v = Json();

  text.clear();
  for (int i = 0; i < depth / 2; i++) text += "{\"a\":[";
  text += "1";
  for (int i = 0; i < depth / 2; i++) text += "]}";
  EXPECT_TRUE(parsed(text).isObject());
}

}  // namespace
}  // namespace synth::json
