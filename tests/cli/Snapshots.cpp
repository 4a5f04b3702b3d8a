// The way back: every replaced project is kept, listed newest first and put back byte for byte.
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>

#include "support/Cli.h"

namespace synth::test {
namespace {

namespace fs = std::filesystem;

// A project at a path whose tempo is then set again and again.
std::string songIn(const TempFolder& folder, const std::string& name = "song.quorel") {
  EXPECT_EQ(quorel({"project", "new", folder / name}).status, 0);
  return folder / name;
}

Reply tempo(const std::string& path, int bpm) {
  return quorel({"project", "set", path, "bpm=" + std::to_string(bpm), "--in-place"});
}

TEST(Snapshots, StandBesideTheProjectUnderItsNameAndTime) {
  TempFolder folder;
  const std::string path = songIn(folder, "my song.v2.quorel"), first = digestAt(path);
  EXPECT_FALSE(fs::exists(folder / ".quorel-history"));
  const Reply reply = quorel({"project", "new", path, "--force", "--name", "B"});
  const std::string snapshot = reply.string("data.snapshot");
  EXPECT_EQ(fs::path(snapshot).parent_path(), folder / ".quorel-history");
  std::string name = fs::path(snapshot).filename();
  ASSERT_EQ(name.size(), std::string("my song.v2-20261009-120000.quorel").size());
  std::replace_if(
      name.begin() + 11, name.end(), [](char c) { return c >= '0' && c <= '9'; }, '9');
  EXPECT_EQ(name, "my song.v2-99999999-999999.quorel");
  EXPECT_EQ(digestAt(snapshot), first);
  EXPECT_EQ(reply.string("data.undo").find("quorel project restore "), 0u);
  const Reply history = quorel({"project", "history", path});
  EXPECT_EQ(history.line("data.snapshots"),
            R"([{"path":)" + json::compact(Json(snapshot)) + R"(,"changes":1}])");
}

TEST(Snapshots, WritesOfOneSecondAreAllKeptInOrder) {
  TempFolder folder;
  const std::string path = songIn(folder);
  std::vector<std::string> states{digestAt(path)};
  for (int i = 0; i < 12; i++) {
    ASSERT_EQ(tempo(path, 60 + i).status, 0);
    states.push_back(digestAt(path));
  }
  const Reply history = quorel({"project", "history", path});
  ASSERT_EQ(history.count("data.snapshots"), 12u);
  for (size_t i = 0; i < 12; i++)
    EXPECT_EQ(digestAt(history.string("data.snapshots[" + std::to_string(i) + "].path")), states[11 - i])
        << i;
}

TEST(Snapshots, RestoringTwiceReturnsToTheStart) {
  TempFolder folder;
  const std::string path = songIn(folder);
  tempo(path, 90);
  tempo(path, 100);
  const std::string now = digestAt(path);
  const Reply once = quorel({"project", "restore", path});
  EXPECT_EQ(once.line("data.changes"), R"([{"path":"project.bpm","from":100,"to":90,"shown":"90.00"}])");
  EXPECT_EQ(once.string("data.wrote"), path);
  EXPECT_EQ(digestAt(path), digestAt(once.string("data.restored")));
  EXPECT_EQ(digestAt(once.string("data.snapshot")), now);
  const Reply twice = quorel({"project", "restore", path});
  EXPECT_EQ(twice.string("data.restored"), once.string("data.snapshot"));
  EXPECT_EQ(digestAt(path), now);
  EXPECT_EQ(quorel({"project", "history", path}).count("data.snapshots"), 4u);
}

TEST(Snapshots, AnyOneIsRestoredByPathOrName) {
  TempFolder folder;
  const std::string path = songIn(folder), first = digestAt(path);
  tempo(path, 90);
  tempo(path, 100);
  const std::string oldest = quorel({"project", "history", path}).string("data.snapshots[1].path");
  const auto before = contentsOf(folder.path());
  const Reply dry = quorel({"project", "restore", path, "--snapshot", oldest, "--dry-run"});
  EXPECT_EQ(dry.count("data.changes"), 1u);
  EXPECT_TRUE(dry.at("data.wrote").isNull());
  EXPECT_EQ(contentsOf(folder.path()), before);
  ASSERT_EQ(quorel({"project", "restore", path, "--snapshot", fs::path(oldest).filename()}).status, 0);
  EXPECT_EQ(digestAt(path), first);
  tempo(path, 110);
  ASSERT_EQ(quorel({"project", "restore", path, "--snapshot", oldest}).status, 0);
  EXPECT_EQ(digestAt(path), first);
}

TEST(Snapshots, ASongThatNoLongerLoadsOrIsGoneComesBack) {
  TempFolder folder;
  const std::string path = songIn(folder), first = digestAt(path);
  tempo(path, 90);
  writeAll(path, "torn");
  EXPECT_EQ(quorel({"project", "history", path}).line("data.snapshots[0].changes"), "null");
  const Reply reply = quorel({"project", "restore", path});
  EXPECT_EQ(reply.status, 0) << reply.text;
  EXPECT_EQ(reply.line("data.changes"), "[]");
  EXPECT_EQ(digestAt(path), first);
  EXPECT_EQ(readAll(reply.string("data.snapshot")), "torn");
  fs::remove(path);
  EXPECT_EQ(quorel({"project", "history", path}).count("data.snapshots"), 2u);
  // The newest no longer loads: it is refused, another can be named, and nothing is written before.
  const auto before = contentsOf(folder.path());
  EXPECT_EQ(quorel({"project", "restore", path}).code(), "invalid_project");
  EXPECT_EQ(contentsOf(folder.path()), before);
  const std::string good = quorel({"project", "history", path}).string("data.snapshots[1].path");
  ASSERT_EQ(quorel({"project", "restore", path, "--snapshot", good}).status, 0);
  EXPECT_EQ(digestAt(path), first);
}

TEST(Snapshots, ProjectsOfLikeNamesKeepApart) {
  TempFolder folder;
  const std::string song = songIn(folder), other = songIn(folder, "song-b.quorel"),
                    dated = songIn(folder, "song-20200101-000000.quorel");
  for (const std::string& path : {song, other, other, dated, dated, dated}) tempo(path, 90);
  writeAll(folder / ".quorel-history/song-notes.txt", "x");
  writeAll(folder / ".quorel-history/song-20269999-120000.quorel.bak", "x");
  EXPECT_EQ(quorel({"project", "history", song}).count("data.snapshots"), 1u);
  EXPECT_EQ(quorel({"project", "history", other}).count("data.snapshots"), 2u);
  EXPECT_EQ(quorel({"project", "history", dated}).count("data.snapshots"), 3u);
}

TEST(Snapshots, RefusalsSayWhereTheyAreKept) {
  TempFolder folder;
  const std::string path = songIn(folder);
  const auto before = contentsOf(folder.path());
  EXPECT_EQ(quorel({"project", "history", path}).line("data.snapshots"), "[]");
  const Reply none = quorel({"project", "restore", path});
  EXPECT_EQ(none.status, 4);
  EXPECT_EQ(none.code(), "not_found");
  EXPECT_EQ(none.message(), "No snapshots of " + path);
  EXPECT_EQ(none.hint(), "Snapshots are kept in .quorel-history/ when synth replaces a project");
  for (const Words& words : {Words{"project", "history", folder / "nothing.quorel"},
                             Words{"project", "restore", folder / "nothing.quorel"},
                             Words{"project", "restore", path, "--snapshot", folder / "nothing.quorel"}}) {
    EXPECT_EQ(quorel(words).code(), "not_found");
    EXPECT_EQ(quorel(words).status, 4);
  }
  EXPECT_EQ(quorel({"project", "restore", folder / "song.json", "--snapshot", path}).code(), "usage");
  const Reply app = quorel({"project", "history", "@app"});
  EXPECT_EQ(app.message(), "The app keeps its own history");
  EXPECT_EQ(app.hint(), "quorel app undo (or Cmd-Z in Quorel)");
  EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST(Snapshots, WithoutOneNothingIsReplaced) {
  TempFolder folder;
  const std::string path = songIn(folder);
  writeAll(folder / ".quorel-history", "a file in the way");
  const auto before = contentsOf(folder.path());
  const Reply reply = tempo(path, 90);
  EXPECT_EQ(reply.status, 4);
  EXPECT_EQ(reply.code(), "write_failed");
  EXPECT_EQ(reply.message().find("Cannot create " + (folder / ".quorel-history")), 0u) << reply.message();
  EXPECT_EQ(quorel({"project", "new", path, "--force"}).code(), "write_failed");
  EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST(Snapshots, OfParallelWritersNeverCollide) {
  TempFolder folder;
  const std::string path = songIn(folder);
  const std::string one = "'" QUOREL_BINARY "' project set '" + path + "' --in-place bpm=";
  std::string all;
  for (int i = 0; i < 16; i++) all += one + std::to_string(60 + i) + " > /dev/null & ";
  const int status = std::system((all + "wait").c_str());
  ASSERT_TRUE(WIFEXITED(status));
  const Reply history = quorel({"project", "history", path});
  EXPECT_EQ(history.count("data.snapshots"), 16u);
  for (size_t i = 0; i < history.count("data.snapshots"); i++)
    EXPECT_TRUE(history.at("data.snapshots[" + std::to_string(i) + "].changes").isNumber());
  for (const auto& [file, bytes] : contentsOf(folder.path()))
    EXPECT_EQ(file.find(".tmp."), std::string::npos) << file;
}

TEST(Snapshots, TheWayBackRunsInAShell) {
  TempFolder folder;
  for (const char* name : {"song.quorel", "a song.quorel", "it's $HOME.quorel"}) {
    const std::string path = songIn(folder, name), first = digestAt(path);
    const std::string undo = tempo(path, 90).string("data.undo");
    const std::string binaries = fs::path(QUOREL_BINARY).parent_path();
    EXPECT_EQ(std::system(("PATH='" + binaries + "':\"$PATH\"; " + undo + " > /dev/null 2>&1").c_str()), 0)
        << undo;
    EXPECT_EQ(digestAt(path), first) << undo;
  }
}

TEST(Snapshots, APathThatLeadsNowhereHasNone) {
  TempFolder folder;
  fs::create_symlink("loop", folder / "loop");
  for (const std::string& path : {folder / "loop", folder / std::string(300, 'n')})
    EXPECT_EQ(quorel({"project", "history", path}).code(), "not_found") << path;
}

}  // namespace
}  // namespace synth::test
