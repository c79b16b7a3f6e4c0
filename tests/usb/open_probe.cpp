// Opens the first USB device with the given identity through the libusb transport and prints the
// open's I/O return code ("open 0xE00002C1"). The permission tests run it as an unprivileged user.
//
//   usb_open_probe VVVV:PPPP
#include <cstdio>
#include <cstdlib>
#include <string>

#include "usb/transport.h"

int main(int argc, char **argv) {
  unsigned vendor = 0, product = 0;
  if (argc != 2 || std::sscanf(argv[1], "%4x:%4x", &vendor, &product) != 2) {
    std::fprintf(stderr, "usage: %s VVVV:PPPP\n", argv[0]);
    return 64;
  }
  const auto transport = nvx::usb::makeLibusbTransport();
  if (!transport) {
    std::puts("no transport");
    return 3;
  }
  for (const auto &entry : transport->enumerate()) {
    if (entry.vendor != vendor || entry.product != product) continue;
    const auto device = transport->reference(entry);
    if (!device) {
      std::puts("no reference");
      return 3;
    }
    std::printf("open 0x%08X\n", static_cast<unsigned>(device->open()));
    return 0;
  }
  std::puts("not found");
  return 2;
}
