#include "core/params/Registry.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/Math.h"
#include "core/params/TableRows.h"

namespace synth {

const char* starterTrackName(int slot) {
  constexpr const char* names[] = {"DRUMS",   "BASS",    "SYNTH A", "SYNTH B", "SYNTH C", "SYNTH D",
                                   "SYNTH E", "SYNTH F", "SYNTH G", "SYNTH H", "SYNTH I", "SYNTH J",
                                   "SYNTH K", "SYNTH L", "SYNTH M", "SYNTH N"};
  return names[std::clamp(slot, 0, 15)];
}

namespace param {
namespace {

struct Table {
  std::vector<Info> rows = tableRows();
  std::vector<const Info*> byId, byKey;

  Table() {
    for (const Info& row : rows) byId.push_back(&row);
    byKey = byId;
    std::sort(byId.begin(), byId.end(), [](auto a, auto b) { return a->id < b->id; });
    std::sort(byKey.begin(), byKey.end(), [](auto a, auto b) { return std::strcmp(a->key, b->key) < 0; });
  }
};

const Table& table() {
  static const Table* const t = new Table;
  return *t;
}

size_t place(const Info& info, int track, int pad) {
  size_t at = info.offset;
  if (info.scope != ScopeProject) at += offsetof(Project, tracks) + sizeof(Track) * size_t(track);
  return info.scope == ScopePad ? at + size_t(pad) * (info.isByte ? 1 : sizeof(f32)) : at;
}

f32 read(const Info& info, const void* record, size_t at) {
  auto p = static_cast<const unsigned char*>(record) + at;
  if (info.isByte) return f32(*p);
  f32 v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

void write(const Info& info, f32 value, void* record, size_t at) {
  auto p = static_cast<unsigned char*>(record) + at;
  if (info.isByte)
    *p = u8(std::lround(value));
  else
    std::memcpy(p, &value, sizeof value);
}

size_t placeInTrack(const Info& info, int pad) {
  return info.offset + (info.scope == ScopePad ? size_t(pad) * (info.isByte ? 1 : sizeof(f32)) : 0);
}

}  // namespace

f32 Info::get(const Project& project, int track, int pad) const {
  return read(*this, &project, place(*this, track, pad));
}
void Info::set(f32 value, Project& project, int track, int pad) const {
  write(*this, value, &project, place(*this, track, pad));
}
f32 Info::get(const Track& track, int pad) const { return read(*this, &track, placeInTrack(*this, pad)); }
void Info::set(f32 value, Track& track, int pad) const {
  write(*this, value, &track, placeInTrack(*this, pad));
}

int Info::instances() const {
  return scope == ScopeProject ? 1 : scope == ScopeTrack ? limits::tracks : limits::tracks * limits::pads;
}

int count() { return int(table().rows.size()); }
const Info& info(int i) { return table().rows[size_t(std::clamp(i, 0, count() - 1))]; }
std::span<const Info> all() { return table().rows; }

const Info* find(u16 id) {
  auto& index = table().byId;
  auto it =
      std::lower_bound(index.begin(), index.end(), id, [](auto row, u16 wanted) { return row->id < wanted; });
  return it != index.end() && (*it)->id == id ? *it : nullptr;
}

const Info* find(std::string_view key) {
  auto& index = table().byKey;
  auto it = std::lower_bound(index.begin(), index.end(), key,
                             [](auto row, auto wanted) { return row->key < wanted; });
  return it != index.end() && (*it)->key == key ? *it : nullptr;
}

const Info* find(const char* key) { return key ? find(std::string_view(key)) : nullptr; }

const Info& masterEq(int band) {
  static const Info* const first = find("master_eq_31");
  return first[std::clamp(band, 0, 9)];
}

bool isSpeed(const Info& info) { return std::strcmp(info.unit, "×") == 0; }

f32 toNormalized(const Info& info, f32 value) {
  if (!std::isfinite(value)) return 0;
  const double v = std::clamp(value, info.min, info.max), lo = info.min, hi = info.max;
  if (isSpeed(info)) return v < 0.25 ? 0 : f32((math::log2(std::min(v, 4.0)) + 2) * 0.25);
  if (info.curve == Logarithmic && lo > 0) return f32(math::log2(v / lo) / math::log2(hi / lo));
  return hi > lo ? f32((v - lo) / (hi - lo)) : 0;
}

f32 fromNormalized(const Info& info, f32 position) {
  const double p = std::isfinite(position) && position > 0 ? std::min(double(position), 1.0) : 0;
  const double lo = info.min, hi = info.max;
  double v;
  if (isSpeed(info))
    v = std::round(std::clamp(math::exp2(4 * p - 2), 0.25, 4.0) * 100) / 100;
  else if (info.curve == Logarithmic && lo > 0)
    v = lo * math::pow(hi / lo, p);
  else
    v = lo + p * (hi - lo);
  if (info.whole()) v = std::round(v);
  return std::clamp(f32(v), info.min, info.max);
}

bool inRange(const Info& info, f32 value) {
  if (!(value >= info.min && value <= info.max)) return false;
  return !info.whole() || value == std::trunc(value);
}

const char* meaning(const Info& info) { return info.meaning; }

const char* scopeName(Scope scope) {
  return scope == ScopeProject ? "project" : scope == ScopeTrack ? "track" : "pad";
}
const char* curveName(Curve curve) {
  constexpr const char* names[] = {"linear", "log", "integer", "enum"};
  return names[curve];
}

}  // namespace param
}  // namespace synth
