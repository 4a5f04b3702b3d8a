// What a Track's signal chain remembers between segments.
#pragma once

#include <limits>

#include "engine/Drive.h"
#include "engine/ModFx.h"
#include "engine/TrackRoom.h"
#include "engine/dsp/LaneFilters.h"

namespace synth {

struct TrackState {
  // Levels.
  bool audible = true, fresh = true;  // fresh: the smoothers take their first targets at once
  float gainNow = 0, trim = 0, trimGain = 1;
  float pan = std::numeric_limits<float>::quiet_NaN();  // whose targets follow
  float panTargetL = 0.7071f, panTargetR = 0.7071f, panL = 0.7071f, panR = 0.7071f;

  // Inserts, left and right.
  dsp::SvfSetting highpass, lowpass;
  float highpassHz = 0, lowpassHz = 0;
  dsp::SvfState highpassState[2], lowpassState[2];
  drive::Curve drive;
  float driveAmount = -1;
  int driveType = -1;
  float crushPhase[2] = {}, crushHeld[2] = {};
  dsp::Biquad eq[3];
  float eqValues[4] = {0, 0, 0, 0};
  bool eqBand[3] = {};  // a band without gain does not run
  dsp::BiquadState eqState[3][2];
  ModFx modFx;
  bool hushed = true;  // what makes noise by itself is silent while nothing has come in for a while
  TrackRoom room;
  float monoBelowState = 0, monoCoefficient = 0, monoHz = 0;

  // Ducking.
  float duck = 0, duckCoefficient = 0, duckRelease = -1;
  bool duckRising = false;

  // Sleep and meters.
  bool sleeping = false;
  u32 quiet = 0, inputQuiet = 0x40000000;  // samples below hearing, behind the chain and before its Mod FX
  float peakL = 0, peakR = 0, level = 0, energy = 0, edge = 0, lastMid = 0;
  u32 noteSerial = 0;
  u8 lastNote = 0, lastVelocity = 0;
  u8 padHits[8] = {};
  u8 padVelocity[8] = {};
};

}  // namespace synth
