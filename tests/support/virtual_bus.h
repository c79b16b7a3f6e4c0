// Virtual mixers for a test: writes the MXRK7_VIRTUAL_MIXERS config into a scratch folder, points the
// environment at it, and reads back the request log.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "support/scratch_dir.h"

namespace nvx::test {

struct VirtualMixer {
  std::vector<int> firmware{0, 1};
  std::array<int, 4> selectors{4, 4, 4, 4};
  int serato = 0;
  std::vector<int> beatfx{0, 0};
  std::string open = "ok";               // "ok", "busy" or "denied"
  std::vector<std::string> fail = {};         // wIndex values as "0x8002"
  std::map<std::string, int> shortReads = {};  // wIndex -> most bytes a read moves
};

class VirtualBus {
 public:
  explicit VirtualBus(const std::vector<VirtualMixer> &mixers = {});
  // Rewrites the config: the next enumeration sees these mixers (plugging and unplugging).
  void setMixers(const std::vector<VirtualMixer> &mixers);
  // Default mixers, one per entry, each opening as the entry says ("ok", "busy" or "denied").
  void setMixersOpening(const std::vector<std::string> &opens);
  // Every log line so far; only the request lines (open/close left out); only the vendor writes
  // (without the input selector reads that some setters make).
  std::vector<std::string> log() const;
  std::vector<std::string> requests() const;
  std::vector<std::string> writes() const;
  void clearLog() const;
  const std::string &configPath() const { return config_; }
  const std::string &logPath() const { return log_; }

 private:
  ScratchDir dir_;
  EnvGuard env_;
  std::string config_;
  std::string log_;
};

// The log line of a vendor write request as the virtual mixer records it ("0 40 03 07 02 02 80 00 00").
std::string writeLine(int device, uint16_t wIndex, uint16_t value);

}  // namespace nvx::test
