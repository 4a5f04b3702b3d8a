#include "cli/Frequency.h"

#include "base/Math.h"
#include "cli/Args.h"
#include "cli/Error.h"

namespace synth::cli {
namespace {

// Semitones above C of a letter with its sharps and flats; `rest` receives where they end. -100: no letter.
int semitoneOf(const std::string& text, size_t& rest) {
  static constexpr int semitones[7] = {9, 11, 0, 2, 4, 5, 7};
  const char letter = text.empty() ? ' ' : char(text[0] & ~32);
  if (letter < 'A' || letter > 'G') return -100;
  int semitone = semitones[letter - 'A'];
  for (rest = 1; rest < text.size() && (text[rest] == '#' || text[rest] == 'b'); rest++)
    semitone += text[rest] == '#' ? 1 : -1;
  return semitone;
}

}  // namespace

double frequencyOption(const Args& args, const std::string& name, double fallback) {
  if (!args.has(name)) return fallback;
  const std::string& text = args.at(name);
  double hz = 0;
  if (decimal(text, hz) && hz > 0) return hz;
  size_t rest = 0;
  const int semitone = semitoneOf(text, rest);
  int octave = 0;
  if (semitone > -100 && rest == text.size())
    throw usage("--" + name + " needs an octave, e.g. C#3, got " + text);
  if (semitone == -100 || !wholeNumber(text.substr(rest), octave) || octave < -1 || octave > 10)
    throw usage("--" + name + " is Hz or a note like C#3, got " + text);
  return 440 * math::exp2((12 * (octave + 1) + semitone - 69) / 12.0);
}

}  // namespace synth::cli
