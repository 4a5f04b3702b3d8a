// Completion for bash and zsh, and the man page.
#include <map>

#include "base/Text.h"
#include "cli/Command.h"
#include "cli/Guides.h"
#include "cli/Help.h"
#include "cli/Pages.h"

namespace synth::cli {
namespace {

// Within single quotes of a shell.
std::string quoted(const std::string& text) {
  std::string out = "'";
  for (char c : text) out += c == '\'' ? "'\\''" : std::string(1, c);
  return out + "'";
}

std::string firstSentence(const std::string& text) {
  const size_t end = text.find(". ");
  return end == text.npos ? text : text.substr(0, end + 1);
}

struct Word {
  std::string text, about;
};

// First words, each with what it is about and the second words that may follow.
struct FirstWord {
  std::string about;
  std::vector<Word> second;
};

std::map<std::string, FirstWord> words() {
  std::map<std::string, FirstWord> out;
  for (const Command& c : registerCommands()) {
    const size_t blank = c.name.find(' ');
    FirstWord& first = out[c.name.substr(0, blank)];
    if (blank == c.name.npos)
      first.about = firstSentence(c.summary);
    else
      first.second.push_back({c.name.substr(blank + 1), firstSentence(c.summary)});
  }
  std::vector<Word> commands;
  for (auto& [word, first] : out) {
    if (first.about.empty()) first.about = word;
    commands.push_back({word, first.about});
  }
  out["help"].second = std::move(commands);
  for (const Guide& guide : guides()) out["guide"].second.push_back({guide.topic, guide.description});
  return out;
}

std::string optionsOf(const Command& c) {
  std::string out;
  for (const ArgSpec& a : c.args)
    if (a.kind != ArgSpec::Positional) out += (out.empty() ? "--" : " --") + a.name;
  return out + (out.empty() ? "--compact" : " --compact");
}

// What roff would take for a request or an escape.
std::string roff(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c == '\\' || c == '-') out += '\\';
    out += c;
  }
  return out.empty() || (out[0] != '.' && out[0] != '\'') ? out : "\\&" + out;
}

}  // namespace

std::string bashCompletion() {
  std::string first, seconds, options;
  for (const auto& [word, row] : words()) {
    first += (first.empty() ? "" : " ") + word;
    std::vector<std::string> second;
    for (const Word& next : row.second) second.push_back(next.text);
    if (!second.empty()) seconds += "    " + word + ") second=" + quoted(text::joined(second, " ")) + " ;;\n";
  }
  for (const Command& c : registerCommands())
    options += "    " + quoted(c.name) + ") options=" + quoted(optionsOf(c)) + " ;;\n";
  return "# bash completion for quorel\n"
         "_quorel() {\n"
         "  local cur=${COMP_WORDS[COMP_CWORD]} first=${COMP_WORDS[1]} second= options= command=\n"
         "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
         "    COMPREPLY=($(compgen -W " +
         quoted(first) +
         " -- \"$cur\"))\n"
         "    return\n"
         "  fi\n"
         "  case $first in\n" +
         seconds +
         "  esac\n"
         "  if [ \"$COMP_CWORD\" -eq 2 ] && [ -n \"$second\" ]; then\n"
         "    COMPREPLY=($(compgen -W \"$second\" -- \"$cur\"))\n"
         "    [ \"${#COMPREPLY[@]}\" -gt 0 ] && return\n"
         "  fi\n"
         "  command=$first\n"
         "  case \" $second \" in *\" ${COMP_WORDS[2]} \"*) command=\"$first ${COMP_WORDS[2]}\" ;; esac\n"
         "  case $command in\n" +
         options +
         "  esac\n"
         "  case $cur in\n"
         "    -*) COMPREPLY=($(compgen -W \"$options\" -- \"$cur\")) ;;\n"
         "  esac\n"
         "}\n"
         "# Without words of ours the shell offers files: it knows blanks, quotes and ~.\n"
         "complete -o default -F _quorel quorel\n";
}

std::string zshCompletion() {
  std::string first, cases;
  for (const auto& [word, row] : words()) {
    first += "    " + quoted(word + ":" + row.about) + "\n";
    if (row.second.empty()) continue;
    cases += "    " + word + ")\n      second=(\n";
    for (const Word& next : row.second) cases += "        " + quoted(next.text + ":" + next.about) + "\n";
    cases += "      ) ;;\n";
  }
  std::string options;
  for (const Command& c : registerCommands()) {
    options += "    " + quoted(c.name) + ") options=(";
    for (const ArgSpec& a : c.args)
      if (a.kind != ArgSpec::Positional) options += quoted("--" + a.name + ":" + a.help) + " ";
    options += "'--compact:print one line') ;;\n";
  }
  return "#compdef quorel\n"
         "_quorel() {\n"
         "  local -a first second options\n"
         "  local command=$words[2]\n"
         "  first=(\n" +
         first +
         "  )\n"
         "  if (( CURRENT == 2 )); then\n"
         "    _describe command first\n"
         "    return\n"
         "  fi\n"
         "  case $words[2] in\n" +
         cases +
         "  esac\n"
         "  if (( CURRENT == 3 && $#second )); then\n"
         "    _describe command second && return\n"
         "  fi\n"
         "  (( $#second )) && [[ -n ${second[(r)$words[3]:*]} ]] && command=\"$words[2] $words[3]\"\n"
         "  case $command in\n" +
         options +
         "  esac\n"
         "  if [[ $words[CURRENT] == -* ]]; then\n"
         "    _describe option options\n"
         "  else\n"
         "    _files\n"
         "  fi\n"
         "}\n"
         "_quorel \"$@\"\n";
}

std::string manPage() {
  std::string out =
      ".TH QUOREL 1 \"\" \"Quorel " + std::string(cliVersion) +
      "\" \"User Commands\"\n.SH NAME\nquorel \\- build, render, hear and compare songs\n"
      ".SH SYNOPSIS\n.B quorel\n.I COMMAND\n[ARGUMENTS]\n.SH DESCRIPTION\n"
      "Every command prints one JSON envelope; with\n.B \\-\\-compact\non one line. "
      "Projects are .quorel files, specs are JSON. Writes never replace a file without\n"
      ".BR \\-\\-force .\nWithout a command the guide for beginners is printed.\n.SH COMMANDS\n";
  for (const Command& c : registerCommands()) {
    out += ".SS " + roff(usageLine(c)) + "\n" + roff(c.summary) + "\n";
    for (const ArgSpec& a : c.args)
      out += ".TP\n.B " + roff(a.kind == ArgSpec::Positional ? a.name : "--" + a.name) + "\n" + roff(a.help) +
             "\n";
  }
  return out +
         ".SH EXIT STATUS\n0 ok, 1 internal error, 2 usage, 3 invalid input, 4 file problem.\n"
         ".SH FILES\nPresets of your own lie in\n"
         ".IR \"~/Library/Application Support/Quorel/Presets\" .\n";
}

}  // namespace synth::cli
