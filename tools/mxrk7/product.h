// The product the tool drives, identified once through the library as every client does.
#pragma once

#include <cstdint>

namespace mxrk7 {

inline constexpr const char *kProductName = "MXR-K7";

// NVX_GetProductId for kProductName, asked once; a refusal is a Failure (the library and the tool
// do not belong together).
int32_t productId();

// The library's name for a result code ("NVX_OK", "NVX_ERROR", ...), for messages.
const char *resultName(int32_t result);

}  // namespace mxrk7
