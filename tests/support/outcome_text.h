// An update's outcome in words, as the store tests compare it: "stored", "replaced" (an unreadable
// file, its bytes kept) or "not stored: <reason>".
#pragma once

#include <string>

#include "store/update_outcome.h"

namespace nvx::test {

inline std::string outcomeText(const nvx::store::UpdateOutcome &outcome) {
  using Result = nvx::store::UpdateOutcome::Result;
  if (outcome.result == Result::Stored) return "stored";
  if (outcome.result == Result::StoredReplacingUnreadable) return "replaced";
  return std::string("not stored: ") + (outcome.reason ? nvx::store::reasonText(*outcome.reason) : "?");
}

}  // namespace nvx::test
