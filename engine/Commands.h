// The commands that the control thread queues for the audio thread.
#pragma once

#include "core/Project.h"

namespace synth {

enum class Op : u8 {
  Submit,
  SetPlaying,
  StopPlayback,
  SetRecording,
  SetMetronome,
  SetCountIn,
  JumpTo,
  NoteOn,
  NoteOff,
  SetTouch,
  SetAutomationPlayback,
  RestorePaused,
  HoldMarker,
  SetLoop,
  PlayFrom,
  RetireSample,
  CountIn,
  SetTick,
  StopAt,
  Audition,
  StopAudition,
};

struct EngineCommand {
  Op op = Op::Submit;
  u32 a = 0, b = 0, c = 0;
  double value = 0;
};
static_assert(sizeof(EngineCommand) == 24);

// A Note that was played while recording, with the Step it belongs to.
struct RecordedNote {
  u8 track = 0;
  i32 step = 0;
  Note note;
};
static_assert(sizeof(RecordedNote) == 48);

}  // namespace synth
