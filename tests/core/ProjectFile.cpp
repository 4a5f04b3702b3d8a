// What breaks if a saved song comes back as another one, or a failed save costs the old one.
#include "core/ProjectFile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>

#include "base/Crc32.h"
#include "core/Names.h"
#include "core/model/Defaults.h"
#include "core/model/Validate.h"
#include "core/sounds/MacroEdit.h"
#include "support/PlainProject.h"
#include "support/RandomProject.h"
#include "support/TempFolder.h"

namespace synth {
namespace {

using test::randomProject;
using test::readAll;
using test::TempFolder;
using test::writeAll;

TEST(ProjectFile, SavesLoadsAndSavesTheSameBytes) {
  TempFolder folder;
  std::string error;
  ProjectPtr songs[] = {makeProject(), newProject(), randomProject(1), randomProject(2)};
  for (auto& song : songs) {
    auto back = randomProject(99);
    ASSERT_TRUE(saveProject(*song, folder / "a.quorel", error)) << error;
    ASSERT_TRUE(loadProject(folder / "a.quorel", *back, error)) << error;
    EXPECT_TRUE(sameBytes(*song, *back));
    ASSERT_TRUE(saveProject(*back, folder / "b.quorel", error)) << error;
    EXPECT_TRUE(readAll(folder / "a.quorel") == readAll(folder / "b.quorel"));
    EXPECT_TRUE(readAll(folder / "a.quorel") == projectImage(*song));
    EXPECT_EQ(projectImage(*song).substr(20), projectBytes(*song));
  }
}

TEST(ProjectFile, KeepsEveryByteOfSixtySongs) {
  for (u32 seed = 100; seed < 160; seed++) {
    auto song = randomProject(seed), back = newProject();
    std::string error;
    ASSERT_TRUE(validateProject(*song, error)) << seed << ": " << error;
    ASSERT_TRUE(readProjectImage(projectImage(*song), *back, error)) << seed << ": " << error;
    ASSERT_TRUE(sameBytes(*song, *back)) << seed;
  }
}

TEST(ProjectFile, KeepsWhatIsEasilyLost) {
  auto song = test::plainProject();
  song->tracks[15].pan = -0.0f;
  song->tracks[15].pad_note[7] = 127;
  song->tracks[14].track_kind = DRUMS;
  song->tracks[3].pins.custom = 1;
  song->busPins[1].custom = 1;
  song->lanes[163].enabled = 1;
  song->patterns[3].id = song->clips[3].pattern = 65535;
  std::string error;
  auto back = newProject();
  ASSERT_TRUE(readProjectImage(projectImage(*song), *back, error)) << error;
  EXPECT_TRUE(std::signbit(back->tracks[15].pan));
  // No Pins of one's own differ from the default ones.
  EXPECT_EQ(back->tracks[3].pins.custom, 1);
  EXPECT_EQ(back->tracks[2].pins.custom, 0);
  EXPECT_TRUE(sameBytes(*song, *back));
  song->tracks[3].pins.custom = 0;
  EXPECT_NE(projectBytes(*song), projectBytes(*back));
  EXPECT_EQ(projectBytes(*song).size(), projectBytes(*back).size());
}

TEST(ProjectFile, AZeroOfAMacroHasNoSign) {
  auto song = makeProject(), back = newProject();
  std::string error;
  Track& track = song->tracks[1];
  const int slot = macros::add(*song, 1, "TURN", true, 0, error);
  ASSERT_TRUE(macros::map(*song, 1, slot, *param::find("cutoff"), -1, 0, 0, 0, 1, error)) << error;
  const std::string plain = projectImage(*song);
  track.macros[slot].value = track.macros[slot].targets[0].amount_down = -0.0f;
  ASSERT_TRUE(readProjectImage(projectImage(*song), *back, error)) << error;
  EXPECT_TRUE(projectImage(*back) == plain);
}

TEST(ProjectFile, KeepsOrRefusesEveryByteOfTheRecord) {
  // No byte of a Project may be lawful and yet get lost: bytes would no longer tell whether content differs.
  auto song = randomProject(7), back = newProject();
  std::string error;
  auto check = [&](size_t from, size_t to, size_t stride) {
    for (size_t at = from; at < to; at += stride) {
      auto changed = copyOf(*song);
      reinterpret_cast<unsigned char*>(changed.get())[at] ^= 1;
      if (!validateProject(*changed, error)) continue;
      ASSERT_TRUE(readProjectImage(projectImage(*changed), *back, error)) << error << " at " << at;
      ASSERT_TRUE(sameBytes(*changed, *back)) << "at " << at;
    }
  };
  check(0, offsetof(Project, tracks), 1);
  check(offsetof(Project, tracks), offsetof(Project, tracks) + sizeof(Track), 11);
  check(offsetof(Project, notes), offsetof(Project, notes) + 30 * sizeof(NoteRec), 7);
  check(offsetof(Project, loopStart), sizeof(Project), 3);
}

TEST(ProjectFile, WritesItsHeaderAndAllParameters) {
  auto song = makeProject();
  setProjectName(*song, "Ab");
  const std::string image = projectImage(*song);
  auto u32At = [&](size_t at) {
    return u32(u8(image[at])) | u8(image[at + 1]) << 8 | u8(image[at + 2]) << 16 |
           u32(u8(image[at + 3])) << 24;
  };
  EXPECT_EQ(image.substr(0, 8), "SYNTHPRJ");
  EXPECT_EQ(u32At(8), 30u);
  EXPECT_EQ(u32At(12), image.size() - 20);
  EXPECT_EQ(u32At(16), crc32(image.data() + 20, image.size() - 20));
  EXPECT_EQ(image.substr(20, 3),
            "\x02"
            "Ab");
  EXPECT_EQ(u32At(23), 4626u);
  // The first record is the tempo: id 1, index 0, 120.
  EXPECT_EQ(image.substr(27, 7), std::string("\x01\0\0\0\0\xF0\x42", 7));
  // The last is the drop time of the last Pad of the last Track.
  EXPECT_EQ(image.substr(27 + 4625 * 7, 3), std::string("\x40\x01\x7F", 3));
}

TEST(ProjectFile, RefusesToSaveAndKeepsTheOldFile) {
  TempFolder folder;
  const std::string path = folder / "song.quorel";
  writeAll(path, "old");
  auto refused = [&](Project& p, const std::string& to) {
    std::string error;
    EXPECT_FALSE(saveProject(p, to, error));
    EXPECT_EQ(readAll(path), "old");
    return error;
  };
  auto song = makeProject();
  EXPECT_EQ(refused(*song, ""), "Invalid destination path");
  EXPECT_EQ(refused(*song, path + std::string("\0x", 2)), "Invalid destination path");
  EXPECT_EQ(refused(*song, folder / "none/song.quorel"),
            "Cannot create temporary output: No such file or directory");
  EXPECT_EQ(refused(*song, folder.path()), "Cannot replace destination: Is a directory");
  song->bpm = 5;
  EXPECT_EQ(refused(*song, path), "Invalid tempo or swing");
  EXPECT_EQ(refused(*song, ""), "Invalid tempo or swing");
  std::fill(std::begin(song->name), std::end(song->name), 'x');
  EXPECT_EQ(refused(*song, path), "Project name must fit in 63 bytes");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(ProjectFile, RefusesToLoadAndKeepsTheOldProject) {
  TempFolder folder;
  const std::string path = folder / "song.quorel", image = projectImage(*makeProject());
  auto refusal = [&](const std::string& bytes) {
    writeAll(path, bytes);
    auto kept = randomProject(5), old = copyOf(*kept);
    std::string error;
    EXPECT_FALSE(loadProject(path, *kept, error));
    EXPECT_TRUE(sameBytes(*kept, *old));
    return error;
  };
  auto changed = [&](size_t at, char to) {
    std::string bytes = image;
    bytes[at] = to;
    return bytes;
  };
  EXPECT_EQ(refusal(""), "Truncated project");
  EXPECT_EQ(refusal("SYNTHPR"), "Truncated project");
  EXPECT_EQ(refusal("SYNTHPRX"), "Invalid project signature");
  EXPECT_EQ(refusal(image.substr(0, 19)), "Truncated project");
  EXPECT_EQ(refusal(changed(8, 29)), "Unsupported project version (made by another build)");
  EXPECT_EQ(refusal(changed(8, 31)), "Unsupported project version (made by another build)");
  EXPECT_EQ(refusal(image + "x"), "Project payload length mismatch");
  EXPECT_EQ(refusal(image.substr(0, image.size() - 1)), "Project payload length mismatch");
  EXPECT_EQ(refusal(changed(20, 1)), "Project checksum mismatch");
  EXPECT_EQ(refusal(changed(16, char(image[16] + 1))), "Project checksum mismatch");
  EXPECT_EQ(refusal(image + std::string(1000000, 'x')), "Project payload length mismatch");
  EXPECT_EQ(refusal(image + std::string(16777216 - image.size(), 'x')), "Project payload length mismatch");
  EXPECT_EQ(refusal(image + std::string(16777217 - image.size(), 'x')), "Project exceeds 512 KiB limit");
  EXPECT_EQ(refusal(std::string(20000000, 'x')), "Project exceeds 512 KiB limit");
  auto p = newProject();
  std::string error;
  EXPECT_FALSE(loadProject("", *p, error));
  EXPECT_EQ(error, "Invalid project path");
  EXPECT_FALSE(loadProject(path + std::string("\0", 1), *p, error));
  EXPECT_EQ(error, "Invalid project path");
  EXPECT_FALSE(loadProject(folder / "none", *p, error));
  EXPECT_EQ(error, "Cannot open project: No such file or directory");
  EXPECT_FALSE(loadProject(folder.path(), *p, error));
  EXPECT_EQ(error, "Project read failed");
}

}  // namespace
}  // namespace synth
