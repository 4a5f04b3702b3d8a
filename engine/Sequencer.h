// Finding the Notes of each Step and turning them into timed events.
#pragma once

#include "engine/EngineCore.h"

namespace synth {

// Built by the control thread when a Project is submitted.
void buildIndex(const Project& project, SongIndex& index);

// The Step after the current one, or -1 at the Song's end; `wrapped` says that a jump or a loop led there.
// Changes nothing.
i32 nextStep(const EngineCore& core, bool& wrapped);
// The Markers' Section around a Step, at least one Step long.
void sectionAround(const EngineCore& core, i32 step, i32& start, i32& end);
bool validMarker(const EngineCore& core, i32 marker);

// What happens when a Step begins; `first` after a start.
void stepTrigger(EngineCore& core, bool first);
// Fires scheduled Notes that are due; returns the time of the earliest one left.
double firePending(EngineCore& core);

// How many Steps a Note recorded at this Step may last: what is left of its Pattern.
i32 roomAtStep(const EngineCore& core, int track, i32 step);

}  // namespace synth
