// The program itself: which face its name picks, what goes to which stream, and how it ends.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "support/Cli.h"

namespace synth::test {
namespace {

namespace fs = std::filesystem;

struct Ran {
  int status;
  std::string out, err;
};

// Runs a line in a shell in a folder; `quorel` there is the program.
Ran shell(const TempFolder& folder, const std::string& line) {
  const std::string whole = "cd '" + folder.path() + "' && quorel() { '" QUOREL_BINARY "' \"$@\"; }; { " +
                            line + "; } > '" + (folder / "out.txt") + "' 2> '" + (folder / "err.txt") + "'";
  const int status = std::system(whole.c_str());
  Ran ran{WIFEXITED(status) ? WEXITSTATUS(status) : -1, readAll(folder / "out.txt"),
          readAll(folder / "err.txt")};
  fs::remove(folder / "out.txt");
  fs::remove(folder / "err.txt");
  return ran;
}

TEST(Executable, ItsNamePicksTheFace) {
  TempFolder folder;
  const fs::path program = fs::canonical(QUOREL_BINARY);
  for (const char* name : {"Quorel", "quorel-app", "quorel.exe", "xquorel"}) {
    fs::create_symlink(program, folder / name);
    const Ran ran = shell(folder, "./" + std::string(name) + " version");
    EXPECT_EQ(ran.status, 1) << name;
    EXPECT_EQ(ran.out, "") << name;
    EXPECT_NE(ran.err.find("o application"), std::string::npos) << ran.err;
  }
  fs::create_symlink(program, folder / "quorel");
  EXPECT_EQ(shell(folder, "./quorel version").out, quorel({"version"}).text);
  EXPECT_EQ(shell(folder, "PATH=.; command quorel --version --compact").out,
            quorel({"version", "--compact"}).text);
}

// Eight commands at once, each with a change of its own to one project: they wait for each other.
TEST(Executable, CommandsAtOnceLoseNoChange) {
  TempFolder folder;
  ASSERT_EQ(shell(folder, "quorel project new song.quorel; mkdir link; ln -s ../song.quorel link/song.quorel")
                .status,
            0);
  std::string line;
  for (int i = 0; i < 8; i++)
    line += "quorel macro add " + std::string(i % 2 ? "song" : "link/song") + ".quorel EXTRA" +
            std::to_string(i) + " --track BASS --in-place & ";
  EXPECT_EQ(shell(folder, line + "wait").status, 0);
  const std::string list = quorel({"macro", "list", folder / "song.quorel", "--track", "BASS"}).text;
  for (int i = 0; i < 8; i++) EXPECT_NE(list.find("EXTRA" + std::to_string(i)), std::string::npos) << i;
  // Of those that would make the same new file one does.
  const Ran made =
      shell(folder, "for i in 1 2 3 4; do quorel project new fresh.quorel --name N$i --compact & done; wait");
  size_t ok = 0;
  for (size_t at = 0; (at = made.out.find("\"ok\":true", at)) != std::string::npos; at++) ok++;
  EXPECT_EQ(ok, 1u) << made.out;
}

TEST(Executable, PrintsOneEnvelopeAndNothingElse) {
  TempFolder folder;
  writeAll(folder / "tune.json",
           R"({"project": {"bpm": 240}, "patterns": [{"track": 1, "length": 1, "notes": [[0, 60, 100]]}],
                                     "clips": [{"track": 1, "at": 0, "pattern": 0}]})");
  const struct {
    const char* line;
    int status;
  } cases[] = {
      {"quorel", 0},
      {"quorel --help", 0},
      {"quorel project new song.quorel", 0},
      {"quorel project new song.quorel", 4},
      {"quorel project set song.quorel bpm=90 --in-place", 0},
      {"quorel project history song.quorel", 0},
      {"quorel project restore song.quorel", 0},
      {"quorel render tune.json --tail 0", 0},
      {"quorel render tune.json --tail 13", 2},
      {"quorel project validate none.json", 4},
      {"quorel params --key none", 3},
      {"quorel nonsense", 2},
  };
  for (const auto& c : cases) {
    const Ran ran = shell(folder, c.line);
    EXPECT_EQ(ran.status, c.status) << c.line;
    EXPECT_EQ(ran.err, "") << c.line;
    EXPECT_FALSE(ran.out.ends_with("\n\n")) << c.line;
    EXPECT_TRUE(ran.out.ends_with("\n")) << c.line;
    if (ran.out[0] == '{') {
      EXPECT_EQ(valueAt(parsed(ran.out), "ok").boolean(), c.status == 0) << c.line;
    }
  }
  EXPECT_TRUE(fs::exists(folder / ".quorel-history"));
  EXPECT_TRUE(fs::exists(folder / "tune.wav"));
}

TEST(Executable, OutputThatCannotBeWrittenIsNoSuccess) {
  TempFolder folder;
  ASSERT_GT(quorel({"commands"}).text.size(), 8192u);
  for (const char* line : {"quorel version > /dev/full", "quorel commands > /dev/full",
                           "quorel params > /dev/full", "quorel > /dev/full", "quorel version >&-"})
    EXPECT_EQ(shell(folder, line).status, 1) << line;
  EXPECT_EQ(shell(folder, "quorel nonsense > /dev/full").status, 2);
}

// A render of a song of that many Steps, under way: the file beside its destination has begun to fill.
struct Rendering {
  TempFolder folder;
  pid_t child = -1;

  explicit Rendering(int steps) {
    const std::string input = folder / "long.json";
    writeAll(input, R"({"patterns": [{"track": 1, "notes": [[0, 60, 100]]}],
                        "clips": [{"track": 1, "at": 0, "pattern": 0, "length": )" +
                        std::to_string(steps) + "}]}");
    const char* words[] = {"quorel", "render", input.c_str(), nullptr};
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    EXPECT_EQ(posix_spawn(&child, QUOREL_BINARY, &quiet, nullptr, const_cast<char**>(words), environ), 0);
    posix_spawn_file_actions_destroy(&quiet);
    for (int i = 0; i < 2000 && !filling(); i++) ::usleep(2000);
    EXPECT_TRUE(filling());
  }
  bool filling() const {
    for (const auto& entry : fs::directory_iterator(folder.path()))
      if (entry.path().filename().string().find(".wav.tmp.") != std::string::npos && entry.file_size() > 0)
        return true;
    return false;
  }
  int endBy(int signal) const {
    ::kill(child, signal);
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return status;
  }
};

TEST(Executable, AnInterruptedRenderLeavesNothingBehind) {
  for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
    Rendering render(60000);
    const int status = render.endBy(signal);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
    EXPECT_EQ(contentsOf(render.folder.path()).size(), 1u)
        << contentsOf(render.folder.path()).rbegin()->first;
  }
}

// What listens to a project renders it into a folder of its own, which goes with it.
TEST(Executable, AnInterruptedListeningLeavesNothingBehind) {
  TempFolder folder;
  writeAll(folder / "long.json",
           R"({"patterns": [{"track": 1, "notes": [[0, 60, 100]]}],
               "clips": [{"track": 1, "at": 0, "pattern": 0, "length": 9000}]})");
  const Ran ran =
      shell(folder, "mkdir tmp; export TMPDIR=$PWD/tmp; '" QUOREL_BINARY
                    "' analyze long.json & p=$!; until ls tmp/*/render* 2> /dev/null; do sleep 0.01; done; "
                    "kill -TERM $p; wait $p; echo $?; ls tmp");
  EXPECT_TRUE(ran.out.ends_with("\n143\n")) << ran.out;
}

TEST(Executable, ASignalThatItsCallerIgnoresDoesNotEndIt) {
  const auto before = ::signal(SIGHUP, SIG_IGN);
  Rendering render(600);
  ::signal(SIGHUP, before);
  const int status = render.endBy(SIGHUP);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  EXPECT_TRUE(fs::exists(render.folder / "long.wav"));
}

}  // namespace
}  // namespace synth::test
