// Turns a Project into stereo audio. One object serves two threads: a control thread that submits Projects
// and gives commands, and exactly one audio thread that calls `render`. Live and offline are the same
// object, so what is exported is what plays.
#pragma once

#include <cstddef>
#include <memory>

#include "engine/Commands.h"
#include "engine/Telemetry.h"

namespace synth {

struct EngineCore;

class Engine {
 public:
  struct Loop {
    u16 on = 0;
    i32 start = 0, end = 0;  // Steps
  };

  // A few notes to be heard while the transport stands: straight time, no swing.
  struct Audition {
    struct Entry {
      u16 step = 0, length = 0;  // length in 1/256 Step; 0 counts as 1
      u8 note = 0, velocity = 0;
    };
    u32 track = 0;
    i32 count = 0;  // at most 64 are played
    Entry entries[64];
  };
  static_assert(sizeof(Audition) == 392);

  // The rate is limited to 22050..192000; one that is not finite becomes 48000. Starts with a new Project.
  explicit Engine(double sampleRate);
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  // ---- Control thread. None of these waits; on a full ring the command is lost and counted.

  // False when the Project is invalid or all slots are busy; the sound then stays as it was.
  bool submitProject(const Project& project);
  void setPlaying(bool on);
  // Stops and returns to the start Step; a second one returns to the top.
  void stopPlayback();
  void setRecording(bool on);
  void setMetronome(bool on);
  void setCountIn(bool on);
  // While playing the jump waits for the end of the Section or loop.
  void jumpTo(int marker);
  void noteOn(int track, int note, int velocity);
  void noteOff(int track, int note);
  // Holds a target (0..45, Macros 176..191, or bus targets with track 16..18) at a 0..1 value.
  bool setTouch(int track, int target, float value, bool on);
  bool setAutomationPlayback(bool on);
  void restorePausedTransport(double position);
  void holdMarker(int marker, bool on);
  void setLoop(const Loop& loop);
  void playFrom(int step);
  void retireSample(int slot);
  // Counts `steps` (0..64) in before the next playFrom, with or without clicks.
  void countIn(int steps, bool tick);
  void setTick(bool on);
  // The next playFrom stops by itself at that Step; 0 and below: never.
  void stopAt(int step);
  bool audition(const Audition& audition);
  void stopAudition();
  // Silences all voices at the next render, even when the ring is full.
  void panic();

  // True when a newer snapshot was copied.
  bool readTelemetry(Telemetry& telemetry);
  // False when no recorded Note waits.
  bool pollRecorded(RecordedNote& note);

  // Sample slots 0..16. The buffer of a free slot for 1..14400000 frames, or null.
  float* sampleData(int slot, u32 frames);
  bool publishSample(int slot, const u8 (&hash)[32], u32 frames);
  bool sampleSlotFree(int slot) const;
  bool sampleSlotHash(int slot, u8 (&hash)[32]) const;
  // The slot that holds the hash, or -1.
  int sampleSlot(const u8 (&hash)[32]) const;

  // The object and all its buffers, in bytes.
  std::size_t memoryBytes() const;

  // ---- Audio thread.

  // Writes `frames` samples to each buffer; 0 only takes commands. Null buffers: nothing happens.
  void render(float* left, float* right, unsigned frames);

 private:
  bool send(Op op, u32 a = 0, u32 b = 0, u32 c = 0, double value = 0);

  EngineCore* core_;
};

}  // namespace synth
