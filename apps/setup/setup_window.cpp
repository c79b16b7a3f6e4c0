#include "setup_window.h"

#include <NorvaneMXRK7Setup.h>

#include "support/program_environment.h"
#include "library.h"
#include "resend.h"
#include "settings_document_io.h"
#include "settings_pages.h"

namespace mxrk7setup {

namespace {

void onInputAudioChanged(int32_t channel, int32_t index, void *context) {
  static_cast<SetupWindow *>(context)->routingChanged(channel, index);
}

void onBoostLevelChanged(int32_t index, void *context) { static_cast<SetupWindow *>(context)->boostChanged(index); }

constexpr unsigned kPollMilliseconds = 1500;

struct PageInfo {
  const char *name;
  const char *title;
};
constexpr PageInfo kPages[] = {
    {"mixer", "Mixer"}, {"routing", "USB audio routing"}, {"boost", "Output boost"},
    {"fx", "FX banks"}, {"play", "Play settings"},
};

void loadStyle() {
  static bool loaded = false;
  if (loaded) return;
  loaded = true;
  auto css = Gtk::CssProvider::create();
  css->load_from_data(
      ".setup-banner { padding: 8px 12px; }"
      ".setup-banner.warning { background-color: @warning_bg_color; color: @warning_fg_color; }"
      ".setup-banner.error { background-color: @error_bg_color; color: @error_fg_color; }"
      ".setup-status { padding: 4px 12px; }");
  if (auto display = Gdk::Display::get_default())
    Gtk::StyleContext::add_provider_for_display(display, css, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

}  // namespace

std::vector<std::string> SetupWindow::pageNames() {
  std::vector<std::string> names;
  for (const auto &page : kPages) names.emplace_back(page.name);
  return names;
}

SetupWindow::SetupWindow() {
  loadStyle();
  set_title("MXR-K7 Setup");
  set_icon_name("com.norvane.MXRK7Setup");
  set_default_size(920, 680);

  // Header: the actions on all settings.
  sendAll_.set_name("send-all");
  sendAll_.add_css_class("suggested-action");
  setAccessibleLabel(sendAll_, "Send all settings to the mixer");
  sendAll_.set_tooltip_text("Send every remembered setting to the connected mixers again");
  sendAll_.signal_clicked().connect([this] { sendAll(); });
  export_.set_name("export");
  setAccessibleLabel(export_, "Export the settings to a file");
  export_.signal_clicked().connect([this] { chooseExport(); });
  import_.set_name("import");
  setAccessibleLabel(import_, "Import settings from a file");
  import_.signal_clicked().connect([this] { chooseImport(); });
  header_.pack_start(import_);
  header_.pack_start(export_);
  header_.pack_end(sendAll_);
  set_titlebar(header_);

  // Banner for the library's warnings.
  bannerBox_.add_css_class("setup-banner");
  bannerBox_.set_name("banner");
  bannerText_.set_wrap(true);
  bannerText_.set_xalign(0);
  bannerText_.set_hexpand(true);
  bannerText_.set_selectable(true);
  bannerClose_.set_icon_name("window-close-symbolic");
  bannerClose_.add_css_class("flat");
  bannerClose_.set_name("banner-close");
  setAccessibleLabel(bannerClose_, "Dismiss the warning");
  bannerClose_.signal_clicked().connect([this] { banner_.set_reveal_child(false); });
  bannerBox_.append(bannerText_);
  bannerBox_.append(bannerClose_);
  banner_.set_child(bannerBox_);
  banner_.set_reveal_child(false);

  // Pages.
  PageEvents events;
  events.routingResult = [this](int32_t channel, int32_t result) {
    if (result == NVX_WARNING) {
      showBanner(lib::routingWarning(channel, result), true);
      written("USB audio channel " + std::to_string(channel), NVX_OK);
    } else {
      if (result == NVX_OK) banner_.set_reveal_child(false);
      written("USB audio channel " + std::to_string(channel), result);
    }
  };
  events.written = [this](const std::string &what, int32_t result) { written(what, result); };

  mixer_ = Gtk::make_managed<MixerPage>([this] { startDemo(); });
  stack_.add(*mixer_, "mixer", "Mixer");
  stack_.add(*makeRoutingPage(controls_, events), "routing", "USB audio routing");
  stack_.add(*makeBoostPage(controls_, events), "boost", "Output boost");
  stack_.add(*makeFxPage(controls_, events), "fx", "FX banks");
  stack_.add(*makePlayPage(controls_, events), "play", "Play settings");
  stack_.set_vexpand(true);
  stack_.set_hexpand(true);
  stack_.set_transition_type(Gtk::StackTransitionType::NONE);
  sidebar_.set_stack(stack_);
  sidebar_.set_size_request(190, -1);
  setAccessibleLabel(sidebar_, "Pages");

  status_.add_css_class("setup-status");
  status_.add_css_class("dim-label");
  status_.set_xalign(0);
  status_.set_name("status");

  content_.append(banner_);
  content_.append(stack_);
  content_.append(status_);
  body_.append(sidebar_);
  body_.append(separator_);
  body_.append(content_);
  set_child(body_);

  // A change made elsewhere: routing and boost arrive through the library's callbacks; the
  // other settings are read again whenever the window becomes active.
  NVX_RegisterInputAudioChangedCallback(lib::productId(), onInputAudioChanged, this);
  NVX_RegisterBoostLevelChangedCallback(lib::productId(), onBoostLevelChanged, this);
  controls_.onWritten([this](const std::string &) { controls_.reloadAll(); });
  property_is_active().signal_changed().connect([this] {
    if (is_active()) controls_.reloadAll();
  });

  // Plugging and unplugging: the bus is counted (no mixer opened) every poll.
  poll_ = Glib::signal_timeout().connect(
      [this] {
        mixer_->poll();
        return true;
      },
      kPollMilliseconds);

  setStatus(nvx::support::usingVirtualMixers() ? "Using virtual mixers." : "");
  showPage(mixer_->problem() == MixerPage::Problem::None ? "routing" : "mixer");
}

SetupWindow::~SetupWindow() {
  poll_.disconnect();
  NVX_UnregisterInputAudioChangedCallback(lib::productId());
  NVX_UnregisterBoostLevelChangedCallback(lib::productId());
}

void SetupWindow::showPage(const std::string &name) {
  if (stack_.get_child_by_name(name)) stack_.set_visible_child(name);
}

std::string SetupWindow::visiblePage() const { return stack_.get_visible_child_name(); }

void SetupWindow::routingChanged(int32_t channel, int32_t index) {
  if (channel >= 0 && channel < lib::kChannels && index >= 0)
    controls_.show(routingId(channel), static_cast<uint32_t>(index));
}

void SetupWindow::boostChanged(int32_t index) {
  if (index >= 0) controls_.show(kBoostId, static_cast<uint32_t>(index));
}

void SetupWindow::showBanner(const std::string &text, bool warning) {
  bannerText_.set_text(text);
  bannerBox_.remove_css_class(warning ? "error" : "warning");
  bannerBox_.add_css_class(warning ? "warning" : "error");
  setAccessibleLabel(bannerText_, text);
  banner_.set_reveal_child(true);
}

void SetupWindow::setStatus(const std::string &text) { status_.set_text(text); }

void SetupWindow::written(const std::string &what, int32_t result) {
  if (result != NVX_OK) {
    showBanner(what + ": the library refused the value.", false);
    return;
  }
  const uint32_t mixers = mixer_->poll();
  setStatus(mixers == 0 ? what + ": remembered. No mixer is connected; it is sent when you send all settings."
                        : what + ": sent to " + (mixers == 1 ? std::string("the mixer") : std::to_string(mixers) + " mixers") +
                              " and remembered.");
}

void SetupWindow::sendAll() {
  const auto outcome = resendAll();
  if (outcome.unreadable) {
    showBanner("The settings file cannot be read, so nothing was sent.", false);
    return;
  }
  const uint32_t mixers = mixer_->poll();
  std::string text = outcome.sent == 0 ? "Nothing to send: no setting is remembered yet."
                                       : std::to_string(outcome.sent) + " remembered settings sent to " +
                                             (mixers == 1 ? std::string("the mixer") : std::to_string(mixers) + " mixers") + ".";
  if (outcome.skipped) text += " " + std::to_string(outcome.skipped) + " held an invalid value and were skipped.";
  if (outcome.refused) text += " " + std::to_string(outcome.refused) + " were refused by the library.";
  if (outcome.sent && mixers == 0) text = "No mixer is connected: nothing was sent.";
  setStatus(text);
}

bool SetupWindow::exportTo(const std::string &path, std::string &message) {
  const bool done = exportSettings(path, message);
  setStatus(message);
  return done;
}

bool SetupWindow::importFrom(const std::string &path, std::string &message) {
  const bool done = importSettings(path, message);
  controls_.reloadAll();
  if (done) setStatus(message);
  else showBanner(message, false);
  return done;
}

void SetupWindow::chooseExport() {
  chooser_ = Gtk::FileChooserNative::create("Export settings", *this, Gtk::FileChooser::Action::SAVE, "_Export",
                                            "_Cancel");
  chooser_->set_current_name("mxr-k7-settings.json");
  chooser_->signal_response().connect([this](int response) {
    if (response == static_cast<int>(Gtk::ResponseType::ACCEPT)) {
      std::string message;
      exportTo(chooser_->get_file()->get_path(), message);
    }
    chooser_.reset();
  });
  chooser_->show();
}

void SetupWindow::chooseImport() {
  chooser_ = Gtk::FileChooserNative::create("Import settings", *this, Gtk::FileChooser::Action::OPEN, "_Import",
                                            "_Cancel");
  chooser_->signal_response().connect([this](int response) {
    if (response == static_cast<int>(Gtk::ResponseType::ACCEPT)) confirmImport(chooser_->get_file()->get_path());
    chooser_.reset();
  });
  chooser_->show();
}

void SetupWindow::confirmImport(const std::string &path) {
  std::string changes;
  if (!describeImport(path, changes)) {
    showBanner(changes, false);
    return;
  }
  confirm_ = std::make_unique<Gtk::MessageDialog>(*this, "Import these settings?", false, Gtk::MessageType::QUESTION,
                                                  Gtk::ButtonsType::NONE, true);
  confirm_->set_secondary_text(changes + "\nEach one is sent to the mixer and remembered.");
  confirm_->add_button("_Cancel", Gtk::ResponseType::CANCEL);
  confirm_->add_button("_Import", Gtk::ResponseType::ACCEPT);
  confirm_->set_default_response(Gtk::ResponseType::CANCEL);
  confirm_->signal_response().connect([this, path](int response) {
    confirm_->hide();
    if (response == static_cast<int>(Gtk::ResponseType::ACCEPT)) {
      std::string message;
      importFrom(path, message);
    }
  });
  confirm_->show();
}

void SetupWindow::startDemo() {
  std::vector<std::string> argv = {"/proc/self/exe", "--virtual"};
  try {
    Glib::spawn_async("", argv);
    close();
  } catch (const Glib::Error &error) {
    showBanner("The demo could not be started: " + std::string(error.what()), false);
  }
}

}  // namespace mxrk7setup
