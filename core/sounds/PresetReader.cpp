// A Preset from text. Header lines are read as they come; what depends on the Engine waits until it is known.
#include <algorithm>
#include <cfloat>
#include <cmath>
#include <optional>

#include "base/Math.h"
#include "base/Text.h"
#include "core/Names.h"
#include "core/SynthKinds.h"
#include "core/params/Perceptual.h"
#include "core/sounds/MacroTravel.h"
#include "core/sounds/Macros.h"
#include "core/sounds/Pins.h"
#include "core/sounds/PresetRules.h"

namespace synth::preset {
namespace {

struct Line {
  int number = 0;
  std::string key, value;  // of a target: all of it in `value`
  size_t macro = 0;        // of a target: its Macro
};

using Kept = std::optional<Line>;

bool readFloat(std::string_view s, f32& value) {
  double number = 0;
  if (!text::readNumber(s, number) || std::fabs(number) > FLT_MAX) return false;
  value = f32(number);
  return true;
}

// A number, or for times a ratio.
bool readAmount(const param::Info& info, std::string_view s, f32& amount) {
  for (const std::string_view sign : {"×", "x", "X"}) {
    if (!s.starts_with(sign)) continue;
    double ratio = 0;
    if (perceptual::unitOf(info) != perceptual::Time || !text::readNumber(s.substr(sign.size()), ratio) ||
        !(ratio > 0))
      return false;
    amount = f32(math::log2(ratio));
    return true;
  }
  return readFloat(s, amount);
}

bool readWindow(std::string_view s, MacroTarget& target) {
  const size_t dots = s.find("..");
  f32 from = 0, to = 0;
  if (!readFloat(s.substr(0, dots), from) || !readFloat(s.substr(dots + 2), to)) return false;
  if (!(from >= 0 && from < to && to <= 1)) return false;
  target.window_from = from;
  target.window_to = to;
  return true;
}

bool readOption(const param::Info& info, std::string_view s, f32& value) {
  for (int i = 0; info.curve == param::Enumeration && i < info.optionCount; i++)
    if (text::sameIgnoringCase(info.options[i], s)) {
      value = f32(i);
      return true;
    }
  return false;
}

std::string most(int count) { return std::to_string(count); }

class Reader {
 public:
  Reader(Preset& preset, std::vector<std::string>& warnings, std::string& error)
      : p_(preset), warnings_(warnings), error_(error) {}

  bool read(std::string_view text) {
    p_ = Preset{};
    for (int number = 1; !text.empty(); number++) {
      const size_t end = std::min(text.find('\n'), text.size());
      if (!readLine(number, text.substr(0, end))) return false;
      text.remove_prefix(std::min(end + 1, text.size()));
    }
    return finish();
  }

 private:
  void warn(int line, const std::string& text) {
    warnings_.push_back("line " + std::to_string(line) + ": " + text);
  }
  bool fail(const std::string& text) {
    error_ = text;
    return false;
  }

  // ---- Line by line.

  bool readLine(int number, std::string_view raw) {
    if (raw.ends_with('\r')) raw.remove_suffix(1);
    const std::string_view trimmed = text::trimmed(raw);
    if (trimmed.empty() || trimmed[0] == '#') return true;
    const bool indented = trimmed.data() != raw.data();
    const size_t equals = trimmed.find('=');
    if (equals == trimmed.npos) {
      if (indented && macroOpen_)
        targets_.push_back({number, "", std::string(trimmed), p_.macros.size() - 1});
      else
        warn(number, indented ? "a Macro target outside a macro, skipped" : "not \"key = value\", skipped");
      return true;
    }
    macroOpen_ = false;
    return readKey({number, std::string(text::trimmed(trimmed.substr(0, equals))),
                    std::string(text::trimmed(trimmed.substr(equals + 1))), 0});
  }

  bool readKey(Line line) {
    const std::string key = text::lower(line.key);
    if (key == "name") {
      if (line.value.size() > size_t(limits::presetName))
        warn(line.number, "name longer than " + most(limits::presetName) + " characters, cut");
      p_.name = cleanName(line.value);
    } else if (key == "role") {
      role_ = true;
      p_.role = Role::Lead;
      if (!parseRole(line.value, p_.role)) warn(line.number, "unknown role " + line.value + ", LEAD instead");
    } else if (key == "engine") {
      return readEngine(line);
    } else if (key == "macro") {
      readMacro(line);
    } else if (key == "sample_name") {
      p_.sampleName = line.value;
    } else if (Kept* kept = keptFor(key)) {
      *kept = std::move(line);
    } else {
      values_.push_back(std::move(line));
    }
    return true;
  }

  Kept* keptFor(const std::string& key) {
    if (key == "family") return &family_;
    if (key == "tags") return &tags_;
    if (key == "style") return &style_;
    if (key == "pins") return &pins_;
    return key == "sample" ? &sample_ : nullptr;
  }

  bool readEngine(const Line& line) {
    engine_ = true;
    const bool kit = text::sameIgnoringCase(line.value, "DRUMS");
    const int kind = kit ? int(ANALOG) : synthKindNamed(line.value);
    if (kind < 0) return fail("Unknown engine " + line.value + " (line " + std::to_string(line.number) + ")");
    p_.kind = kit ? DRUMS : MELODIC;
    p_.engine = SynthKind(kind);
    return true;
  }

  void readMacro(const Line& line) {
    const Words words = text::words(line.value);
    if (words.size() != 3) return warn(line.number, "a macro is \"macro = NAME uni|bi VALUE\", skipped");
    const std::string name = macros::cleanName(words[0]);
    if (name.empty())
      return warn(line.number, "Macro name " + words[0] +
                                   " is not one word of letters, digits, _ or - (or is a parameter's key), "
                                   "skipped");
    if (macroNamed(p_, name)) return warn(line.number, "a second Macro " + words[0] + ", skipped");
    if (int(p_.macros.size()) >= limits::macros)
      return warn(line.number,
                  "a sound holds at most " + most(limits::macros) + " Macros, " + words[0] + " skipped");
    MacroRec macro;
    setName(macro.name, name);
    const std::string polarity = text::upper(words[1]);
    macro.polarity = polarity == "BI" || polarity == "BIPOLAR";
    if (!macro.polarity && polarity != "UNI" && polarity != "UNIPOLAR")
      warn(line.number, "polarity is uni or bi, " + words[1] + " read as uni");
    f32 value = 0;
    if (!readFloat(words[2], value))
      warn(line.number, "cannot read the value of Macro " + words[0] + ", 0 instead");
    macro.value = macros::clampValue(macro.polarity, value);
    if (macro.value != value)
      warn(line.number, "Macro " + words[0] + " = " + words[2] + " is outside its range, clamped");
    p_.macros.push_back(macro);
    macroOpen_ = true;
  }

  // ---- What depends on the whole header.

  bool finish() {
    if (!role_) warnings_.push_back(noRoleWarning);
    if (p_.name.empty()) return fail("A Preset needs a name");
    if (!engine_) return fail("A Preset needs an engine (ANALOG … SAMPLER, or DRUMS)");
    if (family_) readFamily(*family_);
    if (tags_) readWords(*tags_, "tag", "tags", characterTags(), mostTags, p_.tags);
    if (style_) readWords(*style_, "style", "style", styles(), mostStyles, p_.styles);
    for (const Line& line : targets_) readTarget(line);
    if (pins_) readPins(*pins_);
    if (sample_ && !readSample(*sample_)) return false;
    for (const Line& line : values_) readValue(line);
    normalize(p_);
    return true;
  }

  void readFamily(const Line& line) {
    const std::string family = text::upper(line.value);
    if (family.empty()) return;
    if (validFamily(p_.role, family, p_.kind)) {
      p_.family = family;
      return;
    }
    const std::string role = roleName(p_.role);
    if (p_.kind == DRUMS && family != "KIT")
      warn(line.number, "a Drums kit's family is KIT, " + line.value + " dropped");
    else if (p_.kind != DRUMS && family == "KIT")
      warn(line.number, "family KIT is for Drums kits, dropped");
    else
      warn(line.number, "family " + line.value + " is not one of " + role + "'s (" +
                            text::joined(families(p_.role), ", ") + "), dropped");
  }

  void readWords(const Line& line, const std::string& one, const std::string& many, const Words& vocabulary,
                 int limit, Words& into) {
    bool over = false;
    for (const std::string& given : text::words(line.value)) {
      const std::string word = text::upper(given);
      if (std::find(vocabulary.begin(), vocabulary.end(), word) == vocabulary.end())
        warn(line.number, one + " " + given + " (" + text::joined(vocabulary, ", ") + "), dropped");
      else if (std::find(into.begin(), into.end(), word) != into.end())
        warn(line.number, one + " " + given + " repeats, dropped");
      else if (int(into.size()) < limit)
        into.push_back(word);
      else
        over = true;
    }
    if (over) warn(line.number, many + " holds at most " + most(limit) + ", kept " + text::joined(into, " "));
  }

  void readTarget(const Line& line) {
    const Words words = text::words(line.value);
    if (words.size() < 2 || words.size() > 4)
      return warn(line.number, "a Macro target is \"KEY AMOUNT [AMOUNT AT -100 %] [FROM..TO]\", skipped");
    MacroRec& macro = p_.macros[line.macro];
    const std::string name = "Macro " + std::string(nameText(macro.name)), &word = words[0];
    const KeyText key = keyOf(word);
    const param::Info* info = param::find(key.key);
    if (!key.readable) return warn(line.number, "bad Pad index in " + word + ", skipped");
    if (!info) return warn(line.number, "unknown parameter " + word + " in " + name + ", skipped");
    if (!macros::targetable(*info, p_.kind, p_.engine))
      return warn(line.number, name + " cannot move " + word + " on " + engineName(p_) + ", skipped");
    MacroTarget target;
    target.param = info->id;
    if (!readAmount(*info, words[1], target.amount))
      return warn(line.number, "cannot read the amount " + words[1] + " of " + word + ", skipped");
    target.amount_down = macro.polarity ? -target.amount : 0;
    if (!readMore(line, words, *info, macro, target)) return;
    const bool ofPad = info->scope == param::ScopePad;
    if (ofPad && !(key.pad >= 0 && key.pad < limits::pads))
      return warn(line.number, word + " needs a Pad index, skipped");
    if (!ofPad && key.indexed) return warn(line.number, word + " takes no Pad index, skipped");
    target.pad = ofPad ? u8(key.pad) : u8(0);
    for (int i = 0; i < macro.targetCount; i++)
      if (macro.targets[i].param == target.param && macro.targets[i].pad == target.pad)
        return warn(line.number, name + " moves " + word + " twice, the second skipped");
    if (macro.targetCount >= limits::macroTargets)
      return warn(line.number, "a Macro moves at most " + most(limits::macroTargets) + " parameters, " +
                                   word + " skipped");
    macro.targets[macro.targetCount++] = target;
  }

  // The words of a target behind its amount; false when the target is lost.
  bool readMore(const Line& line, const Words& words, const param::Info& info, const MacroRec& macro,
                MacroTarget& target) {
    bool down = false;
    for (size_t i = 2; i < words.size(); i++) {
      const std::string& word = words[i];
      if (word.find("..") != word.npos) {
        if (!readWindow(word, target))
          warn(line.number, "a window is FROM..TO within 0..1, " + word + " ignored");
      } else if (!macro.polarity) {
        warn(line.number, "a unipolar Macro has no amount at -100 %; " + word + " ignored");
      } else if (down) {
        warn(line.number, "one amount at -100 %; " + word + " ignored");
      } else if (readAmount(info, word, target.amount_down)) {
        down = true;
      } else {
        warn(line.number, "cannot read the amount " + word + " of " + words[0] + ", skipped");
        return false;
      }
    }
    return true;
  }

  void readPins(const Line& line) {
    p_.pinsSet = true;
    for (const std::string& given : text::words(line.value)) {
      const MacroRec* macro = macroNamed(p_, given);
      const std::string word = macro ? std::string(nameText(macro->name)) : text::lower(given);
      if (std::find(p_.pins.begin(), p_.pins.end(), word) != p_.pins.end())
        warn(line.number, "Pin " + given + " repeats, dropped");
      else if (int(p_.pins.size()) >= limits::pins)
        warn(line.number, "pins holds at most " + most(limits::pins) + ", " + given + " dropped");
      else if (!macro && !pins::valid(p_.kind, p_.engine, word))
        warn(line.number, "Pin " + given + " is not a parameter of " + engineName(p_) +
                              " or a Macro of the Preset, dropped");
      else
        p_.pins.push_back(word);
    }
  }

  bool readSample(const Line& line) {
    if (p_.kind == DRUMS || p_.engine != SAMPLER) {
      warn(line.number, "sample is for SAMPLER Presets, skipped");
      return true;
    }
    return text::fromHex(line.value, p_.sampleHash, sizeof p_.sampleHash) ||
           fail("A sample is 64 hex characters");
  }

  // Why a value line is not read at all, or "".
  std::string refusal(const KeyText& key, const std::string& given, const param::Info* info) const {
    const std::string bare = given.substr(0, given.find('['));
    if (!key.readable) return "bad Pad index in " + given + ", skipped";
    if (!info) return "unknown parameter " + given + ", skipped";
    if (key.key == "engine" || key.key == "track_kind") return given + " comes from the engine line, skipped";
    if (info->mix) return given + " belongs to the mix, not a Preset; skipped";
    if (info->scope == param::ScopeProject) return given + " belongs to the project, not a Preset; skipped";
    if (!holds(*info, p_.kind, p_.engine))
      return given + " is not used by " +
             (p_.kind == DRUMS                    ? "a Drums kit"
              : info->applies == param::DrumsOnly ? "a melodic Track"
                                                  : engineName(p_)) +
             ", skipped";
    const bool ofPad = info->scope == param::ScopePad;
    if (ofPad && !(key.pad >= 0 && key.pad < limits::pads))
      return bare + " needs a Pad index (" + bare + "[0] .. " + bare + "[7]), skipped";
    return !ofPad && key.indexed ? bare + " takes no Pad index, skipped" : "";
  }

  void readValue(const Line& line) {
    const KeyText key = keyOf(line.key);
    const param::Info* info = param::find(key.key);
    if (const std::string why = refusal(key, line.key, info); !why.empty()) return warn(line.number, why);
    f32 value = 0;
    if (!readOption(*info, line.value, value) && !readFloat(line.value, value))
      return warn(line.number, "cannot read " + line.key + " = " + line.value + ", skipped");
    if (info->whole() && value != std::round(value)) {
      warn(line.number, line.key + " is a whole number; " + line.value + " rounded");
      value = std::round(value);
    }
    const f32 stored = storable(*info, value);
    if (stored != value)
      warn(line.number, line.key + " = " + line.value + " is outside " + text::number(info->min) + " .. " +
                            text::number(info->max) + ", clamped to " + text::number(stored));
    p_.values.push_back({key.key, key.pad, stored});
  }

  Preset& p_;
  std::vector<std::string>& warnings_;
  std::string& error_;
  bool role_ = false, engine_ = false, macroOpen_ = false;
  Kept family_, tags_, style_, pins_, sample_;
  std::vector<Line> targets_, values_;
};

}  // namespace

bool parse(std::string_view text, Preset& preset, std::vector<std::string>& warnings, std::string& error) {
  return Reader(preset, warnings, error).read(text);
}

}  // namespace synth::preset
