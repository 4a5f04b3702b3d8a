// schema and docs: the program's own description of itself.
#include <filesystem>

#include "base/AtomicFile.h"
#include "cli/Error.h"
#include "cli/Pages.h"
#include "cli/commands/Commands.h"
#include "cli/write/WritePath.h"
#include "spec/Schema.h"

namespace synth::cli::commands {
namespace {

namespace fs = std::filesystem;

Json printSchema(const Args&) { return spec::schema(); }

Json writeDocs(const Args& args) {
  const std::string folder = args.has("out") ? args.at("out") : "docs";
  const std::vector<Page> pages = referencePages();
  auto pathOf = [&](const Page& page) { return (fs::path(folder) / page.file).string(); };
  for (const Page& page : pages) refuseExisting(pathOf(page), args.has("force"));
  std::error_code failed;
  fs::create_directories(folder, failed);
  if (failed) throw CliError("write_failed", "Cannot create " + folder + ": " + failed.message());
  Json files = Json::array();
  for (const Page& page : pages) {
    std::string error;
    if (!writeAtomically(pathOf(page), page.text, error))
      throw CliError("write_failed", "Cannot write " + pathOf(page), error);
    files.push(pathOf(page));
  }
  Json o = Json::object();
  o.add("dir", folder).add("files", std::move(files));
  return o;
}

}  // namespace

Command schema() {
  return {"schema",   "Print the spec format as JSON Schema, with every parameter's range and options.",
          {},         "JSON Schema",
          false,      {"quorel schema --compact | jq .data > spec.schema.json"},
          printSchema};
}

Command docs() {
  return {"docs",
          "Write the reference as Markdown: commands, parameters, targets and the spec format. Generated "
          "from the "
          "same tables that the commands use.",
          {option("out", "dir", "folder to write into (default docs)"),
           flag("force", "replace files that exist")},
          "{dir, files}",
          true,
          {"quorel docs --out docs"},
          writeDocs};
}

}  // namespace synth::cli::commands
