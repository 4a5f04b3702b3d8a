// What the tables say of themselves: version, parameters, targets, engines, examples.
#include <set>

#include "core/params/Registry.h"
#include "spec/Examples.h"
#include "support/Cli.h"

namespace synth::test {
namespace {

TEST(Reference, Version) {
  EXPECT_EQ(
      quorel({"version"}).line("data"),
      R"({"cli":"0.1.0","format_version":30,"params":264,"tracks":16,"max_pattern_length":1024,"patterns":256,)"
      R"("clips":1024,"notes":16384,"markers":64,"max_song_steps":1048576,"engines":["ANALOG","FM","TINE","ORGAN",)"
      R"("WAVETABLE","SWARM","VOICE","MACHINE","RIFT","PERC","SAMPLER"]})");
}

TEST(Reference, ParamsShowEveryRow) {
  const Reply all = quorel({"params"});
  EXPECT_EQ(all.number("data.count"), 264);
  std::set<std::string> keys;
  for (const Json& row : all.at("data.params").items()) {
    keys.insert(row.find("key")->string());
    std::string members;
    for (const Json::Member& member : row.members()) members += member.key + " ";
    EXPECT_EQ(members, "key scope group label unit min max kind options default applies target ");
    const double lo = row.find("min")->number(), hi = row.find("max")->number(),
                 value = row.find("default")->number();
    EXPECT_TRUE(lo <= value && value <= hi) << row.find("key")->string() << " " << value;
    const size_t options = row.find("options")->items().size();
    EXPECT_EQ(row.find("kind")->string() == "enum", options > 0) << row.find("key")->string();
    if (options) {
      EXPECT_EQ(hi, double(options - 1)) << row.find("key")->string();
    }
  }
  EXPECT_EQ(keys.size(), 264u);
  EXPECT_EQ(
      quorel({"params", "--key", "cutoff"}).line("data.params[0]"),
      R"({"key":"cutoff","scope":"track","group":"FILTER","label":"CUTOFF","unit":"Hz","min":20,"max":20000,)"
      R"("kind":"log","options":[],"default":20000,"applies":"melodic","target":"CUTOFF"})");
  EXPECT_EQ(quorel({"params", "--key", "limiter_ceiling"}).line("data.params[0].default"), "0.95");
  EXPECT_EQ(quorel({"params", "--key", "fx1_return"}).string("data.params[0].target"), "FX1_RETURN");
  EXPECT_EQ(quorel({"params", "--key", "sample_speed"}).string("data.params[0].kind"), "log");
}

TEST(Reference, ParamsFilter) {
  auto count = [](Words words) {
    words.insert(words.begin(), "params");
    const Reply reply = quorel(words);
    EXPECT_EQ(reply.number("data.count"), double(reply.count("data.params")));
    return reply.number("data.count");
  };
  EXPECT_EQ(count({"--scope", "project"}) + count({"--scope", "track"}) + count({"--scope", "pad"}), 264);
  EXPECT_EQ(count({"--group", "filter"}), count({"--group", "FILTER"}));
  EXPECT_EQ(count({"--group", "FILTER"}), 6);
  EXPECT_EQ(count({"--scope", "pad", "--group", "FILTER"}), 0);
  for (const char* kind : {"drums", "melodic"}) {
    const Reply reply = quorel({"params", "--applies", kind});
    for (const Json& row : reply.at("data.params").items())
      EXPECT_TRUE(row.find("applies")->string() == "any" || row.find("applies")->string() == kind);
  }
  EXPECT_LT(count({"--applies", "drums"}), count({"--applies", "melodic"}));
  const struct {
    Words words;
    int status;
    const char* message;
  } wrong[] = {
      {{"--scope", "song"}, 2, "--scope is project, track or pad"},
      {{"--scope", ""}, 2, "--scope is project, track or pad"},
      {{"--applies", "kits"}, 2, "--applies is drums or melodic"},
      {{"--applies="}, 2, "--applies is drums or melodic"},
      {{"--group", ""}, 2, "No group "},
      {{"--group", "FILTRE"}, 2, "No group FILTRE"},
      {{"--key", "cutof"}, 3, "Unknown parameter cutof"},
      {{"--key", ""}, 3, "Unknown parameter "},
  };
  for (const auto& c : wrong) {
    Words words = c.words;
    words.insert(words.begin(), "params");
    const Reply reply = quorel(words);
    EXPECT_EQ(reply.status, c.status) << c.message;
    EXPECT_EQ(reply.message(), c.message);
  }
  EXPECT_EQ(quorel({"params", "--key", "cutof"}).code(), "unknown_parameter");
  EXPECT_EQ(quorel({"params", "--key", "cutof"}).hint().find("Did you mean: cutoff"), 0u);
}

TEST(Reference, TargetsOfTracksBusesAndTheMaster) {
  const Reply reply = quorel({"targets"});
  EXPECT_EQ(reply.count("data.track_targets"), 47u);  // and one row for the Macros
  EXPECT_EQ(reply.count("data.bus_targets"), 98u);
  EXPECT_EQ(reply.count("data.master_targets"), 12u);
  int kit = 0, unlockable = 0, buses[3] = {};
  for (const Json& row : reply.at("data.track_targets").items()) {
    kit += row.find("kit")->boolean();
    unlockable += !row.find("lock")->boolean();
  }
  for (const Json& row : reply.at("data.bus_targets").items()) {
    const std::string bus = row.find("bus")->string();
    buses[bus == "I" ? 0 : bus == "II" ? 1 : 2]++;
  }
  EXPECT_EQ(unlockable, 2);
  EXPECT_GT(kit, 2);
  EXPECT_EQ(buses[0], 42);
  EXPECT_EQ(buses[1], 41);
  EXPECT_EQ(buses[2], 15);
  // Every name listed is taken back by a spec.
  std::string lanes;
  for (const Json& row : reply.at("data.track_targets").items())
    if (row.find("name")->string().find("..") == std::string::npos)
      lanes += R"({"track": 1, "lane": 0, "points": [], "target": ")" + row.find("name")->string() + "\"},";
  for (const Json& row : reply.at("data.bus_targets").items())
    lanes += R"({"lane": 0, "points": [], "bus": ")" + row.find("bus")->string() + R"(", "target": ")" +
             row.find("name")->string() + "\"},";
  std::string master;
  for (const Json& row : reply.at("data.master_targets").items())
    master += R"({"lane": 0, "points": [], "target": ")" + row.find("name")->string() + "\"},";
  lanes.pop_back();
  master.pop_back();
  EXPECT_EQ(verdictOn(parsed(R"({"lanes": [)" + lanes + R"(], "master": [)" + master + "]}")).message, "");
}

TEST(Reference, EnginesAndExamples) {
  const Reply engines = quorel({"engines"});
  EXPECT_EQ(engines.count("data.engines"), 11u);
  EXPECT_EQ(engines.count("data.pad_models"), 13u);
  for (const Json& engine : engines.at("data.engines").items()) {
    std::string members;
    for (const Json::Member& member : engine.members()) members += member.key + " ";
    EXPECT_EQ(members, "index name concept description params ");
    for (const char* key : {"engine1", "engine2", "engine3", "engine4"})
      EXPECT_NE(valueAt(engine, std::string("params.") + key).string(), "");
  }
  const Reply examples = quorel({"examples"});
  ASSERT_EQ(examples.count("data.examples"), size_t(spec::exampleCount()));
  EXPECT_EQ(examples.number("data.examples[0].index"), 0);
  EXPECT_EQ(examples.string("data.examples[0].name"), spec::exampleInfo(0).name);
}

}  // namespace
}  // namespace synth::test
