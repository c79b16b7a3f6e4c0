#include "suggest.h"

#include <algorithm>
#include <cctype>

namespace mxrk7 {

namespace {

std::string lower(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(),
                 [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
  return out;
}

// Edits that turn `a` into `b`: insertions, deletions, substitutions and swaps of neighbours
// (optimal string alignment distance).
size_t distance(const std::string &a, const std::string &b) {
  std::vector<std::vector<size_t>> d(a.size() + 1, std::vector<size_t>(b.size() + 1));
  for (size_t i = 0; i <= a.size(); ++i) d[i][0] = i;
  for (size_t j = 0; j <= b.size(); ++j) d[0][j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t cost = a[i - 1] == b[j - 1] ? 0 : 1;
      d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, d[i - 1][j - 1] + cost});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
    }
  }
  return d[a.size()][b.size()];
}

}  // namespace

std::optional<std::string> closest(std::string_view word, const std::vector<std::string> &candidates) {
  const std::string wanted = lower(word);
  const size_t allowed = wanted.size() <= 4 ? 1 : 2;
  std::optional<std::string> best;
  size_t bestDistance = allowed + 1;
  for (const auto &candidate : candidates) {
    const size_t d = distance(wanted, lower(candidate));
    if (d < bestDistance) {
      bestDistance = d;
      best = candidate;
    }
  }
  return best;
}

std::string didYouMean(std::string_view word, const std::vector<std::string> &candidates) {
  const auto best = closest(word, candidates);
  return best ? " (did you mean \"" + *best + "\"?)" : "";
}

}  // namespace mxrk7
