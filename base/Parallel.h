// Work that does not depend on its neighbours, spread over the processors.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace synth {

// Runs every task, at most `most` at a time and never more than there are processors, in this thread and in
// others that end before it returns. Throws what the first task to fail threw; tasks not yet begun are
// then left out.
void runAll(const std::vector<std::function<void()>>& tasks, std::size_t most = 64);

}  // namespace synth
