// "Did you mean": the known word closest to a misspelt one.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mxrk7 {

// The candidate nearest to `word` (compared without regard to case, a swap of two neighbouring
// letters counting as one edit), when it is near enough to be what was meant: at most one edit for
// short words, two for longer ones. nullopt when none is.
std::optional<std::string> closest(std::string_view word, const std::vector<std::string> &candidates);

// " (did you mean \"show\"?)" or "".
std::string didYouMean(std::string_view word, const std::vector<std::string> &candidates);

}  // namespace mxrk7
