// The shared "PopUp" number: the current filter mode and the current beat effect read the same key.
#pragma once

#include <cstdint>

#include "api/stored_answer.h"
#include "tables/stored_keys.h"

namespace nvx::api {

// *index = 0, then the whole number stored under "PopUp" when there is one. Always NVX_OK.
inline int32_t readCurrentIndex(uint32_t *index) {
  *index = 0;
  return answerFromFile(keys::kPopUp, keys::rules::kPopUp, index, wholeValue);
}

}  // namespace nvx::api
