#include "report_text.h"

#include "i18n.h"
#include "labels.h"

namespace mxrk7setup {

namespace {

// The sentences after the headline: mixers left out, no mixer at all, the file not keeping it.
std::string consequences(const ChangeReport &report) {
  std::string text;
  auto add = [&text](const std::string &sentence) { text += " " + sentence; };
  const std::string missed = mixersLeftOut(report);
  if (report.mixers.empty()) add(_("No mixer is connected."));
  else if (report.took() == 0) add(format(_("No mixer took it: {mixers}."), fmt::arg("mixers", missed)));
  else if (!missed.empty()) add(format(_("Not on {mixers}."), fmt::arg("mixers", missed)));
  if (report.storeInvolved && !report.storedOk)
    add(report.storedReason.empty() ? std::string(_("It could not be saved."))
                                    : format(_("It could not be saved: {reason}."), fmt::arg("reason", report.storedReason)));
  return text;
}

}  // namespace

std::string mixersLeftOut(const ChangeReport &report) {
  std::string list;
  for (const auto &mixer : report.mixers) {
    if (mixer.result == MixerOutcome::Result::Ok) continue;
    if (!list.empty()) list += ", ";
    // TRANSLATORS: a mixer that did not take a change, and why: "Mixer 2 (no permission)".
    list += format(_("{mixer} ({why})"), fmt::arg("mixer", mixerTitle(mixer.number)),
                   fmt::arg("why", outcomeText(mixer.result)));
  }
  return list;
}

std::string settingReport(const ChangeReport &report, const std::string &what, const std::string &value) {
  // TRANSLATORS: a setting changed, e.g. "Output boost set to -10 dB".
  return format(_("{setting} set to {value}."), fmt::arg("setting", what), fmt::arg("value", value)) + consequences(report);
}

std::string undoReport(const ChangeReport &report, const std::string &what, const std::string &value) {
  // TRANSLATORS: a change undone, e.g. "Output boost back to -10 dB".
  return format(_("{setting} back to {value}."), fmt::arg("setting", what), fmt::arg("value", value)) + consequences(report);
}

std::string reapplyReport(const ChangeReport &report) {
  if (!report.problem.empty())
    return format(_("Nothing was sent: the saved settings cannot be read ({reason})."), fmt::arg("reason", report.problem));
  if (report.count == 0) return _("Nothing to send: no setting is saved yet.");
  if (report.mixers.empty()) return _("Nothing was sent: no mixer is connected.");
  std::string text = format(g_dngettext(GETTEXT_PACKAGE, "{count} saved setting sent.", "{count} saved settings sent.", report.count),
                            fmt::arg("count", report.count));
  return text + consequences(report);
}

std::string importReport(const ChangeReport &report) {
  std::string text = format(g_dngettext(GETTEXT_PACKAGE, "{count} setting imported.", "{count} settings imported.", report.count),
                            fmt::arg("count", report.count));
  return text + consequences(report);
}

std::string exportReport(const ChangeReport &report, const std::string &path) {
  if (!report.problem.empty())
    return format(_("Nothing was exported: the saved settings cannot be read ({reason})."), fmt::arg("reason", report.problem));
  if (!report.storedOk) return format(_("{file} could not be written."), fmt::arg("file", path));
  return format(g_dngettext(GETTEXT_PACKAGE, "{count} setting exported to {file}.", "{count} settings exported to {file}.", report.count),
                fmt::arg("count", report.count), fmt::arg("file", path));
}

}  // namespace mxrk7setup
