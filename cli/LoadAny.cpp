#include "cli/LoadAny.h"

#include <sys/stat.h>

#include <algorithm>

#include "base/ByteSource.h"
#include "base/ReadFile.h"
#include "cli/Error.h"
#include "core/ProjectFile.h"
#include "core/model/Validate.h"
#include "core/sounds/Macros.h"
#include "spec/Build.h"

namespace synth::cli {
namespace {

constexpr size_t specLimit = size_t(1) << 30;
constexpr const char* pathHint = "Check the path; projects are .quorel files, specs .json";

void requireFile(const std::string& path) {
  struct stat info;
  if (path.empty() || ::stat(path.c_str(), &info) != 0)
    throw CliError("not_found", "No such file: " + path, pathHint);
}

// Whether the first thing behind white space and comments opens an object.
bool startsLikeJson(std::string_view bytes) {
  for (;;) {
    const size_t at = bytes.find_first_not_of(" \t\r\n\v\f");
    if (at == bytes.npos) return false;
    bytes.remove_prefix(at);
    if (bytes.substr(0, 2) != "//") return bytes[0] == '{';
    bytes.remove_prefix(std::min(bytes.find('\n'), bytes.size()));
  }
}

std::string bytesOf(const std::string& path) {
  requireFile(path);
  std::string bytes, error;
  if (readFile(path, specLimit, bytes, error) != ReadResult::Ok)
    throw CliError("not_found", "Cannot read " + path, pathHint);
  return bytes;
}

Json parseSpec(const std::string& text) {
  std::string error;
  Json spec = json::parse(text, error);
  if (!error.empty())
    throw CliError("invalid_spec", error,
                   text.compare(0, 8, "SYNTHPRJ") == 0 ? "This is a project; a spec is JSON text"
                                                       : "`quorel schema` prints the spec format");
  return spec;
}

[[noreturn]] void cannotLoad(const std::string& path, const std::string& bytes, const std::string& error) {
  const bool version = error.compare(0, 19, "Unsupported project") == 0;
  std::string hint;
  if (version) hint = "Projects must be format version " + std::to_string(projectFormatVersion);
  if (startsLikeJson(bytes))
    hint = "This looks like a spec; first: quorel project build " + path + " song.quorel";
  throw CliError("invalid_project", "Cannot load " + path + ": " + error, hint);
}

ProjectPtr projectIn(const std::string& path, const std::string& bytes) {
  auto project = newProject();
  std::string error;
  if (!readProjectImage(bytes, *project, error)) cannotLoad(path, bytes, error);
  return project;
}

void refuseApp(const std::string& path) {
  if (path == appPath)
    throw CliError("app_not_running", "Quorel is not running (this version does not reach the app yet)",
                   "Work on .quorel files directly");
}

}  // namespace

bool isSpecPath(const std::string& path) {
  return path.size() > 5 && path.compare(path.size() - 5, 5, ".json") == 0;
}

bool isProject(const std::string& path) {
  if (path == appPath || isSpecPath(path) || path.ends_with(".quorel")) return true;
  // A pipe is not looked into: that would wait for a writer, and take from it what the reader needs.
  const auto file = FileBytes::open(path);
  if (!file) return false;
  char head[4096];
  const std::string_view begin(head, file->read(0, head, sizeof head));
  return begin.starts_with("SYNTHPRJ") || startsLikeJson(begin);
}

std::string foreignTargetHint(const Project& p, bool editing) {
  for (int t = 0; t < limits::tracks; t++) {
    int slot = 0, at = 0;
    if (!macros::foreignTarget(p.tracks[t], slot, at)) continue;
    const MacroTarget& target = p.tracks[t].macros[slot].targets[at];
    const param::Info& info = *param::find(target.param);
    const std::string name = macros::name(p.tracks[t], slot);
    const std::string pad = info.scope == param::ScopePad ? " --pad " + std::to_string(target.pad) : "";
    const std::string what = name + " moves " + info.key + ", which this sound does not have: ";
    if (!editing) return what + "take it out of the Macro's targets";
    return what + "quorel macro unmap FILE " + name + " " + info.key + pad + " --track " + std::to_string(t) +
           " first";
  }
  return "";
}

ProjectPtr loadProjectFile(const std::string& path) {
  refuseApp(path);
  return projectIn(path, bytesOf(path));
}

Json readSpec(const std::string& path) { return parseSpec(bytesOf(path)); }

ProjectPtr buildSpec(const Json& spec) {
  try {
    auto project = spec::build(spec);
    std::string error;
    if (!validateProject(*project, error))
      throw CliError("invalid_project", "The spec builds an invalid project: " + error,
                     foreignTargetHint(*project, false));
    return project;
  } catch (const spec::SpecError& error) {
    throw CliError(error.code(), error.message(), error.hint());
  }
}

ProjectPtr loadAny(const std::string& path) {
  refuseApp(path);
  if (isSpecPath(path)) return buildSpec(readSpec(path));
  const std::string bytes = bytesOf(path);
  if (startsLikeJson(bytes)) return buildSpec(parseSpec(bytes));
  return projectIn(path, bytes);
}

}  // namespace synth::cli
