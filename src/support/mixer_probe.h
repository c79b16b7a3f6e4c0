// Per-mixer diagnostics that the public API cannot give: every mixer on the bus with its place,
// whether this process may open it, and (on request) its live status read from that mixer alone.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nvx::support {

// What opening a mixer told.
enum class Access : uint8_t {
  Ok,      // opened (and closed again)
  Busy,    // another program holds it
  Denied,  // no permission on the device node
  Gone,    // unplugged between listing and opening
  Failed,  // any other failure (see MixerStatus::openError)
};

const char *accessName(Access access);  // "ok", "busy", "permission denied", "gone", "failed"

// A process that holds a file's advisory lock (another program using the library holds the mixer's
// device node so).
struct LockHolder {
  int pid = 0;
  std::string program;  // its command name; empty when it cannot be read
};

// The process holding an flock() on the file at `path`, as the kernel lists it in /proc/locks;
// nullopt when none is listed or the file cannot be examined.
std::optional<LockHolder> findLockHolder(const std::string &path);

struct MixerStatus {
  uint32_t number = 0;  // device number: position among the mixers in bus order, as the library counts
  uint8_t bus = 0;
  std::string port;     // port path ("1.4"), or "virtual-<n>" for a virtual mixer
  std::string node;     // device node; empty for a virtual mixer
  Access access = Access::Failed;
  int32_t openCode = 0;    // the USB layer's code of the open (0 on success)
  std::string openError;   // its description; empty on success
  std::optional<LockHolder> holder;  // for a busy mixer with a device node: who holds it, if known

  // Live status, read only when asked for and only from a mixer that opened. A request that fails
  // or moves too few bytes leaves its value empty (never a stale or preset value).
  std::optional<std::array<uint8_t, 2>> firmware;  // the two answer bytes, as sent
  std::array<std::optional<uint8_t>, 4> inputSelectors;  // selectors 1-4: second answer byte
  std::optional<uint8_t> serato;                   // first answer byte: 1 active, 0 not
};

struct BusReport {
  std::string transport;          // "libusb" or "virtual"
  bool transportAvailable = true;  // false when the USB layer could not be started at all
  std::vector<MixerStatus> mixers;

  size_t accessible() const;  // mixers with Access::Ok
};

enum class Probe : uint8_t { AccessOnly, WithStatus };

// The USB numbers by which mixers are recognised: the build's, or MXRK7_USB_ID's when it is set.
struct UsbId {
  uint16_t vendor;
  uint16_t product;
};
UsbId mixerUsbId();

// Lists the mixers (vendor and product numbers of the mixer identity in force) and opens each one
// once to learn its access state; with Probe::WithStatus it also reads firmware, input selectors
// and Serato state while the mixer is open.
BusReport probeMixers(Probe depth);

// The firmware number as the library reports it: first answer byte low, second high.
uint16_t firmwareNumber(const std::array<uint8_t, 2> &bytes);

// The firmware as a version text. The mixer answers in the USB convention for release numbers
// (binary-coded decimal): the second byte is the major number, the first the minor, so the bytes
// 0x05 0x01 read "1.05" and 0x10 0x02 read "2.10". An answer that is not binary-coded decimal
// shows as the hexadecimal number ("0x011A").
std::string firmwareText(const std::array<uint8_t, 2> &bytes);

}  // namespace nvx::support
