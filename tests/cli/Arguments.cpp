// Tokens become arguments by what a command declares; what it does not declare is refused.
#include <algorithm>
#include <sstream>

#include "base/Text.h"
#include "cli/Args.h"
#include "support/Cli.h"

namespace synth::test {
namespace {

using namespace cli;

const Command& probe() {
  static const Command command{
      "probe",
      "",
      {positional("input", "path", "").needed(), positional("extra", "path", ""), option("pad", "int", ""),
       option("tag", "name", "").many(), flag("force", "")},
      "",
      false,
      {},
      {}};
  return command;
}

// What the parser made of the tokens, or "message | hint".
std::string parsedBy(const Command& command, const Words& tokens) {
  try {
    const Args args = parseArgs(command, tokens);
    std::string out = text::joined(args.positionals, ",");
    for (const auto& [name, value] : args.options) out += " " + name + "=" + value;
    for (const auto& [name, values] : args.lists)
      if (values.size() > 1) out += " " + name + ":" + text::joined(values, ",");
    for (const auto& [name, value] : args.flags) out += value ? " +" + name : " -" + name;
    return out;
  } catch (const CliError& error) {
    EXPECT_EQ(error.code, "usage");
    return std::string(error.what()) + " | " + error.hint;
  }
}

TEST(Arguments, Parsing) {
  const struct {
    Words tokens;
    const char* result;
  } cases[] = {
      {{"a"}, "a"},
      {{"a", "-1.5"}, "a,-1.5"},
      {{"-", "--"}, "-,--"},
      {{"--pad", "3", "a"}, "a pad=3"},
      {{"a", "--pad=3"}, "a pad=3"},
      {{"a", "--pad=3=4"}, "a pad=3=4"},
      {{"a", "--pad="}, "a pad="},
      {{"a", "--pad", "--force"}, "a pad=--force"},
      {{"a", "--pad", "-1"}, "a pad=-1"},
      {{"a", "--force", "b"}, "a,b +force"},
      {{"a", "--force", "--force"}, "a +force"},
      {{"a", "--tag", "x", "--tag=y"}, "a tag=y tag:x,y"},
      {{"a", "---"}, "Unknown option --- for probe | quorel help probe"},
      {{"a", "--pda", "3"}, "Unknown option --pda for probe | Did you mean: --pad?"},
      {{"a", "--input", "b"}, "Unknown option --input for probe | quorel help probe"},
      {{"a", "--xyzzy=1"}, "Unknown option --xyzzy for probe | quorel help probe"},
      {{"a", "--force=1"}, "--force takes no value | "},
      {{"a", "--force="}, "--force takes no value | "},
      {{"a", "--pad"}, "--pad needs a value (int) | "},
      {{"a", "--pad=3", "--pad=4"}, "--pad given twice | "},
      {{"a", "--pad", "3", "--pad", "3"}, "--pad given twice | "},
      {{},
       "Wrong number of arguments for probe | Usage: quorel probe INPUT [EXTRA] [--pad INT] [--tag NAME]... "
       "[--force]"},
      {{"a", "b", "c"},
       "Wrong number of arguments for probe | Usage: quorel probe INPUT [EXTRA] [--pad INT] [--tag NAME]... "
       "[--force]"},
  };
  for (const auto& c : cases) EXPECT_EQ(parsedBy(probe(), c.tokens), c.result);
}

TEST(Arguments, RepeatablePositionalsTakeTheRest) {
  const Command& set = *commandByName("project set");
  EXPECT_EQ(parsedBy(set, {"a.quorel", "--track", "1", "pan=-0.5", "bpm=1", "--in-place"}),
            "a.quorel,pan=-0.5,bpm=1 track=1 +in-place");
  EXPECT_EQ(parsedBy(set, {"a.quorel"})
                .find("Wrong number of arguments for project set | Usage: quorel project set "),
            0u);
  EXPECT_EQ(parsedBy(set, {"a.quorel", "b=1", "--track"}), "--track needs a value (index|name) | ");
}

TEST(Arguments, NumbersAreWholeTextsWithinBounds) {
  auto integer = [](const std::string& text) {
    try {
      Args args = parseArgs(probe(), {"a", "--pad", text});
      return std::to_string(intOption(args, "pad", 5, -2, 12));
    } catch (const CliError& error) {
      return std::string(error.what());
    }
  };
  for (const char* good : {"3", "-2", "12", "0"}) EXPECT_EQ(integer(good), good);
  for (const char* bad : {"13", "-3", "3.0", "3x", "x", "", " 3", "3 ", "99999999999999999999", "0x3", "1e1"})
    EXPECT_EQ(integer(bad), "--pad must be an integer -2..12, got " + std::string(bad));
  EXPECT_EQ(intOption(parseArgs(probe(), {"a"}), "pad", 5, 0, 7), 5);
  auto number = [](const std::string& text) {
    try {
      Args args = parseArgs(probe(), {"a", "--pad", text});
      return json::compact(Json(numberOption(args, "pad", 5, 0, 12)));
    } catch (const CliError& error) {
      return std::string(error.what());
    }
  };
  for (const char* good : {"3", "0.25", "12", "0"}) EXPECT_EQ(number(good), good);
  EXPECT_EQ(number("1e-2"), "0.01");
  for (const char* bad : {"12.0001", "-0.1", "nan", "inf", "-inf", "1e999", "x", "", "1,5", "2s"})
    EXPECT_EQ(number(bad), "--pad must be a number 0..12, got " + std::string(bad));
}

// The whole table in its order, also of commands that are still to come; * marks those that write.
constexpr const char* wholeTable =
    "help, guide, commands, version, params, targets, schema, examples, project new*, engines, docs*, "
    "project history, project restore*, app status, app undo*, app play, app stop, app save*, "
    "agents install*, agents init*, agents doctor, mcp serve, project inspect, project export, "
    "project build*, project set*, project diff, project validate, macro list, macro add*, "
    "macro rename*, macro remove*, macro map*, macro unmap*, macro set*, analyze, grid, spectrogram*, "
    "partials, character, pitch, chords, listen*, project grid, transcribe, match*, phrase*, "
    "phrase fixtures*, session init*, session status, session record, separate*, compare, render*, "
    "sample import*, sample list, preset list, preset families, preset demo*, preset show, "
    "preset save*, preset apply*, preset import*, preset rename*, preset delete*";

TEST(CommandTable, HasItsRowsInOrder) {
  Words rows;
  std::istringstream all(wholeTable);
  for (std::string row; std::getline(all, row, ',');) rows.push_back(row.substr(row.find_first_not_of(' ')));
  ASSERT_EQ(rows.size(), 65u);
  const Reply reply = quorel({"commands"});
  EXPECT_EQ(reply.line("data.exit_codes"),
            R"({"0":"ok","1":"internal error","2":"usage","3":"invalid input","4":"file problem"})");
  EXPECT_EQ(reply.string("data.envelope"),
            "{ok, command, data} or {ok:false, command, error:{code, message, hint}}");
  const Json listed = reply.at("data.commands");
  ASSERT_EQ(listed.items().size(), registerCommands().size());
  size_t next = 0;
  for (size_t i = 0; i < listed.items().size(); i++) {
    const Json& row = listed.items()[i];
    const std::string name = row.find("name")->string();
    const std::string marked = row.find("writes")->boolean() ? name + "*" : name;
    while (next < 65 && marked != rows[next]) next++;
    ASSERT_LT(next, 65u) << marked;
    EXPECT_EQ(row.find("args")->items().size(), registerCommands()[i].args.size()) << name;
    std::string keys;
    for (const Json::Member& member : row.members()) keys += member.key + " ";
    EXPECT_EQ(keys, "name summary writes output args examples ");
  }
  const auto set = std::find_if(listed.items().begin(), listed.items().end(),
                                [](const Json& row) { return row.find("name")->string() == "project set"; });
  const std::string assignments = json::compact(valueAt(*set, "args[1]"));
  EXPECT_EQ(assignments.find(
                R"({"name":"assignments","kind":"positional","type":"KEY=VALUE","required":true,"help":")"),
            0u);
  EXPECT_TRUE(assignments.ends_with(R"(,"repeatable":true})"));
}

// A command line as a shell splits it, without the program's name and what goes into a file.
Words wordsOf(std::string line) {
  line = line.substr(0, std::min(line.find(" > "), line.find(" | ")));
  Words words{""};
  bool quoted = false;
  for (char c : line) {
    if (c == '"')
      quoted = !quoted;
    else if (c == ' ' && !quoted)
      words.emplace_back();
    else
      words.back() += c;
  }
  words.erase(words.begin());
  std::erase(words, "--compact");
  return words;
}

TEST(CommandTable, ExamplesFitTheirRows) {
  for (const Command& command : registerCommands()) {
    EXPECT_FALSE(command.examples.empty()) << command.name;
    EXPECT_TRUE(command.summary.ends_with('.')) << command.name;
    for (const std::string& example : command.examples) {
      EXPECT_EQ(example.find("quorel "), 0u) << example;
      Words words = wordsOf(example);
      if (words[0] == "--version") words = {"version"};
      const size_t own = size_t(1 + std::count(command.name.begin(), command.name.end(), ' '));
      EXPECT_EQ(text::joined(std::span(words).first(own), " "), command.name) << example;
      words.erase(words.begin(), words.begin() + long(own));
      EXPECT_EQ(parsedBy(command, words).find(" | "), std::string::npos) << example;
    }
  }
}

}  // namespace
}  // namespace synth::test
