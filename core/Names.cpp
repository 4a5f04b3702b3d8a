#include "core/Names.h"

#include <cstring>

namespace synth {
namespace {

template <size_t N>
std::string_view textOf(const char (&name)[N]) {
  return {name, strnlen(name, N)};
}

template <size_t N>
void store(char (&name)[N], std::string_view text, size_t most, bool upper) {
  char clean[N] = {};
  size_t n = 0;
  for (char c : text) {
    if (n == most) break;
    if (c < 32 || c > 126) continue;
    clean[n++] = upper && c >= 'a' && c <= 'z' ? char(c - 32) : c;
  }
  while (n && clean[n - 1] == ' ') clean[--n] = 0;
  std::memcpy(name, clean, N);
}

}  // namespace

std::string_view nameText(const char (&name)[16]) { return textOf(name); }
std::string_view nameText(const char (&name)[24]) { return textOf(name); }

void setName(char (&name)[16], std::string_view text) { store(name, text, limits::shortName, true); }
void setName(char (&name)[24], std::string_view text) { store(name, text, limits::presetName, true); }
void setMarkerName(char (&name)[16], std::string_view text) { store(name, text, limits::shortName, false); }

std::string_view projectName(const Project& project) { return textOf(project.name); }

bool setProjectName(Project& project, std::string_view text) {
  if (text.size() > limits::projectName || text.find('\0') != text.npos) return false;
  std::memset(project.name, 0, sizeof project.name);
  std::memcpy(project.name, text.data(), text.size());
  return true;
}

}  // namespace synth
