#include "notify/payload.h"

#include <cstring>

namespace nvx::notify {

namespace {

int appendEntry(sd_bus_message *message, const char *key, int32_t value) {
  return sd_bus_message_append(message, "{sv}", key, "i", value);
}

// Reads one dictionary entry whose key has been read; the cursor is on the variant.
int readValue(sd_bus_message *message, int32_t *out) {
  char type = 0;
  const char *contents = nullptr;
  int r = sd_bus_message_peek_type(message, &type, &contents);
  if (r <= 0) {
    return r < 0 ? r : -EBADMSG;
  }
  if (type != SD_BUS_TYPE_VARIANT || contents == nullptr || std::strcmp(contents, "i") != 0) {
    *out = 0;
    return sd_bus_message_skip(message, "v");
  }
  return sd_bus_message_read(message, "v", "i", out);
}

std::optional<Family> familyOf(const char *name) {
  if (std::strcmp(name, notificationName(Family::InputAudio)) == 0) {
    return Family::InputAudio;
  }
  if (std::strcmp(name, notificationName(Family::BoostLevel)) == 0) {
    return Family::BoostLevel;
  }
  return std::nullopt;
}

}  // namespace

int appendBody(sd_bus_message *message, Family family, const Payload &payload) {
  int r = sd_bus_message_append(message, "s", notificationName(family));
  if (r >= 0) {
    r = sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "{sv}");
  }
  if (r >= 0) {
    r = appendEntry(message, kKeyProductId, payload.productId);
  }
  if (r >= 0 && family == Family::InputAudio) {
    r = appendEntry(message, kKeyChannel, payload.channel);
  }
  if (r >= 0) {
    r = appendEntry(message, kKeyIndex, payload.index);
  }
  if (r >= 0) {
    r = sd_bus_message_close_container(message);
  }
  return r < 0 ? r : 0;
}

std::optional<Received> parseNotification(sd_bus_message *message) noexcept {
  if (message == nullptr || sd_bus_message_rewind(message, 1) < 0) {
    return std::nullopt;
  }
  const char *path = sd_bus_message_get_path(message);
  if (sd_bus_message_is_signal(message, kInterface, kMember) <= 0 || path == nullptr ||
      std::strcmp(path, kObjectPath) != 0 || sd_bus_message_has_signature(message, kBodySignature) <= 0) {
    return std::nullopt;
  }
  const char *name = nullptr;
  if (sd_bus_message_read(message, "s", &name) < 0 || name == nullptr) {
    return std::nullopt;
  }
  const auto family = familyOf(name);
  if (!family) {
    return std::nullopt;
  }
  Received received;
  received.family = *family;
  if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}") <= 0) {
    return std::nullopt;
  }
  for (;;) {
    int r = sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv");
    if (r < 0) {
      return std::nullopt;
    }
    if (r == 0) {
      break;
    }
    const char *key = nullptr;
    int32_t value = 0;
    if (sd_bus_message_read(message, "s", &key) < 0 || key == nullptr || readValue(message, &value) < 0 ||
        sd_bus_message_exit_container(message) < 0) {
      return std::nullopt;
    }
    if (std::strcmp(key, kKeyProductId) == 0) {
      received.payload.productId = value;
    } else if (std::strcmp(key, kKeyChannel) == 0) {
      received.payload.channel = value;
    } else if (std::strcmp(key, kKeyIndex) == 0) {
      received.payload.index = value;
    }
  }
  if (sd_bus_message_exit_container(message) < 0) {
    return std::nullopt;
  }
  return received;
}

}  // namespace nvx::notify
