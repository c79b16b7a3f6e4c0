// Tells when mixers may have been plugged in or unplugged, without polling: udev's events for USB
// devices, or, on virtual mixers (demo, tests, pictures), changes of their description file, which
// udev knows nothing of.
#pragma once

#include <functional>
#include <memory>

namespace mxrk7setup {

class MixerWatch {
 public:
  explicit MixerWatch(std::function<void()> changed);
  ~MixerWatch();
  MixerWatch(const MixerWatch &) = delete;
  MixerWatch &operator=(const MixerWatch &) = delete;

 private:
  struct Source;
  std::unique_ptr<Source> source_;
};

}  // namespace mxrk7setup
