// Product identity, version texts and the connection test.
#include <glib.h>

#include <cstring>
#include <memory>

#include "api/guard.h"
#include "store/data_root.h"
#include "store/version_file.h"
#include "usb/usb_access.h"

using nvx::api::guarded;
using nvx::api::isProduct;
using nvx::api::keepText;

namespace {

constexpr const char *kModelName = "MXR-K7";

// The scalar under `key` of a loaded version file, kept for the caller in `slot`.
int32_t handOutVersion(const std::optional<nvx::store::PlistDict> &file, const char *key, std::string &slot,
                       const char **text) {
  if (!file) return NVX_ERROR;
  auto value = file->scalarText(key);
  if (!value) return NVX_ERROR;
  *text = keepText(slot, std::move(*value));
  return NVX_OK;
}

}  // namespace

extern "C" {

int32_t NVX_GetProductId(const char *name, int32_t *productId) {
  return guarded([&] {
    if (!name || !productId) return NVX_ERROR;
    if (!g_utf8_validate(name, -1, nullptr)) return NVX_ERROR;
    // Full Unicode upper-casing (special casings included), then an exact search.
    const std::unique_ptr<char, decltype(&g_free)> upper(g_utf8_strup(name, -1), g_free);
    if (!upper || !std::strstr(upper.get(), kModelName)) return NVX_ERROR;
    *productId = 0;
    return NVX_OK;
  });
}

int32_t NVX_GetDriverVersionText(int32_t productId, const char **text) {
  thread_local std::string slot;
  return guarded([&] {
    if (!text || !isProduct(productId)) return NVX_ERROR;
    return handOutVersion(nvx::store::readVersionFile(nvx::store::driverInfoPlistPath()),
                          "CFBundleShortVersionString", slot, text);
  });
}

int32_t NVX_GetUtilityVersionText(int32_t productId, const char **text) {
  thread_local std::string slot;
  return guarded([&] {
    if (!text || !isProduct(productId)) return NVX_ERROR;
    return handOutVersion(nvx::store::readVersionFile(nvx::store::utilityInfoPlistPath()), "CFBundleVersion",
                          slot, text);
  });
}

int32_t NVX_GetLibraryVersionText(int32_t productId, const char **text) {
  thread_local std::string slot;
  return guarded([&] {
    // The library's own file is read before any argument is looked at.
    const auto file = nvx::store::readVersionFile(nvx::store::libraryInfoPlistPath());
    if (!isProduct(productId) || !text) return NVX_ERROR;
    return handOutVersion(file, "CFBundleVersion", slot, text);
  });
}

int32_t NVX_IsUSBConnection(int32_t productId) {
  return guarded([&] { return nvx::usb::CheckUSBAudio(productId) >= 1 ? NVX_CONNECTED : NVX_NOT_CONNECTED; },
                 NVX_NOT_CONNECTED);
}

}  // extern "C"
