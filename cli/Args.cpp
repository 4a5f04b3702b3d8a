#include "cli/Args.h"

#include <charconv>
#include <cmath>

#include "base/Suggest.h"
#include "base/Text.h"
#include "cli/Error.h"
#include "cli/Help.h"
#include "core/Names.h"

namespace synth::cli {
namespace {

const ArgSpec* declared(const Command& command, const std::string& name) {
  for (const ArgSpec& arg : command.args)
    if (arg.kind != ArgSpec::Positional && arg.name == name) return &arg;
  return nullptr;
}

const ArgSpec& optionRow(const Command& command, const std::string& name) {
  if (const ArgSpec* row = declared(command, name)) return *row;
  std::vector<std::string> names;
  for (const ArgSpec& arg : command.args)
    if (arg.kind != ArgSpec::Positional) names.push_back("--" + arg.name);
  std::string hint = suggest("--" + name, names);
  throw usage("Unknown option --" + name + " for " + command.name,
              hint.empty() ? "quorel help " + command.name : hint);
}

void countPositionals(const Command& command, const Args& args) {
  size_t required = 0, total = 0;
  bool repeatable = false;
  for (const ArgSpec& arg : command.args) {
    if (arg.kind != ArgSpec::Positional) continue;
    total++;
    required += arg.required;
    repeatable |= arg.repeatable;
  }
  const size_t given = args.positionals.size();
  if (given < required || (given > total && !repeatable))
    throw usage("Wrong number of arguments for " + command.name, "Usage: " + usageLine(command));
}

template <class T>
bool parsesWholly(const std::string& text, T& value) {
  auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
  return code == std::errc{} && end == text.data() + text.size() && !text.empty();
}

}  // namespace

Args parseArgs(const Command& command, const std::vector<std::string>& tokens) {
  Args args;
  for (size_t i = 0; i < tokens.size(); i++) {
    const std::string& token = tokens[i];
    if (token.size() <= 2 || token.compare(0, 2, "--") != 0) {
      args.positionals.push_back(token);
      continue;
    }
    const size_t equals = token.find('=');
    const bool inlined = equals != token.npos;
    const std::string name = token.substr(2, inlined ? equals - 2 : token.npos);
    const ArgSpec& row = optionRow(command, name);
    if (row.kind == ArgSpec::Flag) {
      if (inlined) throw usage("--" + name + " takes no value");
      args.flags[name] = true;
      continue;
    }
    if (!inlined && i + 1 >= tokens.size()) throw usage("--" + name + " needs a value (" + row.type + ")");
    const std::string value = inlined ? token.substr(equals + 1) : tokens[++i];
    if (!row.repeatable && args.options.count(name)) throw usage("--" + name + " given twice");
    args.options[name] = value;
    args.lists[name].push_back(value);
  }
  countPositionals(command, args);
  return args;
}

bool wholeNumber(const std::string& text, int& value) { return parsesWholly(text, value); }
bool decimal(const std::string& text, double& value) {
  return parsesWholly(text, value) && std::isfinite(value);
}

int intOption(const Args& args, const std::string& name, int fallback, int lo, int hi) {
  if (!args.has(name)) return fallback;
  int value = 0;
  if (wholeNumber(args.at(name), value) && value >= lo && value <= hi) return value;
  throw usage("--" + name + " must be an integer " + std::to_string(lo) + ".." + std::to_string(hi) +
              ", got " + args.at(name));
}

double numberOption(const Args& args, const std::string& name, double fallback, double lo, double hi) {
  if (!args.has(name)) return fallback;
  double value = 0;
  if (decimal(args.at(name), value) && value >= lo && value <= hi) return value + 0.0;
  throw usage("--" + name + " must be a number " + text::number(lo, false) + ".." + text::number(hi, false) +
              ", got " + args.at(name));
}

int trackOption(const Project& project, const std::string& wanted) {
  int index = 0;
  const bool digits = wanted.find_first_not_of("0123456789") == wanted.npos;
  if (digits && wholeNumber(wanted, index) && index < project.track_count) return index;
  const std::string name = text::upper(wanted);
  std::vector<std::string> names;
  for (int t = 0; t < project.track_count; t++) {
    names.emplace_back(nameText(project.tracks[t].name));
    if (!digits && names.back() == name) return t;
  }
  throw CliError("unknown_track", digits ? "No track " + wanted : "No track named " + wanted,
                 "Tracks: " + text::joined(names, ", "));
}

}  // namespace synth::cli
