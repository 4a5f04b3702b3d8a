#include "core/SynthKinds.h"

#include <algorithm>

#include "base/Text.h"

namespace synth {
namespace {

struct Kind {
  const char* name;
  const char* concept_;
  const char* params[4];
  const char* description;
  const char* meanings[4];
};

constexpr Kind kinds[synthKinds] = {
    {"ANALOG",
     "COUPLED OSCILLATORS",
     {"SHAPE", "RATIO", "DETUNE", "STEREO"},
     "Two oscillators morph from sine through triangle and saw to pulse. Ratio sets the second oscillator's "
     "interval, or the sync ratio in SYNC mode; detune thickens them; stereo splits them left and right.",
     {"The wave: sine to triangle to saw to pulse.", "Where the second oscillator sits against the first.",
      "How far the two oscillators drift apart.", "Spreads the two oscillators left and right."}},
    {"FM",
     "PHASE COUPLING",
     {"TONE", "RATIO", "SHAPE", "FEEDBACK"},
     "A carrier and modulator exchange phase. Tone sets the modulation index, ratio their coupling, shape "
     "adds a saw edge and feedback lets the modulator bend itself toward a bowed buzz.",
     {"How strongly the modulator bends the carrier: the brightness.",
      "The modulator's pitch against the carrier: whole ratios ring true, others clang.",
      "Adds a saw edge to the carrier.", "Lets the modulator bend itself, up to a bowed buzz."}},
    {"TINE",
     "STRUCK METAL",
     {"TONE", "TEXTURE", "PUNCH", "TINE"},
     "A strike excites a fundamental and inharmonic metal modes. Tone controls ring, texture the ratios, "
     "punch the impact.",
     {"How long and how brightly the strike rings on.", "Moves the metal's modes against the note.",
      "How hard the hammer hits.", "How much of the thin metal reed rings above the note."}},
    {"ORGAN",
     "PIPES AND ROTOR",
     {"TYPE", "BASS", "ROTOR", "CLICK"},
     "Eight drawbar partials through a rotary speaker. Type sets the registration, bass the low octave, "
     "rotor spins horn and drum from still to fast, click adds the key contact.",
     {"The registration, from flute to full.", "The weight of the low octave.",
      "The rotary speaker's speed, from still to fast.", "The click of the key contacts."}},
    {"WAVETABLE",
     "CONTOUR ATLAS",
     {"TABLE", "POSITION", "WARP", "DRIFT"},
     "Scan an atlas of harmonic contours. Table and position choose the surface, warp bends the phase and "
     "drift detunes the warp oscillator away from the note for inharmonic bells.",
     {"Which family of waves is scanned.", "Where in the table the wave is read.",
      "Bends the reading, which adds overtones.", "Detunes the bend, from tight to bell-like."}},
    {"SWARM",
     "NOISE COLONY",
     {"SWARM", "AM", "FM", "DETUNE"},
     "Three oscillators move through correlated noise. Swarm adds roughness; AM and FM agitate amplitude and "
     "pitch.",
     {"How rough and noisy the colony is.", "How much noise shakes the loudness.",
      "How much noise shakes the pitch.", "How far the three voices drift apart."}},
    {"VOICE",
     "MOUTH AND BODY",
     {"BREATH", "VOWEL", "BITE", "BODY"},
     "A formant mouth over a clean sine body. Vowel moves three formants from u to i, breath mixes air into "
     "them, bite drives the mouth into a growl and body sets the clean low layer.",
     {"Mixes air into the voice.", "The vowel, from u through o, a and e to i.",
      "Drives the mouth into a growl.", "The clean low layer under the mouth."}},
    {"MACHINE",
     "STRUCK AND SCRAPED",
     {"METAL", "SCRAPE", "STRIKE", "STEREO"},
     "Struck and scraped industrial material. Metal sets the ring, from dull thud to long metal; scrape adds "
     "friction grains; strike sets the hit from soft mallet to hard steel; stereo splits left and right "
     "material.",
     {"How long the material rings, from dull thud to long metal.", "Adds grains of friction.",
      "The hit, from soft mallet to hard steel.", "Makes the left and right material differ."}},
    {"RIFT",
     "FRACTURED MATTER",
     {"MATTER", "TEAR", "SHARDS", "STRETCH"},
     "Matter dissolves pitch into noise. Tear breaks its tuning; shards slices and reverses its own sound; "
     "stretch sets how far the slices speed up, slow down and reverse.",
     {"Dissolves the pitch into noise.", "Breaks the tuning, more often and further.",
      "Slices the sound and plays the slices back.", "How far the slices speed up, slow down and reverse."}},
    {"PERC",
     "STRUCK SKIN",
     {"TONE", "SWEEP", "SNAP", "DRIVE"},
     "A synthesized drum voice played from notes. Perc model picks kick, tom, conga or metal; sweep bends "
     "the pitch down, snap adds the beater, tone colours it and drive saturates. Notes tune the drum, so a "
     "kick becomes an 808 bass.",
     {"The drum's brightness.", "How far the pitch falls on a hit.", "The sharpness of the beater.",
      "Saturates the drum."}},
    {"SAMPLER",
     "RECORDED SOUND",
     {"START", "LOOP", "FADE", "END"},
     "A recorded Sample played from notes. Start and end set the part that plays, loop the part a held note "
     "repeats, fade softens the loop seam and the end. A one-shot plays through; keys follows the note and "
     "loops.",
     {"Where the Sample starts to play.", "How much of the part a held note repeats.",
      "Softens the loop's seam and the end.", "Where the Sample stops."}},
};

const Kind& row(int kind) { return kinds[kind < 0 || kind > 9 ? 10 : kind]; }

}  // namespace

const char* synthKindName(int kind) { return row(kind).name; }
const char* synthKindConcept(int kind) { return row(kind).concept_; }
const char* synthKindDescription(int kind) { return row(kind).description; }
const char* engineParamName(int kind, int index) { return row(kind).params[std::clamp(index, 0, 3)]; }

int synthKindNamed(std::string_view name) {
  for (int k = 0; k < synthKinds; k++)
    if (text::sameIgnoringCase(name, kinds[k].name)) return k;
  return -1;
}

const char* lfoQuickName(LfoQuick quick) {
  constexpr const char* names[] = {"TREMOLO", "VIBRATO", "WOBBLE", "DRIFT"};
  return names[std::min<int>(int(quick), 3)];
}

const char* param::engineMeaning(int kind, int index) {
  if (kind < 0 || kind >= synthKinds || index < 0 || index > 3) return nullptr;
  return kinds[kind].meanings[index];
}

}  // namespace synth
