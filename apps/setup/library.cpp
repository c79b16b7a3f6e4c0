#include "library.h"

#include <NorvaneMXRK7Setup.h>

#include <iterator>

namespace mxrk7setup::lib {

namespace {

std::string textOr(const char *text, const std::string &fallback) { return text ? std::string(text) : fallback; }

// A menu whose count function takes only the product and whose text function takes an index.
template <typename CountFn, typename TextFn>
std::vector<std::string> menu(CountFn count, TextFn text) {
  uint32_t n = 0;
  if (count(&n) != NVX_OK) return {};
  std::vector<std::string> items;
  for (uint32_t i = 0; i < n; ++i) {
    const char *entry = nullptr;
    items.push_back(text(i, &entry) == NVX_OK ? textOr(entry, std::to_string(i)) : std::to_string(i));
  }
  return items;
}

std::optional<std::string> version(int32_t (*read)(int32_t, const char **)) {
  const char *text = nullptr;
  if (read(productId(), &text) != NVX_OK || !text) return std::nullopt;
  return std::string(text);
}

}  // namespace

std::vector<std::string> routingMenu(int32_t channel) {
  return menu([&](uint32_t *n) { return NVX_GetNumOfInputAudioIndex(productId(), channel, n); },
              [&](uint32_t i, const char **t) { return NVX_GetUSBInputAudioText(productId(), channel, i, 0, t); });
}

std::vector<std::string> boostMenu() {
  return menu([](uint32_t *n) { return NVX_GetNumOfBoostLevelIndex(productId(), n); },
              [](uint32_t i, const char **t) { return NVX_GetBoostLevelText(productId(), i, 0, t); });
}

std::vector<std::string> filterModeMenu() {
  return menu([](uint32_t *n) { return NVX_GetNumOfFXBANKFILTERModeIndex(productId(), n); },
              [](uint32_t i, const char **t) { return NVX_GetFXBANKFILTERModeText(productId(), i, 0, t); });
}

std::vector<std::string> beatEffectMenu() {
  return menu([](uint32_t *n) { return NVX_GetNumOfFXBANKBEATEFFECTModeIndex(productId(), 0, n); },
              [](uint32_t i, const char **t) { return NVX_GetFXBANKBEATEFFECTModeText(productId(), 0, i, 0, t); });
}

std::vector<std::string> channelFaderMenu() {
  std::vector<std::string> items;
  for (const char *text : FXBANKChFaderModeText)
    if (text) items.emplace_back(text);
  return items;
}

std::vector<std::string> crossfaderModeMenu() {
  return menu([](uint32_t *n) { return NVX_GetNumOfCROSSFADERModeIndex(productId(), n); },
              [](uint32_t i, const char **t) { return NVX_GetCROSSFADERModeText(productId(), i, 0, t); });
}

std::optional<std::string> libraryVersion() { return version(NVX_GetLibraryVersionText); }
std::optional<std::string> driverVersion() { return version(NVX_GetDriverVersionText); }
std::optional<std::string> setupVersion() { return version(NVX_GetUtilityVersionText); }

std::string routingWarning(int32_t channel, int32_t result) {
  const char *text = nullptr;
  if (NVX_GetWarningTextForSetUSBAudioInput(productId(), channel, result, 99, &text) == NVX_OK && text && *text)
    return text;
  return "The mixer's input selector for this channel does not match the chosen signal.";
}

std::string bankName(uint32_t bank) {
  switch (bank) {
    case 0: return "Bank A";
    case 1: return "Bank B";
    case 2: return "Temporary bank";
    default: return "Bank " + std::to_string(bank);
  }
}

}  // namespace mxrk7setup::lib
