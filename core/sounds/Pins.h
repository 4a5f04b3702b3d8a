// Pins: the short row of values that a player reaches for first, on each Track, each Send and the Master. A
// list of its own belongs to the sound and is saved with it; without one the row shows its defaults.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/params/Registry.h"

namespace synth {

namespace paramlist {
// Whether the parameter list of such a sound has the row.
bool listed(const param::Info* info, int kind, int engine);
}  // namespace paramlist

namespace pins {

using Keys = std::vector<std::string>;

// What a panel says beside a Track's own Pins.
inline constexpr const char* ownNote = "Pinned for this sound · Save keeps it in the Preset";

// The default Pins of a kit or a melodic Track.
const Keys& defaultKeys(int kind);
// Whether a key can be pinned on such a sound; on a Track also the name of one of its Macros.
bool valid(int kind, int engine, std::string_view key);
bool valid(const Track& track, std::string_view key);

// The Track's own Pins, else the defaults; Macros by their names.
Keys keys(const Track& track);
// Makes the Pins the Track's own: keys that are not valid are skipped, and what comes after the 32nd.
void setKeys(Track& track, const Keys& keys);
void clear(Track& track);
bool pinned(const Track& track, std::string_view key);
// The defaults become the Track's own before one is added or taken away. False when nothing changed.
bool pin(Track& track, std::string_view key);
bool unpin(Track& track, std::string_view key);
bool move(Track& track, int from, int to);

// The same for a Send or the Master. Keys are the registry's, with the Send's prefix.
Keys busDefaultKeys(const Project& project, int bus);
bool validBus(const Project& project, int bus, std::string_view key);
Keys busKeys(const Project& project, int bus);
void setBusKeys(Project& project, int bus, const Keys& keys);
void clearBus(Project& project, int bus);
bool pinnedBus(const Project& project, int bus, std::string_view key);
bool pinBus(Project& project, int bus, std::string_view key);
bool unpinBus(Project& project, int bus, std::string_view key);
bool moveBus(Project& project, int bus, int from, int to);
// Changes a Send's effect, or loads one of its presets; Pins that the new effect does not have go.
bool setBusType(Project& project, int bus, int type);
bool loadBusPreset(Project& project, int bus, int type, int preset);

}  // namespace pins
}  // namespace synth
