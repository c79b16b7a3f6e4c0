#include "store/plist_value.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

namespace nvx::store {

namespace {

bool sameBits(double a, double b) {
  return std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b) || (std::isnan(a) && std::isnan(b));
}

}  // namespace

bool PlistReal::operator==(const PlistReal &other) const { return sameBits(value, other.value); }

bool PlistDate::operator==(const PlistDate &other) const { return sameBits(seconds, other.seconds); }

bool PlistArray::operator==(const PlistArray &other) const { return items == other.items; }

const PlistValue &PlistDictionary::valueAt(size_t i) const { return values_[i]; }

PlistValue &PlistDictionary::valueAt(size_t i) { return values_[i]; }

std::optional<size_t> PlistDictionary::indexOf(std::string_view key) const {
  const auto it = std::lower_bound(sorted_.begin(), sorted_.end(), key,
                                   [this](uint32_t entry, std::string_view k) { return keys_[entry] < k; });
  if (it == sorted_.end() || keys_[*it] != key) return std::nullopt;
  return *it;
}

const PlistValue *PlistDictionary::find(std::string_view key) const {
  const auto i = indexOf(key);
  return i ? &values_[*i] : nullptr;
}

void PlistDictionary::set(std::string key, PlistValue value) {
  if (const auto i = indexOf(key)) {
    values_[*i] = std::move(value);
    return;
  }
  const auto at = std::lower_bound(sorted_.begin(), sorted_.end(), key,
                                   [this](uint32_t entry, const std::string &k) { return keys_[entry] < k; });
  sorted_.insert(at, static_cast<uint32_t>(keys_.size()));
  keys_.push_back(std::move(key));
  values_.push_back(std::move(value));
}

bool PlistDictionary::remove(std::string_view key) {
  const auto i = indexOf(key);
  if (!i) return false;
  keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(*i));
  values_.erase(values_.begin() + static_cast<std::ptrdiff_t>(*i));
  std::erase(sorted_, static_cast<uint32_t>(*i));
  for (uint32_t &entry : sorted_)
    if (entry > *i) --entry;
  return true;
}

void PlistDictionary::append(std::string key, PlistValue value) {
  keys_.push_back(std::move(key));
  values_.push_back(std::move(value));
}

void PlistDictionary::sortIndex() {
  sorted_.resize(keys_.size());
  std::iota(sorted_.begin(), sorted_.end(), uint32_t{0});
  // Stable: among equal keys the first entry comes first.
  std::stable_sort(sorted_.begin(), sorted_.end(), [this](uint32_t a, uint32_t b) { return keys_[a] < keys_[b]; });
}

void PlistDictionary::endAppend() {
  sortIndex();
  // Duplicate keys: the last value wins, in the place of the first.
  std::vector<bool> dropped;
  for (size_t run = 0; run < sorted_.size();) {
    size_t end = run + 1;
    while (end < sorted_.size() && keys_[sorted_[end]] == keys_[sorted_[run]]) ++end;
    if (end - run > 1) {
      if (dropped.empty()) dropped.resize(keys_.size());
      values_[sorted_[run]] = std::move(values_[sorted_[end - 1]]);
      for (size_t k = run + 1; k < end; ++k) dropped[sorted_[k]] = true;
    }
    run = end;
  }
  if (dropped.empty()) return;
  size_t kept = 0;
  for (size_t i = 0; i < keys_.size(); ++i) {
    if (dropped[i]) continue;
    if (kept != i) {
      keys_[kept] = std::move(keys_[i]);
      values_[kept] = std::move(values_[i]);
    }
    ++kept;
  }
  keys_.resize(kept);
  values_.resize(kept);
  sortIndex();
}

bool PlistDictionary::operator==(const PlistDictionary &other) const {
  return keys_ == other.keys_ && values_ == other.values_;
}

}  // namespace nvx::store
