// Changing the Macros of a Track. Everything that names a Macro by its slot (Lanes, Locks, Pins) follows. A
// refused change leaves every byte as it was; `error` says why.
#pragma once

#include <string>

#include "core/params/Registry.h"

namespace synth::macros {

// A new Macro without targets: its slot, or -1.
int add(Project& project, int track, std::string_view name, bool bipolar, f32 value, std::string& error);
bool rename(Project& project, int track, int slot, std::string_view name, std::string& error);
// Takes a Macro away with its Lanes, Locks and Pin; later Macros move down a slot, and what names them too.
bool remove(Project& project, int track, int slot);
// Clears every Lane, Lock and Pin that names a slot at or beyond the count.
void prune(Project& project, int track);

// Lets a Macro move a value; one that it moves already changes and keeps its place. `pad` is -1 for a value
// without Pads; `amountDown` NaN mirrors `amount`.
bool map(Project& project, int track, int slot, const param::Info& info, int pad, f32 amount, f32 amountDown,
         f32 from, f32 to, std::string& error);
// Whether a value has Pads and one is named, or has none and none is.
bool padFits(const param::Info& info, int pad, std::string& error);
bool unmap(Project& project, int track, int slot, const param::Info& info, int pad);

bool setValue(Project& project, int track, int slot, f32 value);
// Flips the polarity. Lanes and Locks keep the values they stood for.
bool setBipolar(Project& project, int track, int slot, bool bipolar);

// After a new sound has replaced `old`: Lanes and Locks find their Macro again by its name, or go.
void follow(Project& project, int track, const Track& old);
void followLocks(NoteRec& note, const Track& now, const Track& old);
// The same for Pins that outlive the Macros they were made for; a new sound brings its own.
void followPins(Track& now, const Track& old);

// What a Macro cannot move, in the user's words; shorter, behind the value's label, in a panel.
std::string refusal(const param::Info& info);
inline constexpr const char* panelRefusal =
    " cannot be a Macro target · a Macro moves the sound's continuous values and the Sends";
inline constexpr const char* badWindow = "A window is FROM..TO with 0 <= FROM < TO <= 1";
inline constexpr const char* amountHint = "Range -1000..1000";
inline constexpr const char* notAnotherMacro = "A Macro cannot move another Macro";
inline constexpr const char* notOnBuses = "Send effects and the Master have no Macros";

}  // namespace synth::macros
