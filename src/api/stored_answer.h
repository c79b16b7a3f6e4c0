// Turning a reading of the auto-setup file into an exported getter's result.
#pragma once

#include <cstdint>

#include "NorvaneMXRK7Setup.h"
#include "store/auto_setup_file.h"
#include "store/stored_value.h"

namespace nvx::api {

// Error → NVX_ERROR; Untouched → NVX_OK with `out` as the caller left it; a value (or the rule's
// fallback) → NVX_OK with `out` = decode(value).
template <class Decode>
int32_t answerStored(const store::StoredValue &stored, uint32_t *out, Decode decode) {
  if (stored.isError()) return NVX_ERROR;
  if (stored.hasValue()) *out = decode(stored.value);
  return NVX_OK;
}

inline uint32_t wholeValue(int32_t value) { return static_cast<uint32_t>(value); }
inline uint32_t lowByte(int32_t value) { return static_cast<uint32_t>(value) & 0xFF; }

// Reads one key of the auto-setup file under `rule` and answers with its decoded value.
template <class Decode>
int32_t answerFromFile(std::string_view key, const keys::ReadRule &rule, uint32_t *out, Decode decode) {
  return answerStored(store::readStored(store::LoadAutoSetupFile(), key, rule), out, decode);
}

}  // namespace nvx::api
