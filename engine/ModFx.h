// The modulation effect of a Track: which one sounds, how it comes in and goes, and how it is mixed.
#pragma once

#include "engine/modfx/ModEffect.h"

namespace synth {

class ModFx {
 public:
  enum Type : int { Off, ChorusType, EnsembleType, FlangerType, PhaserType, VinylType };
  struct Setting {
    int type = Off;
    float rate = 0.5f, depth = 0.5f, feedback = 0, mix = 0.5f, tone = 0.5f;
    bool sideOnly = false;
    bool hush = false;  // what makes noise by itself is to fall silent
  };

  void prepare(double rate);
  // Every eight samples, on the sample clock: moves the parameters towards the setting.
  void tick(const Setting& setting, bool snap);
  // In place; n samples within one tick.
  void process(float* left, float* right, int n);
  bool idle() const { return type_ == Off && gain_ == 0; }

  // Whether silence going in comes out as silence and leaves everything but the time as it is, with this type
  // wanted. Found out by `listen`, which takes a while and is worth asking now and then when silence goes in.
  bool rests(int wanted) const {
    return wanted == wanted_ && wanted == type_ && (type_ == Off ? gain_ == 0 : silent_);
  }
  void listen();
  // In place of `process` while it rests.
  void pass(int n);
  int type() const { return type_; }
  std::size_t bytes() const { return lines_.l.bytes() + lines_.r.bytes(); }

 private:
  // The effects' memory, begun anew with each change.
  struct State {
    modfx::Chorus chorus;
    modfx::Ensemble ensemble;
    modfx::Flanger flanger;
    modfx::Phaser phaser;
    modfx::Vinyl vinyl;
  };

  void tickEffect();
  int fade(float* gains, int n);
  void run(modfx::Piece& piece);
  void clear();

  modfx::Lines lines_;
  modfx::Params params_;
  State state_;
  int type_ = Off, wanted_ = Off;
  float gain_ = 0, gainStep_ = 0, smooth_ = 1;
  bool sideOnly_ = false;
  bool silent_ = true;  // nothing rings in it
};

}  // namespace synth
