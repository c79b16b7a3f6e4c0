#include "support/data_folder.h"

#include <NorvaneMXRK7Setup.h>

#include <filesystem>
#include <system_error>

#include "store/data_root.h"
#include "support/product.h"

namespace nvx::support {

DataFolder inspectDataFolder() {
  DataFolder folder;
  folder.path = store::dataRoot();
  std::error_code error;
  folder.exists = std::filesystem::is_directory(folder.path, error);
  const char *text = nullptr;
  if (NVX_GetLibraryVersionText(productId(), &text) == NVX_OK && text) folder.version = text;
  return folder;
}

}  // namespace nvx::support
