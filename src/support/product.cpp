#include "support/product.h"

#include <NorvaneMXRK7Setup.h>

#include <stdexcept>
#include <string>

namespace nvx::support {

int32_t productId() {
  static const int32_t id = [] {
    int32_t value = -1;
    if (NVX_GetProductId(kProductName, &value) != NVX_OK)
      throw std::runtime_error("the library does not know the product " + std::string(kProductName));
    return value;
  }();
  return id;
}

const char *resultName(int32_t result) {
  switch (result) {
    case NVX_OK:
      return "NVX_OK";
    case NVX_WARNING:
      return "NVX_WARNING";
    case NVX_ERROR:
      return "NVX_ERROR";
    case NVX_CONNECTED:
      return "NVX_CONNECTED";
    case NVX_NOT_CONNECTED:
      return "NVX_NOT_CONNECTED";
    default:
      return "an unknown result";
  }
}

}  // namespace nvx::support
