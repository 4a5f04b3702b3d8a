// Measures Presets. Without arguments the factory's, as the table of docs/presets.md (--write); with .preset
// files those, with what is wrong with them.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>

#include "analysis/Measure.h"
#include "base/AtomicFile.h"
#include "base/Parallel.h"
#include "base/ReadFile.h"
#include "base/Text.h"
#include "core/Names.h"
#include "core/sounds/Factory.h"
#include "support/PresetSound.h"

namespace synth::test {
namespace {

using preset::Preset;
using text::print;

std::string line(const Preset& p, const PresetSound& s) {
  return print(
      "%-20s %-7s %-9s %-9s lufs %6.1f peak %6.1f centroid %5.0f flat %6.1f hnr %5.1f side %6.1f "
      "rise %5.0f ring %4.2f held %6.1f",
      p.name.c_str(), preset::roleName(p.role), p.family.c_str(), preset::engineName(p).c_str(), s.demo.lufs,
      s.demo.peakDbfs, s.demo.centroidHz, analysis::powerDb(s.demo.flatness), s.demo.harmonicToNoiseDb,
      s.demo.sideMidDb, s.riseMs, s.ringS, s.heldDb);
}

struct Pair {
  std::string a, b;
  double distance;
};

// The pairs of a Role's sounds that are most alike.
std::vector<Pair> nearestPairs(const std::vector<Preset>& presets, const std::vector<PresetSound>& sounds,
                               int role, size_t most) {
  std::vector<Pair> pairs;
  for (size_t i = 0; i < presets.size(); i++)
    for (size_t j = 0; j < i; j++)
      if (int(presets[i].role) == role && presets[j].role == presets[i].role && sounds[i].finite &&
          sounds[i].demo.frames() > 0 && sounds[j].demo.frames() > 0)
        pairs.push_back({presets[j].name, presets[i].name, distance(sounds[i], sounds[j])});
  std::stable_sort(pairs.begin(), pairs.end(),
                   [](const Pair& a, const Pair& b) { return a.distance < b.distance; });
  if (pairs.size() > most) pairs.resize(most);
  return pairs;
}

void printNearest(const std::vector<Preset>& presets, const std::vector<PresetSound>& sounds) {
  for (int role = 0; role < preset::roles; role++)
    for (const Pair& pair : nearestPairs(presets, sounds, role, 10))
      std::printf("near %.2f %s, %s\n", pair.distance, pair.a.c_str(), pair.b.c_str());
}

// Prints the measures of files and what is wrong with them; returns how many complaints there are.
int judge(const std::vector<std::string>& paths) {
  int faults = 0;
  std::vector<Preset> presets;
  std::vector<PresetSound> sounds;
  for (const std::string& path : paths) {
    std::string bytes, error;
    Preset p;
    std::vector<std::string> wrong;
    if (readFile(path, 1 << 20, bytes, error) != ReadResult::Ok || !preset::parse(bytes, p, wrong, error)) {
      std::printf("%s: %s\n", path.c_str(), error.c_str());
      faults++;
      continue;
    }
    if (preset::write(p) != bytes) wrong.push_back("not in its canonical form");
    const PresetSound sound = soundOf(p);
    const std::vector<MacroSound> macros = macrosOf(p);
    std::printf("%s\n", line(p, sound).c_str());
    for (const MacroSound& m : macros)
      std::printf("    macro %-13s lowest score %3.0f, %+5.1f LU, peak %5.1f\n", m.name.c_str(), m.score,
                  m.levelLu, m.peakDb);
    for (const auto& list : {complaints(p, sound), complaints(p, macros)})
      wrong.insert(wrong.end(), list.begin(), list.end());
    for (const std::string& text : wrong) std::printf("    ! %s\n", text.c_str());
    faults += int(wrong.size());
    presets.push_back(p);
    sounds.push_back(sound);
  }
  printNearest(presets, sounds);
  return faults;
}

// ---- The table of the factory's sounds.

std::string joinedWords(const std::vector<std::string>& words) { return text::joined(words, " "); }

std::string tableRow(const Preset& p, const PresetSound& s) {
  std::vector<std::string> macros;
  for (const MacroRec& macro : p.macros) macros.emplace_back(nameText(macro.name));
  std::string row =
      print("| %s | %s | %s | %s | %s |", p.name.c_str(), p.family.c_str(), preset::engineName(p).c_str(),
            joinedWords(p.tags).c_str(), joinedWords(macros).c_str());
  if (p.engine == SAMPLER && p.kind != DRUMS) return row + " | | | | | | |\n";
  row += print(" %.1f | %.1f | %.0f | %.0f | %.0f |", s.demo.lufs, s.demo.peakDbfs, s.demo.centroidHz,
               s.riseMs, s.demo.sideMidDb);
  if (p.kind == DRUMS) return row + " | |\n";
  return row + (s.ringS < 3 ? print(" %.2f |", s.ringS) : " 3 or more |") +
         (s.heldDb < -60 ? " gone |\n" : print(" %.0f |\n", s.heldDb));
}

std::string nearestLines(std::vector<Pair> pairs) {
  std::string out;
  for (const Pair& pair : pairs)
    out += print("- %.2f %s, %s\n", pair.distance, pair.a.c_str(), pair.b.c_str());
  return out;
}

std::string factoryTable() {
  const std::vector<Preset>& presets = preset::factory();
  std::vector<PresetSound> sounds(presets.size());
  std::vector<std::function<void()>> tasks;
  for (size_t i = 0; i < presets.size(); i++)
    tasks.push_back([&, i] {
      if (presets[i].engine != SAMPLER || presets[i].kind == DRUMS) sounds[i] = soundOf(presets[i]);
    });
  runAll(tasks);
  std::string out;
  for (int role = 0; role < preset::roles; role++) {
    out += print(
        "\n## %s\n\n| name | family | engine | tags | Macros | LUFS | peak dBFS | centroid Hz | rises ms | "
        "side/mid dB | rings s | held dB |\n|---|---|---|---|---|---:|---:|---:|---:|---:|---:|---:|\n",
        preset::roleName(preset::Role(role)));
    for (size_t i = 0; i < presets.size(); i++)
      if (int(presets[i].role) == role) out += tableRow(presets[i], sounds[i]);
    out += "\nNearest to each other:\n\n" + nearestLines(nearestPairs(presets, sounds, role, 3));
  }
  return out;
}

// Writes docs/presets.md: what stands above the first heading of a Role stays.
int writeTable(const std::string& path) {
  std::string text, error;
  if (readFile(path, 1 << 20, text, error) != ReadResult::Ok) {
    std::fprintf(stderr, "%s: %s\n", path.c_str(), error.c_str());
    return 1;
  }
  text.resize(std::min(text.size(), text.find("\n## ")));
  if (writeAtomically(path, text + factoryTable(), error)) return 0;
  std::fprintf(stderr, "%s: %s\n", path.c_str(), error.c_str());
  return 1;
}

}  // namespace
}  // namespace synth::test

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.size() == 2 && arguments[0] == "--write") return synth::test::writeTable(arguments[1]);
  return synth::test::judge(arguments) ? 1 : 0;
}
