#include "cli/Help.h"

#include "base/Text.h"

namespace synth::cli {
namespace {

std::string padded(std::string text, size_t width) {
  text.resize(std::max(width, text.size() + 1), ' ');
  return text;
}

std::string firstSentence(const std::string& text) {
  for (size_t i = 0; i < text.size(); i++)
    if (text[i] == '.' && (i + 1 == text.size() || text[i + 1] == ' ')) return text.substr(0, i + 1);
  return text;
}

std::string form(const ArgSpec& arg) {
  std::string s = arg.kind == ArgSpec::Positional ? text::upper(arg.name) : "--" + arg.name;
  if (arg.kind == ArgSpec::Option) s += " " + text::upper(arg.type);
  if (!arg.required) s = "[" + s + "]";
  return arg.repeatable ? s + "..." : s;
}

}  // namespace

std::string usageLine(const Command& command) {
  std::string line = "quorel " + command.name;
  for (const ArgSpec& arg : command.args) line += " " + form(arg);
  return line;
}

std::string commandHelp(const Command& command) {
  std::string out = usageLine(command) + "\n\n" + command.summary + "\n";
  if (!command.args.empty()) out += "\n";
  for (const ArgSpec& arg : command.args)
    out += "  " + padded(arg.kind == ArgSpec::Positional ? arg.name : "--" + arg.name, 14) + arg.help + "\n";
  out += "\nOutput: " + command.output + "\n";
  if (!command.examples.empty()) out += "\nExamples:\n";
  for (const std::string& example : command.examples) out += "  " + example + "\n";
  return out;
}

std::string generalHelp() {
  std::string out =
      std::string("quorel ") + cliVersion +
      ": Quorel projects, specs and audio from the command line.\n\n"
      "Every command prints one JSON envelope ({ok, command, data | error}); --compact prints it on one "
      "line.\n"
      "Projects are .quorel files; specs are JSON (quorel schema). Writes never replace a file without "
      "--force.\n\nCommands:\n";
  for (const Command& command : registerCommands())
    out += "  " + padded(command.name, 18) + firstSentence(command.summary) + "\n";
  // "synth" stands here as it always has: agents know the line.
  return out +
         "\nsynth help COMMAND shows a command's arguments and examples; quorel commands lists them as JSON. "
         "Start with `quorel guide start`.\n";
}

}  // namespace synth::cli
