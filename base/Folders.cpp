#include "base/Folders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace synth {

std::string homeFolder() {
  if (const char* home = std::getenv("HOME"); home && *home) return home;
  const passwd* user = ::getpwuid(::getuid());
  return user && user->pw_dir ? user->pw_dir : "";
}

std::string supportFolder() { return homeFolder() + "/Library/Application Support/Quorel"; }

}  // namespace synth
