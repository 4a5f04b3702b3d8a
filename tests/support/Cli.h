// Runs command lines in this process and looks into what they answer; reads specs that tests state as text.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/Json.h"
#include "base/Sha256.h"
#include "cli/Cli.h"
#include "cli/Error.h"
#include "cli/LoadAny.h"
#include "spec/Build.h"
#include "support/TempFolder.h"

namespace synth::test {

using json::Json;
using Words = std::vector<std::string>;

// A JSON text of a test; a slip in it fails the test.
inline Json parsed(const std::string& text) {
  std::string error;
  Json value = json::parse(text, error);
  EXPECT_EQ(error, "") << text;
  return value;
}

// The value at a path such as "data.tracks[0].name"; null where there is none.
inline const Json& valueAt(const Json& root, std::string_view path) {
  static const Json none;
  const Json* here = &root;
  while (here && !path.empty()) {
    if (path[0] == '[') {
      const size_t index = size_t(std::stoul(std::string(path.substr(1))));
      here = here->isArray() && index < here->items().size() ? &here->items()[index] : nullptr;
      path.remove_prefix(path.find(']') + 1);
    } else {
      const std::string_view key = path.substr(0, path.find_first_of(".["));
      here = here->isObject() ? here->find(key) : nullptr;
      path.remove_prefix(key.size());
    }
    if (!path.empty() && path[0] == '.') path.remove_prefix(1);
  }
  return here ? *here : none;
}

// What one command line printed, with the envelope parsed; text answers leave it null.
struct Reply {
  int status = -1;
  std::string text;
  Json envelope;

  const Json& at(std::string_view path) const { return valueAt(envelope, path); }
  std::string string(std::string_view path) const { return at(path).isString() ? at(path).string() : ""; }
  double number(std::string_view path) const { return at(path).isNumber() ? at(path).number() : NAN; }
  size_t count(std::string_view path) const { return at(path).isArray() ? at(path).items().size() : 0; }
  // One line of JSON, to compare a whole answer with.
  std::string line(std::string_view path) const { return json::compact(at(path)); }
  std::string code() const { return string("error.code"); }
  std::string message() const { return string("error.message"); }
  std::string hint() const { return string("error.hint"); }
};

inline Reply quorel(const Words& words) {
  const cli::Outcome outcome = cli::run(words);
  std::string error;
  Reply reply{outcome.status, outcome.text, json::parse(outcome.text, error)};
  return reply;
}

// A command line that is refused; of the message the beginning and of the hint a part need stand here.
struct Refusal {
  Words words;
  std::string message, hint = "";
};

// Each is refused with that code and its exit status when it follows the command's own words.
inline void expectRefusals(const std::string& code, const Words& command,
                           const std::vector<Refusal>& refusals) {
  for (const Refusal& r : refusals) {
    Words words = command;
    words.insert(words.end(), r.words.begin(), r.words.end());
    const Reply reply = quorel(words);
    EXPECT_EQ(reply.code(), code) << reply.text;
    EXPECT_EQ(reply.status, cli::exitOf(code)) << reply.text;
    EXPECT_EQ(reply.message().find(r.message), 0u) << r.message << ": " << reply.text;
    EXPECT_NE(reply.hint().find(r.hint), std::string::npos) << r.hint << ": " << reply.text;
  }
}

// The first mistake in a spec; all empty when it builds a valid Project.
struct Verdict {
  std::string code, message, hint;
};

inline Verdict verdictOn(const Json& spec) {
  try {
    cli::buildSpec(spec);
    return {};
  } catch (const cli::CliError& error) {
    return {error.code, error.what(), error.hint};
  }
}

// A mistake in a part of a spec and what is said of it; of the hint only a part need stand here.
struct Mistake {
  std::string part, message, hint = "";
};

// Each part is refused with that code when it stands between `head` and `tail`.
inline void expectMistakes(const std::string& code, const std::string& head, const std::string& tail,
                           const std::vector<Mistake>& mistakes) {
  for (const Mistake& m : mistakes) {
    const Verdict verdict = verdictOn(parsed(head + m.part + tail));
    EXPECT_EQ(verdict.code, code) << m.part;
    EXPECT_EQ(verdict.message, m.message) << m.part;
    EXPECT_NE(verdict.hint.find(m.hint), std::string::npos) << m.part << ": " << verdict.hint;
  }
}

inline ProjectPtr built(const std::string& spec) { return spec::build(parsed(spec)); }

// Stands for bytes in comparisons, so that a failure prints one line.
inline std::string digest(const std::string& bytes) {
  return std::to_string(bytes.size()) + " bytes " + hexOf(sha256(bytes)).substr(0, 12);
}
inline std::string digestAt(const std::string& path) { return digest(readAll(path)); }

// Every file below a folder with its digest, links by where they lead: to see that nothing was touched.
inline std::map<std::string, std::string> contentsOf(const std::string& folder) {
  namespace fs = std::filesystem;
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const std::string path = entry.path().string();
    files[path] = entry.is_symlink()     ? "-> " + fs::read_symlink(entry.path()).string()
                  : entry.is_directory() ? "folder"
                                         : digestAt(path);
  }
  return files;
}

}  // namespace synth::test
