// Rows of a store: a sorted run at the front, default records behind it. Inserting and erasing shift whole
// rows and put the default record back into what falls free.
#pragma once

#include <algorithm>
#include <cstring>
#include <span>

#include "core/Project.h"

namespace synth::arena {

template <class Row, size_t N>
void fillTail(Row (&rows)[N], size_t from) {
  for (size_t i = from; i < N; i++) rows[i] = Row{};
}

// Opens `gap` rows at `at`; the caller has checked the room and fills them.
template <class Row, class Count, size_t N>
void open(Row (&rows)[N], Count& count, size_t at, size_t gap) {
  std::memmove(static_cast<void*>(rows + at + gap), rows + at, (count - at) * sizeof(Row));
  count = Count(count + gap);
}

template <class Row, class Count, size_t N>
void erase(Row (&rows)[N], Count& count, size_t at, size_t gap) {
  if (!gap) return;
  std::memmove(static_cast<void*>(rows + at), rows + at + gap, (count - at - gap) * sizeof(Row));
  for (size_t i = count - gap; i < count; i++) rows[i] = Row{};
  count = Count(count - gap);
}

// Replaces `old` rows at `at` by `fresh`, keeping the rows behind in order. The caller checked the room.
template <class Row, class Count, size_t N>
void replace(Row (&rows)[N], Count& count, size_t at, size_t old, std::span<const Row> fresh) {
  const size_t n = fresh.size();
  if (n > old) open(rows, count, at + old, n - old);
  if (n < old) erase(rows, count, at + n, old - n);
  std::copy(fresh.begin(), fresh.end(), rows + at);
}

// Removes every row for which `gone` holds, keeping the order.
template <class Row, class Count, size_t N, class Gone>
void removeIf(Row (&rows)[N], Count& count, Gone gone) {
  Row* end = std::remove_if(rows, rows + count, gone);
  const size_t kept = size_t(end - rows);
  for (size_t i = kept; i < count; i++) rows[i] = Row{};
  count = Count(kept);
}

}  // namespace synth::arena
