// The frame around every command: help and guides, finding the command, the envelope and the exit status.
#include "cli/Help.h"
#include "support/Cli.h"

namespace synth::test {
namespace {

TEST(Frame, BareQuorelTeachesWhereToBegin) {
  const Reply bare = quorel({});
  EXPECT_EQ(bare.status, 0);
  EXPECT_EQ(bare.text.substr(0, 9), "# start: ");
  EXPECT_EQ(bare.text.back(), '\n');
  EXPECT_EQ(bare.text, quorel({"--compact"}).text);
  EXPECT_EQ(bare.text, quorel({"guide", "start"}).text);
  const Reply list = quorel({"guide"});
  EXPECT_EQ(list.text.substr(0, list.text.find('\n', 44) + 1),
            "Guides for agents (quorel guide TOPIC):\n  start       " +
                bare.text.substr(9, bare.text.find('\n') - 8));
}

TEST(Frame, GeneralHelpHasItsFixedLines) {
  const std::string text = quorel({"-h"}).text;
  EXPECT_EQ(text, quorel({"--help"}).text);
  EXPECT_EQ(text, quorel({"help"}).text);
  EXPECT_EQ(text, quorel({"--compact", "help", "--compact"}).text);
  EXPECT_EQ(
      text.find("quorel 0.1.0: Quorel projects, specs and audio from the command line.\n\n"
                "Every command prints one JSON envelope ({ok, command, data | error}); --compact prints it "
                "on one line.\n"
                "Projects are .quorel files; specs are JSON (quorel schema). Writes never replace a file "
                "without --force.\n\n"
                "Commands:\n"
                "  help              Show the commands, or one command's arguments and examples (text).\n"),
      0u);
  EXPECT_NE(
      text.find("\n  project new       Write a new project: blank (four tracks) or a built-in example.\n"),
      std::string::npos);
  EXPECT_TRUE(
      text.ends_with("\n\nsynth help COMMAND shows a command's arguments and examples; quorel commands lists "
                     "them as JSON. Start with "
                     "`quorel guide start`.\n"));
  for (const cli::Command& command : cli::registerCommands())
    EXPECT_NE(text.find("\n  " + command.name + " "), std::string::npos) << command.name;
}

TEST(Frame, HelpOfACommandNamesItsArguments) {
  const std::string text = quorel({"help", "project", "build"}).text;
  EXPECT_EQ(text.substr(0, text.find('\n') + 1),
            "quorel project build SPEC OUT [--force] [--dry-run] [--if-revision INT]\n");
  EXPECT_NE(text.find("\n\nBuild a JSON spec into a project file or @app.\n\n  spec          the spec\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("\n  --force       "), std::string::npos);
  EXPECT_NE(text.find("\n\nOutput: {wrote?, changes, warnings}\n\nExamples:\n  quorel project build "),
            std::string::npos);
  EXPECT_EQ(quorel({"help", "project", "set"}).text.find("quorel project set INPUT ASSIGNMENTS... ["), 0u);
  EXPECT_EQ(quorel({"help", "help"}).text.find("quorel help [COMMAND]...\n"), 0u);
  // --help wins over whatever else is wrong.
  EXPECT_EQ(quorel({"project", "build", "--bogus", "--help", "1", "2", "3"}).text, text);
  EXPECT_EQ(quorel({"project", "build", "--help"}).status, 0);
}

TEST(Frame, UnknownWordsAreUsageErrorsWithAWayOn) {
  struct Case {
    Words words;
    const char *command, *message, *hint;
  };
  const Case cases[] = {
      {{"projct", "new", "x"}, "projct", "Unknown command projct", "Did you mean: project new"},
      {{"versoin"}, "versoin", "Unknown command versoin", "Did you mean: version?"},
      {{"xyzzy"}, "xyzzy", "Unknown command xyzzy", "quorel help lists the commands"},
      {{"project"}, "project", "Unknown command project", "project commands: new "},
      {{"project", "nwe", "x"}, "project nwe", "Unknown command project nwe", "project commands: new "},
      {{"macro"}, "macro", "Unknown command macro", "macro commands: list add rename "},
      {{"app", "undoo"}, "app undoo", "Unknown command app undoo", ""},
      {{"", "new"}, "", "Unknown command ", ""},
      {{"--force"}, "--force", "Unknown command --force", ""},
      {{"help", "xyzzy"}, "help", "No command xyzzy", ""},
      {{"help", "projct", "new"}, "help", "No command projct new", "Did you mean: project new"},
      {{"guide", "cooking"}, "guide", "No guide cooking", "quorel guide lists them"},
  };
  for (const Case& c : cases) {
    const Reply reply = quorel(c.words);
    EXPECT_EQ(reply.status, 2) << c.message;
    EXPECT_EQ(reply.code(), "usage") << c.message;
    EXPECT_EQ(reply.string("command"), c.command);
    EXPECT_EQ(reply.message(), c.message);
    EXPECT_EQ(reply.hint().find(c.hint), 0u) << c.message << ": " << reply.hint();
  }
}

TEST(Frame, CompactIsAcceptedAnywhereAndPrintsOneLine) {
  TempFolder folder;
  writeAll(folder / "a.json", "{}");
  const Reply wide = quorel({"project", "validate", folder / "a.json"});
  const std::string line = R"({"ok":true,"command":"project validate","data":{"valid":true,"warnings":[]}})"
                           "\n";
  for (const Words& words : {Words{"--compact", "project", "validate", folder / "a.json"},
                             Words{"project", "--compact", "validate", folder / "a.json"},
                             Words{"project", "validate", folder / "a.json", "--compact", "--compact"}})
    EXPECT_EQ(quorel(words).text, line);
  EXPECT_EQ(wide.text,
            "{\n  \"ok\": true,\n  \"command\": \"project validate\",\n  \"data\": {\"valid\": true, "
            "\"warnings\": []}\n}\n");
}

TEST(Frame, EnvelopesKeepTheirKeysInOrder) {
  EXPECT_EQ(
      quorel({"version", "x", "--compact"}).text,
      R"({"ok":false,"command":"version","error":{"code":"usage","message":"Wrong number of arguments for version",)"
      R"("hint":"Usage: quorel version"}})"
      "\n");
  // Without a hint there is no such key.
  EXPECT_EQ(
      quorel({"params", "--scope", "song", "--compact"}).text,
      R"({"ok":false,"command":"params","error":{"code":"usage","message":"--scope is project, track or pad"}})"
      "\n");
  const Reply flag = quorel({"--version", "--compact"});
  EXPECT_EQ(flag.text, quorel({"version", "--compact"}).text);
  EXPECT_EQ(flag.string("command"), "version");
}

TEST(Frame, TheStatusFollowsFromTheCode) {
  for (const char* code :
       {"invalid_spec", "invalid_project", "unknown_key", "unknown_option", "unknown_parameter",
        "unknown_target", "unknown_preset", "unknown_sample", "out_of_range", "reserved_name",
        "invalid_preset", "invalid_audio", "render_failed", "app_error", "bad_reply"})
    EXPECT_EQ(cli::exitOf(code), 3) << code;
  for (const char* code :
       {"exists", "not_found", "read_failed", "write_failed", "app_not_running", "timeout"})
    EXPECT_EQ(cli::exitOf(code), 4) << code;
  EXPECT_EQ(cli::exitOf("usage"), 2);
  EXPECT_EQ(cli::exitOf("internal"), 1);
  EXPECT_EQ(cli::exitOf("conflict"), 5);
}

TEST(Frame, RunsFollowEachOtherWithoutTraces) {
  const std::string first = quorel({"commands"}).text;
  quorel({"project", "new"});
  quorel({"nonsense"});
  EXPECT_EQ(quorel({"commands"}).text, first);
}

}  // namespace
}  // namespace synth::test
