// The command table's rows and the arguments that a handler receives. Parsing, help and `commands` read
// the declarations; nothing else knows a command's arguments.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "base/Json.h"

namespace synth::cli {

using json::Json;

struct ArgSpec {
  enum Kind { Positional, Option, Flag };
  Kind kind = Positional;
  std::string name;  // without leading dashes
  std::string type;  // for people, such as "path.quorel|@app"
  bool required = false;
  std::string help;
  bool repeatable = false;

  ArgSpec& needed() { return required = true, *this; }
  ArgSpec& many() { return repeatable = true, *this; }
};

inline ArgSpec positional(std::string name, std::string type, std::string help) {
  return {ArgSpec::Positional, std::move(name), std::move(type), false, std::move(help), false};
}
inline ArgSpec option(std::string name, std::string type, std::string help) {
  return {ArgSpec::Option, std::move(name), std::move(type), false, std::move(help), false};
}
inline ArgSpec flag(std::string name, std::string help) {
  return {ArgSpec::Flag, std::move(name), "", false, std::move(help), false};
}

// The arguments of a row, from single ones and groups that several rows share.
inline std::vector<ArgSpec> arguments(std::initializer_list<std::vector<ArgSpec>> groups) {
  std::vector<ArgSpec> all;
  for (const auto& group : groups) all.insert(all.end(), group.begin(), group.end());
  return all;
}

struct Args {
  std::vector<std::string> positionals;
  std::map<std::string, std::string> options;  // the last value
  std::map<std::string, bool> flags;
  std::map<std::string, std::vector<std::string>> lists;  // all values

  bool has(const std::string& name) const { return options.count(name) || flags.count(name); }
  const std::string& at(const std::string& name) const { return options.at(name); }
};

struct Command {
  std::string name;
  std::string summary;
  std::vector<ArgSpec> args;
  std::string output;
  bool writes = false;
  std::vector<std::string> examples;
  std::function<Json(const Args&)> run;
};

// The whole table in its order, filled once.
const std::vector<Command>& registerCommands();
const Command* commandByName(const std::string& name);

}  // namespace synth::cli
