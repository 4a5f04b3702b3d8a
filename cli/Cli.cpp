#include "cli/Cli.h"

#include <algorithm>
#include <cstdio>

#include "base/Scraps.h"
#include "base/Suggest.h"
#include "base/Text.h"
#include "cli/Args.h"
#include "cli/Error.h"
#include "cli/Guides.h"
#include "cli/Help.h"
#include "cli/PresetLookup.h"
#include "cli/RunContext.h"

namespace synth::cli {
namespace {

// The first words of two-word commands.
constexpr const char* groups[] = {"project", "app", "agents", "sample", "preset", "macro"};

std::vector<std::string> commandNames() {
  std::vector<std::string> names;
  for (const Command& command : registerCommands()) names.push_back(command.name);
  return names;
}

[[noreturn]] void unknownCommand(const std::vector<std::string>& args, std::string& name) {
  const std::string two = args.size() > 1 ? args[0] + " " + args[1] : "";
  for (const char* group : groups) {
    if (args[0] != group) continue;
    if (!two.empty()) name = two;
    std::string words;
    for (const Command& command : registerCommands())
      if (command.name.compare(0, args[0].size() + 1, args[0] + " ") == 0)
        words += " " + command.name.substr(args[0].size() + 1);
    if (words.empty()) break;
    const std::string hint = std::string(group) + " commands:" + words;
    throw usage("Unknown command " + name, hint);
  }
  std::string hint = two.empty() ? "" : suggest(two, commandNames());
  if (hint.empty()) hint = suggest(args[0], commandNames());
  throw usage("Unknown command " + name, hint.empty() ? "quorel help lists the commands" : hint);
}

// Finds the command and takes its words off the front.
const Command& findCommand(std::vector<std::string>& args, std::string& name) {
  name = args[0];
  if (args.size() > 1) {
    if (const Command* command = commandByName(args[0] + " " + args[1])) {
      name = command->name;
      args.erase(args.begin(), args.begin() + 2);
      return *command;
    }
  }
  if (const Command* command = commandByName(args[0])) {
    args.erase(args.begin());
    return *command;
  }
  unknownCommand(args, name);
}

std::string helpFor(const std::vector<std::string>& words) {
  if (words.empty()) return generalHelp();
  const std::string name = text::joined(words, " ");
  if (const Command* command = commandByName(name)) return commandHelp(*command);
  throw usage("No command " + name, suggest(name, commandNames()));
}

std::string guideFor(const std::vector<std::string>& words) {
  if (words.empty()) {
    std::string out = "Guides for agents (quorel guide TOPIC):\n";
    for (const Guide& guide : guides()) {
      std::string topic = guide.topic;
      topic.resize(std::max<size_t>(12, topic.size() + 1), ' ');
      out += "  " + topic + guide.description + "\n";
    }
    return out;
  }
  if (const Guide* guide = guideNamed(words[0])) return guide->text + "\n";
  throw usage("No guide " + words[0], "quorel guide lists them");
}

std::string printed(const Json& envelope, bool compact) {
  return (compact ? json::compact(envelope) : json::pretty(envelope)) + "\n";
}

Json failure(const std::string& name, const std::string& code, const std::string& message,
             const std::string& hint) {
  Json error = Json::object();
  error.add("code", code).add("message", message);
  if (!hint.empty()) error.add("hint", hint);
  Json envelope = Json::object();
  envelope.add("ok", false).add("command", name).add("error", std::move(error));
  return envelope;
}

Outcome runCommand(std::vector<std::string> args, std::string& name, bool compact) {
  const Command& command = findCommand(args, name);
  if (std::find(args.begin(), args.end(), "--help") != args.end()) return {commandHelp(command), 0};
  if (name == "help") return {helpFor(args), 0};
  if (name == "guide") return {guideFor(args), 0};
  Json data = command.run(parseArgs(command, args));
  Json envelope = Json::object();
  envelope.add("ok", true).add("command", name).add("data", std::move(data));
  return {printed(envelope, compact), 0};
}

// A run that has ended keeps nobody waiting.
struct EndOfRun {
  ~EndOfRun() { context().writing.release(); }
};

}  // namespace

int exitOf(const std::string& code) {
  if (code == "usage") return 2;
  if (code == "internal") return 1;
  if (code == "conflict") return 5;
  for (const char* file :
       {"exists", "not_found", "read_failed", "write_failed", "app_not_running", "timeout"})
    if (code == file) return 4;
  return 3;
}

RunContext& context() {
  static RunContext current;
  return current;
}

Outcome run(std::vector<std::string> args) {
  context() = RunContext{};
  resolvePresetsOfSpecs();
  const auto kept = std::remove(args.begin(), args.end(), "--compact");
  const bool compact = kept != args.end();
  args.erase(kept, args.end());
  if (args.empty()) {
    const Guide* start = guideNamed("start");
    return {start ? start->text + "\n" : generalHelp(), 0};
  }
  if (args[0] == "-h" || args[0] == "--help") return {generalHelp(), 0};
  if (args[0] == "--version") args[0] = "version";
  std::string name;
  const EndOfRun end;
  try {
    return runCommand(std::move(args), name, compact);
  } catch (const CliError& error) {
    return {printed(failure(name, error.code, error.message, error.hint), compact), error.exit};
  } catch (const std::exception& error) {
    return {printed(failure(name, "internal", error.what(), ""), compact), 1};
  }
}

int cliMain(int argc, char** argv) {
  removeTemporaryFilesOnSignals();
  const Outcome outcome = run({argv + std::min(argc, 1), argv + argc});
  // A full disk or a closed pipe must not pass for success.
  const bool written =
      std::fwrite(outcome.text.data(), 1, outcome.text.size(), stdout) == outcome.text.size();
  if (std::fflush(stdout) == 0 && written) return outcome.status;
  std::fputs("quorel: the result could not be written to standard output\n", stderr);
  return outcome.status ? outcome.status : 1;
}

}  // namespace synth::cli
