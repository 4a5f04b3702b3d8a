// The long list of a sound's parameters: which rows it has, in which groups, which of them do nothing at the
// moment and why, and how a row is found by typing.
#pragma once

#include <string>
#include <vector>

#include "core/params/Registry.h"
#include "core/sounds/Pins.h"
#include "core/sounds/Search.h"

namespace synth::paramlist {

struct Row {
  std::string key, label, group;
  const param::Info* info = nullptr;  // null for a Macro
  int macro = -1;

  // The row's code: its id, or a Macro's slot behind the first Macro Pin.
  int code() const { return info ? info->id : limits::firstMacroPin + macro; }
};

// The rows of a Track, its Macros first; a Pad's rows stand once for all eight.
std::vector<Row> rows(const Project& project, int track);
// The rows of a Send or the Master as they are now.
std::vector<Row> busRows(const Project& project, int bus);
// How well a query fits a row: its key, its label, its group, or another word for it.
search::Match match(const Row& row, std::string_view query);

// Why a row does nothing: the value that is responsible, and a short badge. Empty when it does something.
struct Inactive {
  std::string key, badge;

  explicit operator bool() const { return !badge.empty(); }
};
Inactive inactive(const Project& project, int track, int code, int pad);
Inactive busInactive(const Project& project, int bus, int code);
// The same as a sentence.
std::string inactiveTip(const Project& project, int track, int code, const Inactive& why);

}  // namespace synth::paramlist
