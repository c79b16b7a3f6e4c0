#include "mixer_watch.h"

#include <gudev/gudev.h>

#include <cstdlib>

#include "support/file_watch.h"
#include "support/program_environment.h"

namespace mxrk7setup {

struct MixerWatch::Source {
  std::function<void()> changed;
  std::unique_ptr<nvx::support::FileWatch> file;  // virtual mixers
  GUdevClient *udev = nullptr;      // real ones

  static void onUevent(GUdevClient *, const gchar *, GUdevDevice *, gpointer self) {
    static_cast<Source *>(self)->changed();
  }
};

MixerWatch::MixerWatch(std::function<void()> changed) : source_(std::make_unique<Source>()) {
  source_->changed = std::move(changed);
  if (nvx::support::usingVirtualMixers()) {
    source_->file = std::make_unique<nvx::support::FileWatch>(std::getenv("MXRK7_VIRTUAL_MIXERS"), source_->changed);
    return;
  }
  // Whole USB devices only (not their interfaces): one event per plug or unplug.
  const gchar *const subsystems[] = {"usb/usb_device", nullptr};
  source_->udev = g_udev_client_new(subsystems);
  g_signal_connect(source_->udev, "uevent", G_CALLBACK(Source::onUevent), source_.get());
}

MixerWatch::~MixerWatch() {
  if (source_->udev) {
    g_signal_handlers_disconnect_by_data(source_->udev, source_.get());
    g_object_unref(source_->udev);
  }
}

}  // namespace mxrk7setup
