#include "base/Json.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace synth::json {
namespace {

bool holdsSomething(const Json& v) {
  return (v.isArray() && !v.items().empty()) || (v.isObject() && !v.members().empty());
}

void moveContainersOut(Json& from, std::vector<Json>& to) {
  if (from.isArray()) {
    for (Json& item : from.items())
      if (holdsSomething(item)) to.push_back(std::move(item));
  } else if (from.isObject()) {
    for (Json::Member& member : from.members())
      if (holdsSomething(member.value)) to.push_back(std::move(member.value));
  }
}

// The parser keeps its open containers on a list of its own, so that depth costs memory and not stack.
class Parser {
 public:
  explicit Parser(const std::string& text) : text_(text) {}

  Json run(std::string& error) {
    Json root;
    if (!document(root)) {
      error = message_;
      place(error);
      return {};
    }
    return root;
  }

 private:
  struct Open {
    Json value;
    std::string key;
  };

  bool fail(const char* message) {
    message_ = message;
    return false;
  }

  void place(std::string& error) const {
    auto from = text_.begin(), here = from + std::min(at_, text_.size());
    size_t line = 1 + size_t(std::count(from, here, '\n'));
    size_t start = at_ == 0 ? text_.npos : text_.rfind('\n', at_ - 1);
    size_t column = at_ - (start == text_.npos ? 0 : start + 1) + 1;
    error += " at line " + std::to_string(line) + ", column " + std::to_string(column);
  }

  void skipSpace() {
    while (at_ < text_.size()) {
      char c = text_[at_];
      if (c == ' ' || (c >= '\t' && c <= '\r'))
        at_++;
      else if (c == '/' && at_ + 1 < text_.size() && text_[at_ + 1] == '/')
        at_ = std::min(text_.find('\n', at_), text_.size());
      else
        return;
    }
  }

  bool atEnd() const { return at_ >= text_.size(); }

  bool document(Json& root) {
    std::vector<Open> open;
    for (;;) {
      Json value;
      bool opened = false;
      skipSpace();
      if (atEnd()) return fail("Unexpected end of JSON");
      char c = text_[at_];
      if (c == '[' || c == '{') {
        at_++;
        open.push_back({c == '[' ? Json::array() : Json::object(), {}});
        opened = true;
      } else if (!scalar(value)) {
        return false;
      }
      // Close what ends here, then stand before the next value or leave.
      for (bool first = opened;; first = false) {
        if (!first) {
          if (open.empty()) {
            root = std::move(value);
            skipSpace();
            return atEnd() || fail("Unexpected text after the JSON value");
          }
          Open& into = open.back();
          if (into.value.isArray())
            into.value.push(std::move(value));
          else
            into.value.add(std::move(into.key), std::move(value));
        }
        Open& top = open.back();
        const bool array = top.value.isArray();
        skipSpace();
        if (atEnd()) return fail("Unexpected end of JSON");
        if (text_[at_] == (array ? ']' : '}')) {
          at_++;
          value = std::move(top.value);
          open.pop_back();
          continue;
        }
        if (!first) {
          if (text_[at_] != ',') return fail(array ? "Expected , or ]" : "Expected , or }");
          at_++;
        }
        if (!array && !key(top.key)) return false;
        break;
      }
    }
  }

  bool key(std::string& out) {
    skipSpace();
    if (atEnd()) return fail("Unexpected end of JSON");
    if (text_[at_] != '"') return fail("Expected a quoted key");
    if (!quoted(out)) return false;
    skipSpace();
    if (atEnd()) return fail("Unexpected end of JSON");
    if (text_[at_] != ':') return fail("Expected :");
    at_++;
    return true;
  }

  bool word(const char* word) {
    size_t size = std::strlen(word);
    if (text_.compare(at_, size, word) != 0) return false;
    at_ += size;
    return true;
  }

  bool scalar(Json& out) {
    char c = text_[at_];
    if (c == '"') {
      std::string s;
      if (!quoted(s)) return false;
      out = Json(std::move(s));
      return true;
    }
    if (c == '-' || (c >= '0' && c <= '9')) return number(out);
    if (word("true"))
      out = Json(true);
    else if (word("false"))
      out = Json(false);
    else if (!word("null"))
      return fail("Bad JSON value");
    return true;
  }

  bool number(Json& out) {
    const char* begin = text_.c_str() + at_;
    const char* last = text_.c_str() + text_.size();
    double value = 0;
    auto [end, code] = std::from_chars(begin, last, value);
    // Hexadecimal and out-of-range numbers are left to strtod, which is slower by far.
    if (code != std::errc{} || *end == 'x' || *end == 'X') {
      char* stop = nullptr;
      value = std::strtod(begin, &stop);
      end = stop;
    }
    if (end == begin) return fail("Bad JSON value");
    at_ += size_t(end - begin);
    out = Json(value);
    return true;
  }

  static void appendUtf8(std::string& out, unsigned code) {
    if (code < 0x80) {
      out += char(code);
    } else if (code < 0x800) {
      out += char(0xC0 | code >> 6);
      out += char(0x80 | (code & 63));
    } else {
      out += char(0xE0 | code >> 12);
      out += char(0x80 | (code >> 6 & 63));
      out += char(0x80 | (code & 63));
    }
  }

  bool unicode(std::string& out) {
    if (at_ + 4 > text_.size()) return fail("Bad \\u escape");
    unsigned code = 0;
    const char* from = text_.data() + at_;
    if (std::from_chars(from, from + 4, code, 16).ptr != from + 4) return fail("Bad \\u escape");
    at_ += 4;
    appendUtf8(out, code);
    return true;
  }

  bool quoted(std::string& out) {
    out.clear();
    for (at_++;;) {
      size_t stop = text_.find_first_of("\"\\", at_);
      if (stop == text_.npos) {
        at_ = text_.size();
        return fail("Unterminated string");
      }
      out.append(text_, at_, stop - at_);
      at_ = stop + 1;
      if (text_[stop] == '"') return true;
      if (atEnd()) return fail("Unterminated string");
      char c = text_[at_++];
      switch (c) {
        case 'b': out += '\b'; break;
        case 'f': out += '\f'; break;
        case 'n': out += '\n'; break;
        case 'r': out += '\r'; break;
        case 't': out += '\t'; break;
        case 'u':
          if (!unicode(out)) return false;
          break;
        default: out += c;
      }
    }
  }

  const std::string& text_;
  size_t at_ = 0;
  const char* message_ = "";
};

}  // namespace

Json::~Json() {
  if (!holdsSomething(*this)) return;
  std::vector<Json> pending;
  moveContainersOut(*this, pending);
  while (!pending.empty()) {
    Json value = std::move(pending.back());
    pending.pop_back();
    moveContainersOut(value, pending);
  }
}

const Json* Json::find(std::string_view key) const {
  for (const Member& member : members())
    if (member.key == key) return &member.value;
  return nullptr;
}

Json& Json::add(std::string key, Json value) {
  members().push_back({std::move(key), std::move(value)});
  return *this;
}

Json& Json::push(Json value) {
  items().push_back(std::move(value));
  return *this;
}

Json parse(const std::string& text, std::string& error) { return Parser(text).run(error); }

}  // namespace synth::json
