#include "core/sounds/Vocabulary.h"

#include <algorithm>

#include "base/Text.h"
#include "core/Names.h"

namespace synth::preset {
namespace {

struct RoleRow {
  const char* name;
  Words families;
};

const RoleRow& row(Role role) {
  static const RoleRow rows[roles] = {
      {"BASS", {"SUB", "DEEP", "808", "MONO", "PLUCK", "ACID", "REESE", "GROWL"}},
      {"LEAD", {"SAW", "MONO", "SYNC", "SOFT", "VOX", "BRASS", "RAVE"}},
      {"PAD", {"WARM", "AIRY", "DARK", "EVOLVING", "GATED", "STRINGS", "CHOIR", "SHIMMER"}},
      {"KEYS", {"EP", "ORGAN", "POLY", "STAB", "BELL", "MALLET"}},
      {"PLUCK", {"SYNTH", "GLASS", "ARP", "BLIP", "STRING"}},
      {"PERC", {"KIT", "KICK", "SNARE", "TOM", "METAL", "CLICK"}},
      {"TEXTURE", {"DRONE", "ATMOS", "NOISE", "GRAIN", "GLITCH", "METAL"}},
      {"FX", {"RISER", "FALL", "IMPACT", "WHOOSH", "MAGIC", "GLITCH", "ZAP"}},
  };
  return rows[std::min(int(role), roles - 1)];
}

bool alphanumeric(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

}  // namespace

const char* roleName(Role role) { return row(role).name; }

bool parseRole(std::string_view text, Role& role) {
  const std::string_view word = text::trimmed(text);
  for (int r = 0; r < roles; r++)
    if (text::sameIgnoringCase(word, roleName(Role(r)))) {
      role = Role(r);
      return true;
    }
  return false;
}

const Words& families(Role role) { return row(role).families; }

int familyIndex(Role role, std::string_view word) {
  const Words& list = families(role);
  const auto it = std::find(list.begin(), list.end(), word);
  return it == list.end() ? -1 : int(it - list.begin());
}

const Words& characterTags() {
  static const Words words = {"DARK",     "BRIGHT", "WARM", "CLEAN",  "DIRTY",   "AIRY",
                              "GLASSY",   "METAL",  "SOFT", "PUNCHY", "SHORT",   "LONG",
                              "EVOLVING", "PULSE",  "MONO", "WIDE",   "VINTAGE", "LOFI"};
  return words;
}

const Words& styles() {
  static const Words words = {"HOUSE",  "TECHNO", "TRANCE",    "DNB",     "DUBSTEP",
                              "HIPHOP", "POP",    "SYNTHWAVE", "AMBIENT", "IDM"};
  return words;
}

std::string cleanName(std::string_view name) {
  char stored[24];
  setName(stored, text::trimmed(name));
  // Bytes that were dropped may have stood before a blank.
  return std::string(text::trimmed(nameText(stored)));
}

std::string slug(std::string_view name) {
  std::string out;
  bool gap = false;
  for (char c : name) {
    if (!alphanumeric(c)) {
      gap = true;
      continue;
    }
    if (gap && !out.empty()) out += '-';
    gap = false;
    out += c;
  }
  return out.empty() ? "preset" : text::lower(out);
}

}  // namespace synth::preset
