// The one device loop every hardware function uses: count the mixers once, then for each device
// number open the mixer, use it and close it. A mixer that fails to open is skipped silently.
#pragma once

#include <cstdint>
#include <functional>

#include "usb/requests.h"
#include "usb/transport.h"

namespace nvx::usb {

enum class Visit { Next, Stop };

// CheckUSBAudio(0).
uint32_t countMixers();

// Device numbers 0..count-1 in order: each mixer that opens is handed to `use`, then closed.
// Returns early when `use` answers Visit::Stop.
void visitMixers(uint32_t count, const std::function<Visit(Device &)> &use);

// Sends one write request with `value` to every mixer that opens, `count` being taken beforehand.
void sendToMixers(uint32_t count, WriteWrapper wrapper, uint16_t value);

// Counts the mixers, then sends one write request to each that opens. Returns the count.
uint32_t sendToEveryMixer(WriteWrapper wrapper, uint16_t value);

}  // namespace nvx::usb
