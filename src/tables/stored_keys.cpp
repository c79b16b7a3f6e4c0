#include "tables/stored_keys.h"

namespace nvx::keys {

std::string makeKey(std::string_view keyTemplate, int64_t number) {
  std::string key(keyTemplate);
  if (const auto at = key.find("%d"); at != std::string::npos)
    key.replace(at, 2, std::to_string(static_cast<int32_t>(number)));
  return key;
}

}  // namespace nvx::keys
