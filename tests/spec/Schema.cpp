// The schema and the reader say the same: what the one takes the other takes, as far as a schema can know.
#include "spec/Schema.h"

#include "core/params/Registry.h"
#include "spec/Examples.h"
#include "spec/Export.h"
#include "support/Cli.h"
#include "support/RandomProject.h"
#include "support/SchemaCheck.h"

namespace synth::test {
namespace {

// Through text: bounds are 32-bit floats, which a validator reads as they print.
Json printed(const Json& value) { return parsed(json::compact(value)); }

TEST(SpecSchema, EveryExportAndExampleFits) {
  const Json schema = printed(spec::schema());
  SchemaCheck check(schema);
  for (u32 seed = 1; seed <= 40; seed++)
    for (bool full : {false, true})
      ASSERT_EQ(check.fault(printed(spec::toSpec(*randomProject(seed), full))), "") << "seed " << seed;
  for (int i = 0; i < spec::exampleCount(); i++) {
    EXPECT_EQ(check.fault(parsed(spec::exampleText(i))), "");
    EXPECT_EQ(check.fault(printed(spec::toSpec(*spec::makeExample(i), true))), "");
  }
  for (int i = 0; i < spec::fixtureCount(); i++)
    EXPECT_EQ(check.fault(parsed(spec::fixtureText(i))), "") << i;
  EXPECT_EQ(check.fault(parsed("{}")), "");
}

TEST(SpecSchema, StatesTheRangeOfEveryParameter) {
  const Json schema = printed(spec::schema());
  const Json& definitions = *schema.find("$defs");
  const char* const forms[] = {"projectParams", "trackParams", "padParams"};
  for (const param::Info& info : param::all()) {
    const Json* value = definitions.find(forms[info.scope])->find("properties")->find(info.key);
    ASSERT_NE(value, nullptr) << info.key;
    if (const Json* ways = value->find("anyOf")) value = &ways->items()[0];
    EXPECT_EQ(f32(value->find("minimum")->number()), info.min) << info.key;
    EXPECT_EQ(f32(value->find("maximum")->number()), info.max) << info.key;
    EXPECT_EQ(value->find("type")->string(), info.whole() ? "integer" : "number") << info.key;
  }
}

TEST(SpecSchema, RefusesWhatTheReaderRefusesForItsShapeKeyOrRange) {
  const Json schema = printed(spec::schema());
  SchemaCheck check(schema);
  const char* const wrong[] = {
      R"([])",
      R"({"trakcs": []})",
      R"({"name": 3})",
      R"({"project": {"bpm": 300}})",
      R"({"project": {"cutoff": 900}})",
      R"({"project": {"bpm": "fast"}})",
      R"({"tracks": {"index": 0}})",
      R"({"tracks": [{"name": "X"}]})",
      R"({"tracks": [{"index": 16}]})",
      R"({"tracks": [{"index": 1, "params": {"filter_type": "SOFT"}}]})",
      R"({"tracks": [{"index": 1, "params": {"engine": 11}}]})",
      R"({"tracks": [{"index": 1, "params": {"polyphony": 2.5}}]})",
      R"({"tracks": [{"index": 1, "macros": [{"value": 1}]}]})",
      R"({"tracks": [{"index": 1, "macros": [{"name": "X", "polarity": "both"}]}]})",
      R"({"tracks": [{"index": 1, "macros": [{"name": "TWO WORDS"}]}]})",
      R"({"tracks": [{"index": 1, "macros": [{"name": "THIRTEENCHARS"}]}]})",
      R"({"tracks": [{"index": 1, "sample": {"hash": "12"}}]})",
      R"({"tracks": [{"index": 1, "pins": "cutoff"}]})",
      R"({"pads": [{"index": 8}]})",
      R"({"patterns": [{"id": 0}]})",
      R"({"patterns": [{"track": 0, "length": 0}], "clips": [{"track": 0, "at": 0, "pattern": 0}]})",
      R"({"patterns": [{"track": 1, "notes": [[0, 60]]}], "clips": [{"track": 1, "at": 0, "pattern": 0}]})",
      R"({"patterns": [{"track": 1, "notes": [[0, 60, 128]]}], "clips": [{"track": 1, "at": 0, "pattern": 0}]})",
      R"({"patterns": [{"track": 1, "notse": []}], "clips": [{"track": 1, "at": 0, "pattern": 0}]})",
      R"({"patterns": [{"track": 1, "notes": [{"step": 0, "pitch": 60, "chance": 17}]}],
          "clips": [{"track": 1, "at": 0, "pattern": 0}]})",
      R"({"clips": [{"track": 0, "at": -1, "pattern": 0}]})",
      R"({"lanes": [{"track": 1, "target": "CUTOFF"}]})",
      R"({"lanes": [{"track": 1, "target": "CUTOFF", "points": [[0, 1.5]]}]})",
      R"({"lanes": [{"bus": "III", "target": null, "points": []}]})",
      R"({"master": [{"lane": 12, "target": null, "points": []}]})",
      R"({"markers": [{"name": "A"}]})",
      R"({"markers": [{"at": 0, "name": ""}]})",
      R"({"markers": [{"at": 0, "name": "\u00e9"}]})",
      R"({"tracks": [{"index": 1, "preset_name": "\u00e9"}]})",
      R"({"project": {"loop": [4]}})",
      R"({"lanes": [{"track": 1, "points": []}]})",
      R"({"lanes": [{"target": null, "points": []}]})",
      R"({"lanes": [{"track": 1, "bus": "I", "target": null, "points": []}]})",
      R"({"master": [{"points": []}]})",
      R"({"patterns": [{"track": 1, "notes": [{"step": 0}]}], "clips": [{"track": 1, "at": 0, "pattern": 0}]})",
      R"({"patterns": [{"track": 0, "notes": [{"step": 0, "pitch": 1, "pad": 1}]}],
          "clips": [{"track": 0, "at": 0, "pattern": 0}]})",
      R"({"patterns": [{"track": 1, "notes": [[0, 60, 100]], "locks": [{"step": 0, "target": "PAN"}]}],
          "clips": [{"track": 1, "at": 0, "pattern": 0}]})",
      R"({"buses": [{"pins": []}]})",
  };
  for (const char* text : wrong) {
    const Json spec = parsed(text);
    EXPECT_NE(check.fault(spec), "") << text;
    EXPECT_NE(verdictOn(spec).message, "") << text;
  }
}

}  // namespace
}  // namespace synth::test
