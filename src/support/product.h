// The product the tool and the setup application drive, identified once through the library as
// every client does.
#pragma once

#include <cstdint>

namespace nvx::support {

inline constexpr const char *kProductName = "MXR-K7";

// NVX_GetProductId for kProductName, asked once. Throws std::runtime_error when the library refuses
// (the library and its client do not belong together).
int32_t productId();

// The library's name for a result code ("NVX_OK", "NVX_ERROR", ...), for messages.
const char *resultName(int32_t result);

}  // namespace nvx::support
