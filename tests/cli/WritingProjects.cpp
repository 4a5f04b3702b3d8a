// project new, build and validate: what is written, what is refused, and that a refusal touches nothing.
#include <fcntl.h>
#include <sys/stat.h>

#include "core/Names.h"
#include "core/ProjectFile.h"
#include "core/model/Defaults.h"
#include "spec/Examples.h"
#include "support/Cli.h"

namespace synth::test {
namespace {

constexpr const char* tune =
    R"({"name": "Tune", "project": {"track_count": 2}, "patterns": [{"track": 1, "notes": [[0, 60, 100]]}],
        "clips": [{"track": 1, "at": 0, "pattern": 0}]})";

ProjectPtr loaded(const std::string& path) {
  auto project = newProject();
  std::string error;
  EXPECT_TRUE(loadProject(path, *project, error)) << error;
  return project;
}

TEST(ProjectNew, WritesABlankProjectOrAnExample) {
  TempFolder folder;
  const std::string path = folder / "song.quorel";
  const Reply reply = quorel({"project", "new", path, "--name", "Night \xC3\x89"});
  EXPECT_EQ(reply.status, 0) << reply.text;
  EXPECT_EQ(reply.line("data"),
            R"({"wrote":)" + json::compact(Json(path)) +
                R"(,"project":{"name":"Night É","bpm":120,"track_count":4,"song_steps":16,"tracks":)" +
                reply.line("data.project.tracks") + R"(,"patterns":4,"clips":4,"notes":0}})");
  auto expected = makeProject();
  setProjectName(*expected, "Night \xC3\x89");
  EXPECT_EQ(digestAt(path), digest(projectImage(*expected)));
  EXPECT_EQ(reply.count("data.project.tracks"), 4u);
  const Reply example = quorel({"project", "new", folder / "example.quorel", "--example", "0"});
  EXPECT_EQ(digestAt(folder / "example.quorel"), digest(projectImage(*spec::makeExample(0))));
  EXPECT_EQ(example.string("data.project.name"), spec::exampleInfo(0).name);
  EXPECT_GT(example.number("data.project.notes"), 0);
}

TEST(ProjectNew, RefusalsTouchNothing) {
  TempFolder folder;
  writeAll(folder / "song.quorel", "mine");
  writeAll(folder / "file", "mine");
  const auto before = contentsOf(folder.path());
  const std::string last = std::to_string(spec::exampleCount() - 1);
  expectRefusals("exists", {"project", "new"},
                 {{{folder / "song.quorel"}, folder / "song.quorel exists"},
                  {{"@app"}, "@app is the project open in Quorel"}});
  expectRefusals(
      "usage", {"project", "new"},
      {{{folder / "a.quorel", "--name", std::string(64, 'x')}, "--name is up to 63 bytes"},
       {{folder / "song.quorel", "--force", "--name", std::string(64, 'x')}, "--name is up to 63 bytes"},
       {{folder / "a.json"}, "The result is a project, not a spec"},
       {{folder / "a.quorel", "--example", "99"}, "--example must be an integer 0.." + last + ", got 99"},
       {{folder / "song.quorel", "--force", "--example", "x"},
        "--example must be an integer 0.." + last + ", got x"}});
  expectRefusals("write_failed", {"project", "new"},
                 {{{folder / "no/such/a.quorel"}, "Cannot save " + (folder / "no/such/a.quorel: ")},
                  {{folder / "file/a.quorel"}, "Cannot save " + (folder / "file/a.quorel: ")},
                  {{""}, "Cannot save : "}});
  EXPECT_EQ(quorel({"project", "new", folder / "song.quorel"}).hint(),
            "Pass --force to replace it (or write to another path)");
  EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST(ProjectBuild, WritesWhatTheSpecSays) {
  TempFolder folder;
  const std::string spec = folder / "tune.json", path = folder / "tune.quorel";
  writeAll(spec, tune);
  const Reply reply = quorel({"project", "build", spec, path});
  EXPECT_EQ(reply.status, 0) << reply.text;
  EXPECT_EQ(digestAt(path), digest(projectImage(*built(tune))));
  EXPECT_EQ(
      reply.line("data"),
      R"({"wrote":)" + json::compact(Json(path)) +
          R"(,"changes":[{"path":"name","from":"","to":"Tune"},{"path":"project.track_count","from":16,"to":2,"shown":"2"},)"
          R"({"path":"patterns[1/0]","added":{"track":1,"id":0,"notes":[[0,60,100]]}},)"
          R"({"path":"clips[1@0]","added":{"track":1,"at":0,"pattern":0}}],"warnings":[]})");
  EXPECT_EQ(quorel({"project", "build", spec, folder / "again.quorel"}).status, 0);
  EXPECT_EQ(digestAt(folder / "again.quorel"), digestAt(path));
}

TEST(ProjectBuild, RefusalsTouchNothing) {
  TempFolder folder;
  writeAll(folder / "tune.json", tune);
  writeAll(folder / "wrong.json", R"({"project": {"bpm": 1}})");
  writeAll(folder / "broken.json", "{\n  \"name\": \"A\",\n  \"project\" {}}");
  writeAll(folder / "song.quorel", "mine");
  const auto before = contentsOf(folder.path());
  expectRefusals("exists", {"project", "build"},
                 {{{folder / "tune.json", folder / "song.quorel"}, folder / "song.quorel exists"},
                  {{folder / "tune.json", "@app"}, "@app is the project open in Quorel"}});
  expectRefusals("out_of_range", {"project", "build"},
                 {{{folder / "wrong.json", folder / "song.quorel", "--force"}, "Out of range: bpm=1"},
                  {{folder / "wrong.json", folder / "a.quorel"}, "Out of range: bpm=1"}});
  expectRefusals("invalid_spec", {"project", "build"},
                 {{{folder / "broken.json", folder / "a.quorel"}, "Expected : at line 3, column 13"}});
  expectRefusals("not_found", {"project", "build"},
                 {{{folder / "none.json", folder / "a.quorel"}, "No such file: " + (folder / "none.json")}});
  expectRefusals(
      "write_failed", {"project", "build"},
      {{{folder / "tune.json", folder / "no/a.quorel"}, "Cannot save " + (folder / "no/a.quorel: ")}});
  expectRefusals(
      "usage", {"project", "build"},
      {{{folder / "tune.json", folder / "a.quorel", "--if-revision", "3"}, ""},
       {{folder / "tune.json", folder / "a.quorel", "--if-revision", "x", "--dry-run"}, "--if-revision must"},
       {{folder / "tune.json", folder / "tune.json", "--force"}, "The result is a project, not a spec"},
       {{folder / "tune.json"}, "Wrong number of arguments for project build"}});
  EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST(ProjectBuild, DryRunsListTheChangesAgainstWhatIsThere) {
  TempFolder folder;
  writeAll(folder / "tune.json", tune);
  ASSERT_EQ(quorel({"project", "build", folder / "tune.json", folder / "song.quorel"}).status, 0);
  writeAll(folder / "next.json", std::string(tune).replace(std::string(tune).find("60"), 2, "62"));
  const auto before = contentsOf(folder.path());
  const Reply same = quorel({"project", "build", folder / "tune.json", folder / "song.quorel", "--dry-run"});
  EXPECT_EQ(same.line("data"), R"({"changes":[],"warnings":[]})");
  const Reply next = quorel({"project", "build", folder / "next.json", folder / "song.quorel", "--dry-run"});
  EXPECT_EQ(next.line("data.changes"), R"([{"path":"patterns[1/0].notes","removed":[0,60,100]},)"
                                       R"({"path":"patterns[1/0].notes","added":[0,62,100]}])");
  const Reply fresh =
      quorel({"project", "build", folder / "tune.json", folder / "none.quorel", "--dry-run", "--force"});
  EXPECT_EQ(fresh.count("data.changes"), 4u);
  EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST(ProjectBuild, FilesKeepTheirModeAndNewOnesFollowTheUmask) {
  TempFolder folder;
  const std::string path = folder / "song.quorel";
  auto mode = [](const std::string& file) {
    struct stat info {};
    return ::stat(file.c_str(), &info) == 0 ? int(info.st_mode & 07777) : -1;
  };
  const mode_t old = ::umask(027);
  ASSERT_EQ(quorel({"project", "new", path}).status, 0);
  EXPECT_EQ(mode(path), 0640);
  ::umask(0);
  ASSERT_EQ(quorel({"project", "new", folder / "open.quorel"}).status, 0);
  EXPECT_EQ(mode(folder / "open.quorel"), 0666);
  ::chmod(path.c_str(), 0604);
  ::umask(077);
  ASSERT_EQ(quorel({"project", "new", path, "--force"}).status, 0);
  EXPECT_EQ(mode(path), 0604);
  ::umask(old);
}

TEST(ProjectBuild, LinksStayLinksAndTheirTargetIsReplaced) {
  namespace fs = std::filesystem;
  TempFolder folder;
  fs::create_directory(folder / "real");
  ASSERT_EQ(quorel({"project", "new", folder / "real/song.quorel"}).status, 0);
  fs::create_symlink("real/song.quorel", folder / "link.quorel");
  writeAll(folder / "tune.json", tune);
  EXPECT_EQ(quorel({"project", "build", folder / "tune.json", folder / "link.quorel"}).code(), "exists");
  const Reply reply = quorel({"project", "build", folder / "tune.json", folder / "link.quorel", "--force"});
  EXPECT_EQ(reply.status, 0) << reply.text;
  EXPECT_TRUE(fs::is_symlink(folder / "link.quorel"));
  EXPECT_EQ(fs::read_symlink(folder / "link.quorel"), "real/song.quorel");
  EXPECT_EQ(digestAt(folder / "real/song.quorel"), digest(projectImage(*built(tune))));
  EXPECT_EQ(quorel({"project", "history", folder / "link.quorel"}).count("data.snapshots"), 1u);
  ASSERT_EQ(quorel({"project", "restore", folder / "link.quorel"}).status, 0);
  EXPECT_TRUE(fs::is_symlink(folder / "link.quorel"));
  EXPECT_EQ(digestAt(folder / "real/song.quorel"), digest(projectImage(*makeProject())));
  // Neither a folder nor a device is replaced.
  const auto before = contentsOf(folder.path());
  EXPECT_EQ(quorel({"project", "new", folder / "real", "--force"}).code(), "write_failed");
  ASSERT_EQ(::mkfifo((folder / "pipe.wav").c_str(), 0600), 0);
  EXPECT_NE(
      quorel({"render", folder / "tune.json", "--out", folder / "pipe.wav", "--force", "--tail", "0"}).status,
      0);
  EXPECT_TRUE(fs::is_fifo(folder / "pipe.wav"));
  fs::remove(folder / "pipe.wav");
  EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST(Loading, TellsWhatIsWrongWithAPath) {
  TempFolder folder;
  ASSERT_EQ(quorel({"project", "new", folder / "song.quorel"}).status, 0);
  std::string image = readAll(folder / "song.quorel");
  writeAll(folder / "cut.quorel", image.substr(0, 100));
  image[8] = 29;
  writeAll(folder / "old.quorel", image);
  writeAll(folder / "notes.txt", "hello");
  writeAll(folder / "empty.quorel", "");
  writeAll(folder / "broken.json", "{\"name\": }");
  writeAll(folder / "project.json", readAll(folder / "song.quorel"));
  std::filesystem::create_directory(folder / "dir");
  constexpr const char* check = "Check the path; projects are .quorel files, specs .json";
  const struct {
    std::string name;
    int status;
    const char *code, *message, *hint;
  } cases[] = {
      {"none.quorel", 4, "not_found", "No such file: ", check},
      {"dir", 4, "not_found", "Cannot read ", check},
      {"cut.quorel", 3, "invalid_project", "Cannot load ", ""},
      {"notes.txt", 3, "invalid_project", "Cannot load ", ""},
      {"empty.quorel", 3, "invalid_project", "Cannot load ", ""},
      {"old.quorel", 3, "invalid_project", "Cannot load ", "Projects must be format version 30"},
      {"broken.json", 3, "invalid_spec", "Bad JSON value at line 1, column 10",
       "`quorel schema` prints the spec format"},
      {"project.json", 3, "invalid_spec", "", ""},
  };
  for (const auto& c : cases)
    for (const Words& words : {Words{"project", "validate"}, Words{"render", "--tail", "0"}}) {
      Words line = words;
      line.push_back(folder / c.name);
      const Reply reply = quorel(line);
      EXPECT_EQ(reply.status, c.status) << c.name;
      EXPECT_EQ(reply.code(), c.code) << c.name;
      EXPECT_EQ(reply.message().find(c.message), 0u) << reply.message();
      EXPECT_NE(reply.hint().find(c.hint), std::string::npos) << c.name << ": " << reply.hint();
    }
  EXPECT_EQ(quorel({"project", "validate", folder / "cut.quorel"})
                .message()
                .find("Cannot load " + (folder / "cut.quorel: ")),
            0u);
}

TEST(Loading, GoesByWhatAFileIs) {
  TempFolder folder;
  writeAll(folder / "tune", std::string(" \n// a song\n\t // of one note\n") + tune);
  writeAll(folder / "tune.json", tune);
  EXPECT_EQ(quorel({"project", "validate", folder / "tune"}).line("data"), R"({"valid":true,"warnings":[]})");
  ASSERT_EQ(quorel({"project", "build", folder / "tune", folder / "song.anything"}).status, 0);
  EXPECT_EQ(quorel({"project", "validate", folder / "song.anything"}).line("data.valid"), "true");
  EXPECT_TRUE(sameBytes(*loaded(folder / "song.anything"), *built(tune)));
}

}  // namespace
}  // namespace synth::test
