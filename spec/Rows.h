// Parts of a Project in the words of a spec: what exports and differences print.
#pragma once

#include "core/Project.h"
#include "spec/Keys.h"

namespace synth::spec {

// [step, pitch, velocity, ...] without trailing defaults, or an object for a Note with Locks or in another
// slot than the reader would choose (`ownSlot`).
Json noteSpec(const Project& project, const NoteRec& note, bool ownSlot);
Json patternSpec(const Project& project, int row);
Json clipSpec(const Project& project, const ClipRec& clip);
// A Lane row of any owner.
Json laneSpec(const Project& project, int row);
Json markerSpec(const MarkerRec& marker);
// Keys and Macro names, null for the defaults.
Json pinsSpec(const PinList& pins, const Track* track);
Json sampleSpec(const Track& track);
Json macrosSpec(const Track& track);
// The name of a Lock's or Track Lane's target, a Macro by its name.
std::string targetText(const Track& track, int target);
// A 16-bit Lane or Lock value as 0..1; reads back to the same bits.
Json value01(u16 value);

}  // namespace synth::spec
