#include "analysis/compare/Issues.h"

#include "analysis/Measure.h"
#include "base/Text.h"
#include "core/PitchNames.h"

namespace synth::analysis {
namespace {

using text::print;

struct Advice {
  const char *more, *less;
};
// A row a band.
constexpr Advice bandAdvice[bandCount] = {
    {"lower sub_level / eq_low, raise highpass, or shorten kick tails",
     "raise sub_level or the kick/bass level; check highpass and mono_below"},
    {"lower bass levels or eq_low; shorten bass decay", "raise the bass/kick level or eq_low"},
    {"cut eq_mid near 300 Hz or lower pads and chords; raise highpass on non-bass tracks",
     "raise body: drive, chord tracks, eq_mid around 300-500 Hz"},
    {"lower mid-heavy tracks or eq_mid", "raise lead/chord levels or eq_mid"},
    {"lower snare/clap/lead levels, filter_env or resonance", "raise snare/clap/lead, cutoff or filter_env"},
    {"lower cutoff, hats or drive; less eq_high", "raise cutoff, hats, eq_high or brightness macros"},
    {"lower cutoff/lowpass, hats or reverb_high_cut",
     "raise cutoff/lowpass, eq_high, hats or reverb_high_cut"},
};

// Each rule looks at one kind of difference and says what it finds.
class Rules {
 public:
  Rules(const Features& reference, const Features& render, const Differences& d, double bpm)
      : ref_(reference), render_(render), d_(d), bpm_(bpm) {}

  std::vector<Issue> all() {
    bands();
    brightness();
    noisiness();
    attacks();
    crest();
    movement();
    onsets();
    tempo();
    pitch();
    loudness();
    stereo();
    range();
    std::stable_sort(issues_.begin(), issues_.end(),
                     [](const Issue& a, const Issue& b) { return a.severity > b.severity; });
    return std::move(issues_);
  }

 private:
  void say(double severity, std::string text) { issues_.push_back({severity, std::move(text)}); }

  void bands() {
    for (size_t b = 0; b < bandCount; b++) {
      const double d = d_.bandsDb[b];
      const double share = dbPower(std::max(render_.bandsDb[b], ref_.bandsDb[b]));
      if (!(std::fabs(d) >= 1.5) || !(share > 0.002)) continue;
      const bool cut = d_.lossyReference && b == bandCount - 1;
      say(std::fabs(d) / 1.5 * std::min(3 * share + 0.4, 1.0),
          print("Render has %s %s (%g-%g Hz, %+.1f dB) than the reference: %s", d > 0 ? "more" : "less",
                Bands[b].name, Bands[b].low, cut ? 12500 : Bands[b].high, d,
                d > 0 ? bandAdvice[b].more : bandAdvice[b].less));
    }
  }

  void brightness() {
    const double d = d_.centroidPct;
    if (!(std::fabs(d) >= 8)) return;
    say(std::fabs(d) / 8, print("Render is %.0f%% %s (spectral centroid %.0f vs %.0f Hz): %s", std::fabs(d),
                                d > 0 ? "brighter" : "darker", render_.centroidHz, ref_.centroidHz,
                                d > 0 ? "lower cutoff or filter_env, soften drive, or cut eq_high"
                                      : "raise cutoff, filter_env, brightness macros or eq_high"));
  }

  void noisiness() {
    const double d = d_.flatnessDb;
    if (!(std::fabs(d) >= 4)) return;
    say(std::fabs(d) / 6,
        print("Render is %s (spectral flatness %.1f vs %.1f dB): %s", d > 0 ? "noisier" : "more tonal",
              powerDb(render_.flatness), powerDb(ref_.flatness),
              d > 0 ? "less noise_mix, crush, drive or hats" : "add noise_mix, hats or drive"));
  }

  void attacks() {
    const double d = d_.attackMs;
    if (!(std::fabs(d) >= 5) || ref_.measuredHits == 0 || render_.measuredHits == 0) return;
    say(std::fabs(d) / 5,
        print("Attacks are %.0f ms %s (median %.0f vs %.0f ms): %s", std::fabs(d),
              d > 0 ? "slower" : "faster", render_.attackMs, ref_.attackMs,
              d > 0 ? "shorter attack / filter_attack, more click or pitch_env, faster pad_snap"
                    : "longer attack, less click, softer pad_snap"));
  }

  void crest() {
    const double d = d_.crestDb;
    if (!(std::fabs(d) >= 1.5)) return;
    say(std::fabs(d) / 1.5,
        print("Render is %s (crest %.1f vs %.1f dB): %s", d > 0 ? "more dynamic" : "more compressed",
              render_.crestDb, ref_.crestDb,
              d > 0 ? "raise comp_amount or saturation, lower the limiter_ceiling headroom"
                    : "lower comp_amount, saturation or drive"));
  }

  void movement() {
    constexpr const char* names[3] = {"Low", "Mid", "High"};
    for (size_t b = 0; b < 3; b++) {
      const double r = d_.envelopeCorrelation[b];
      if (!(r < 0.5)) continue;
      say((0.5 - r) * 4,
          print("%s band moves differently over time (envelope correlation %.2f): check note placement, "
                "lengths, decays and lanes in that range",
                names[b], rounded(r, 2)));
    }
  }

  std::string place(double seconds) const {
    if (!(bpm_ > 0)) return print("%.2f s", seconds);
    const double beats = seconds * bpm_ / 60;
    const int bar = int(beats / 4);
    return print("%.2f s (bar %d beat %.1f)", seconds, bar + 1, beats - 4 * bar + 1);
  }

  void onsets() {
    const double f = d_.onsetF1;
    if (!(f < 0.85)) return;
    std::string text = print("Onsets match %.0f%%", 100 * f);
    const size_t missing = d_.onsetsMissing.size();
    if (missing > 0) {
      std::vector<std::string> first;
      for (size_t i = 0; i < std::min<size_t>(missing, 3); i++) first.push_back(place(d_.onsetsMissing[i]));
      text += print(": %zu reference onsets have no render onset within 50 ms", missing) +
              " (first: " + text::joined(first, ", ") + ")";
    }
    if (d_.onsetsExtra > 0)
      text += print("%s%d render onsets are extra", missing ? ", " : ": ", d_.onsetsExtra);
    say((0.85 - f) * 12, text + ": check step positions, nudge, swing and the offset");
  }

  void tempo() {
    if (!(std::fabs(d_.tempoPct) >= 1.5) || !(ref_.tempoConfidence > 0.1)) return;
    say(std::fabs(d_.tempoPct) / 1.5,
        print("Tempo differs by %.1f%% (render %.1f BPM, reference estimate %.1f BPM): check bpm",
              std::fabs(d_.tempoPct), d_.renderTempoBpm, d_.referenceTempoBpm));
  }

  void pitch() {
    const double c = d_.chromaSimilarity;
    const bool otherKey = ref_.keyStrength > 0.5 && render_.keyStrength > 0.5 && ref_.key != render_.key;
    if (!(c < 0.93) && !otherKey) return;
    size_t most = 0, least = 0;
    auto rise = [&](size_t k) { return render_.chroma[k] - ref_.chroma[k]; };
    for (size_t k = 1; k < 12; k++) {
      if (rise(k) > rise(most)) most = k;
      if (rise(k) < rise(least)) least = k;
    }
    std::string text = print("Pitch content differs (chroma similarity %.2f", c);
    if (otherKey) text += "; key " + render_.key + " vs " + ref_.key;
    if (rise(most) > 0) text += print("; render has more %s", pitchClassNames[most]);
    if (rise(least) < 0) text += print("; less %s", pitchClassNames[least]);
    say(std::max((0.93 - c) * 15, otherKey ? 1.5 : 1.0), text + "): check notes, transpose and fine");
  }

  void loudness() {
    const double d = d_.loudnessLu;
    if (!(std::fabs(d) >= 1)) return;
    say(std::fabs(d) / 1.5, print("Render is %.1f LU %s than the reference before matching: %s", std::fabs(d),
                                  d > 0 ? "louder" : "quieter",
                                  d > 0 ? "lower master or track levels" : "raise master or track levels"));
  }

  void stereo() {
    const double s = d_.sideMidDb, c = d_.correlation;
    const bool side = std::fabs(s) >= 2 && render_.sideMidDb > -50 && ref_.sideMidDb > -50;
    if (!side && !(std::fabs(c) >= 0.15)) return;
    // Where the sides are too faint to tell, the correlation says which is wider.
    const bool wider = side ? s > 0 : c < 0;
    say(std::max(std::fabs(s) * 0.5, std::fabs(c) / 0.15),
        print("Render is %.1f dB %s (side/mid %.1f vs %.1f dB, L/R correlation %.2f vs %.2f): %s",
              std::fabs(s), wider ? "wider" : "narrower", render_.sideMidDb, ref_.sideMidDb,
              render_.correlation, ref_.correlation,
              wider ? "lower width, unison_spread or reverb sends; keep lows mono with mono_below"
                    : "raise width, unison_spread, pan spread, chorus or reverb_width"));
  }

  void range() {
    const double d = d_.lraLu;
    if (!(std::fabs(d) >= 3)) return;
    say(std::fabs(d) / 3,
        print("Loudness range differs by %.1f LU (%s)", std::fabs(d),
              d > 0 ? "the render varies more; even out section levels"
                    : "the reference builds and drops more; vary levels and density between sections"));
  }

  const Features &ref_, &render_;
  const Differences& d_;
  double bpm_;
  std::vector<Issue> issues_;
};

}  // namespace

std::vector<Issue> issuesOf(const Features& reference, const Features& render, const Differences& differences,
                            double bpm) {
  return Rules(reference, render, differences, bpm).all();
}

}  // namespace synth::analysis
