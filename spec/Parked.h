// What a file can keep and nobody hears: a kit's Pads under a melodic sound, Pins of values that the sound
// does not have, names as older programs spelled them. A spec states it apart, as "parked", so that a Track
// comes back whole; the sections for what is heard stay strict.
#pragma once

#include "core/Project.h"
#include "spec/Keys.h"

namespace synth::spec {

// The `parked` object of a Track: {name, preset_name, sample_name, pins, pads}, each as it stands in the
// file.
void readParked(Track& track, const Json& object, const std::string& where);
// Pins in the same way, for a bus.
void readParkedPins(PinList& pins, const Track* track, const Json& value, const std::string& where);

// What of the Track only `parked` can say, given what the rest of its description starts from; {} for
// nothing.
Json parkedSpec(const Track& track, const Track& had);

}  // namespace synth::spec
