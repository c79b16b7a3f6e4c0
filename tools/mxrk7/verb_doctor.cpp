// doctor: checks every piece the library and the tool need on this machine and says, one line
// each, what is wrong and how to fix it.
#include <NorvaneMXRK7Setup.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

#include "mixer_report.h"
#include "setting_values.h"
#include "store/auto_setup_file.h"
#include "store/safe_file.h"
#include "store/update_lock.h"
#include "support/data_folder.h"
#include "support/mixer_probe.h"
#include "support/product.h"
#include "support/session_bus.h"
#include "udev_rule.h"
#include "user_unit.h"
#include "verbs.h"

namespace mxrk7 {

namespace {

using nvx::support::productId;

enum class Status { Ok, Note, Warning, Problem };

const char *statusName(Status status) {
  switch (status) {
    case Status::Ok:
      return "ok";
    case Status::Note:
      return "note";
    case Status::Warning:
      return "warning";
    case Status::Problem:
      break;
  }
  return "problem";
}

// One line of the report.
struct Finding {
  std::string area;
  Status status;
  std::string message;
  std::string fix;       // empty when there is nothing to do
  Exit exit = Exit::Ok;  // what a problem makes the exit code
};

class Report {
 public:
  void ok(const std::string &area, const std::string &message) { add({area, Status::Ok, message, {}}); }
  void note(const std::string &area, const std::string &message, const std::string &fix = {}) {
    add({area, Status::Note, message, fix});
  }
  void warning(const std::string &area, const std::string &message, const std::string &fix) {
    add({area, Status::Warning, message, fix});
  }
  void problem(const std::string &area, const std::string &message, const std::string &fix, Exit exit) {
    add({area, Status::Problem, message, fix, exit});
  }
  const std::vector<Finding> &findings() const { return findings_; }

 private:
  void add(Finding finding) { findings_.push_back(std::move(finding)); }
  std::vector<Finding> findings_;
};

// A rule file: read without blocking and up to a size no rule file reaches.
std::string readText(const std::string &path) { return nvx::store::readRegularFile(path, 64 * 1024).bytes; }

std::string usbIdText() {
  const auto id = nvx::support::mixerUsbId();
  return fmt::format("{:04x}:{:04x}", id.vendor, id.product);
}

// --- The data folder and the version files -----------------------------------------------------

// The library's code is built into this tool; its data (version files, warning texts, demo mixers)
// comes from the data folder, which must belong to the same version.
void checkDataFolder(Report &report) {
  const std::string area = "data folder";
  const auto folder = nvx::support::inspectDataFolder();
  const std::string reinstall =
      "reinstall the package mxrk7-data (sudo apt install --reinstall mxrk7-data), or cmake --install the same "
      "build as this tool; if MXRK7_SYSROOT is set, it names the data folder instead";
  if (!folder.exists) {
    report.problem(area,
                   fmt::format("{} does not exist: the library's version file and its warning texts are missing",
                               folder.path),
                   reinstall, Exit::Failure);
  } else if (!folder.version) {
    report.problem(area,
                   fmt::format("{} has no version file of the library: it is incomplete (the warning texts may be "
                               "missing too)",
                               folder.path),
                   reinstall, Exit::Failure);
  } else if (*folder.version != nvx::support::kCoreVersion) {
    report.problem(area,
                   fmt::format("{} is version {}, but this tool is version {}: they come from different installs",
                               folder.path, *folder.version, nvx::support::kCoreVersion),
                   reinstall, Exit::Failure);
  } else {
    report.ok(area, fmt::format("{}: version {}, the same as this tool", folder.path, *folder.version));
  }
}

void checkVersionFiles(Report &report) {
  const char *text = nullptr;
  if (NVX_GetUtilityVersionText(productId(), &text) == NVX_OK && text)
    report.ok("setup app", fmt::format("installed, version {}", text));
  else
    report.note("setup app", "not installed; it is optional (the graphical setup application, mxrk7-setup)");
  text = nullptr;
  if (NVX_GetDriverVersionText(productId(), &text) == NVX_OK && text)
    report.ok("driver", fmt::format("version file says {}; Linux needs no driver of the mixer's own", text));
  else
    report.note("driver", "none needed on Linux: the kernel's USB audio driver (snd-usb-audio) serves the mixer");
}

// --- udev rule and user unit --------------------------------------------------------------------

void checkUdevRule(Report &report) {
  const std::string area = "udev rule";
  const auto id = nvx::support::mixerUsbId();
  const auto locations = findUdevRules();
  const auto readByUdev =
      std::find_if(locations.begin(), locations.end(), [](const RuleLocation &l) { return l.readByUdev; });
  const std::string replace =
      "mxrk7 udev-rule | sudo tee {} && sudo udevadm control --reload && sudo udevadm trigger";
  if (readByUdev != locations.end()) {
    const std::string rule = readText(readByUdev->path);
    const bool ours = rule.find(fmt::format("ATTR{{idVendor}}==\"{:04x}\"", id.vendor)) != std::string::npos &&
                      rule.find(fmt::format("ATTR{{idProduct}}==\"{:04x}\"", id.product)) != std::string::npos;
    if (!ours)
      report.warning(area,
                     fmt::format("{} names other USB numbers than the mixer's {}: it gives no access to this mixer",
                                 readByUdev->path, usbIdText()),
                     fmt::format(fmt::runtime(replace), readByUdev->path));
    else if (rule.find("TAG+=\"uaccess\"") == std::string::npos)
      report.warning(area, fmt::format("{} gives the user at the seat no access (it lacks TAG+=\"uaccess\")", readByUdev->path),
                     fmt::format(fmt::runtime(replace), readByUdev->path));
    else if (rule.find("SYSTEMD_USER_WANTS") == std::string::npos)
      report.warning(area,
                     fmt::format("{} gives access, but does not start {} when a mixer is plugged in", readByUdev->path,
                                 kUserUnitName),
                     fmt::format(fmt::runtime(replace), readByUdev->path));
    else
      report.ok(area, fmt::format("{}: the user at the seat may open the mixer ({})", readByUdev->path, usbIdText()));
    return;
  }
  if (!locations.empty()) {
    const std::string &path = locations.front().path;
    const bool local = path.starts_with("/usr/local/lib/udev/");
    report.warning(area,
                   fmt::format("installed as {}, where udev does not read it{}: only root may open the mixer", path,
                               local ? " (udev reads no rules below /usr/local/lib/udev)" : ""),
                   fmt::format("sudo cp {} /etc/udev/rules.d/ && sudo udevadm control --reload && sudo udevadm trigger",
                               path));
    return;
  }
  report.warning(area, "not installed: only root may open the mixer, and settings do not follow it when plugged in",
                 fmt::format(fmt::runtime(replace), std::string("/etc/udev/rules.d/") + kUdevRuleFile));
}

bool isExecutable(const std::string &program) { return ::access(program.c_str(), X_OK) == 0; }

void checkUserUnit(Report &report) {
  const std::string area = "user unit";
  const auto unit = inspectUserUnit();
  const std::string state = unit.managerState ? fmt::format(" (your service manager: {})", *unit.managerState) : "";
  if (unit.masked || unit.managerState == "masked") {
    report.note(area,
                fmt::format("{} is turned off (masked{}): plugging a mixer in does not send the remembered settings",
                            kUserUnitName, unit.masked ? " by " + *unit.file : ""),
                fmt::format("to turn it on again: systemctl --user unmask {}", kUserUnitName));
    return;
  }
  if (unit.file) {
    if (unit.program && !isExecutable(*unit.program))
      report.warning(area, fmt::format("{} runs {}, which is not there", *unit.file, *unit.program),
                     "reinstall, or remove the leftover unit file");
    else
      report.ok(area, fmt::format("{}: a mixer that is plugged in gets the remembered settings{}", *unit.file, state));
    return;
  }
  if (unit.outsideSearchPath) {
    report.warning(area,
                   fmt::format("installed as {}, where your service manager does not look: settings do not follow "
                               "the mixer when it is plugged in",
                               *unit.outsideSearchPath),
                   fmt::format("mkdir -p ~/.config/systemd/user && ln -s {} ~/.config/systemd/user/ && systemctl "
                               "--user daemon-reload",
                               *unit.outsideSearchPath));
    return;
  }
  report.warning(area,
                 fmt::format("{} is not installed: settings do not follow the mixer when it is plugged in", kUserUnitName),
                 "install the package (or cmake --install the build); until then run mxrk7 apply after plugging in");
}

// --- Mixers, bus, settings file -----------------------------------------------------------------

void checkMixers(Report &report) {
  const std::string area = "mixers";
  const auto bus = nvx::support::probeMixers(nvx::support::Probe::AccessOnly);
  if (!bus.transportAvailable) {
    report.problem(area, "USB cannot be used: libusb could not start",
                   "check that /dev/bus/usb exists and can be read (in a container, pass the host's USB through)",
                   Exit::Failure);
    return;
  }
  const nlohmann::json where = busJson(bus, false);
  if (bus.mixers.empty()) {
    report.note(area, fmt::format("no mixer connected (looked for USB id {} on {})", usbIdText(), transportText(where)),
                "plug the mixer in, then run mxrk7 doctor again");
    return;
  }
  const bool noneUsable = bus.accessible() == 0;
  for (const auto &mixer : bus.mixers) {
    const std::string name = fmt::format("mixer {} (bus {} port {})", mixer.number, mixer.bus, mixer.port);
    if (mixer.access == nvx::support::Access::Ok) {
      report.ok(area, name + ": can be opened");
      continue;
    }
    std::string message = fmt::format("{}: {}", name, nvx::support::accessName(mixer.access));
    if (mixer.access == nvx::support::Access::Busy) message += ", held by " + holderText(mixer);
    else if (!mixer.openError.empty()) message += " (" + mixer.openError + ")";
    if (noneUsable) report.problem(area, message, mixerFix(mixer), Exit::NoAccess);
    else report.warning(area, message, mixerFix(mixer));
  }
}

void checkSessionBus(Report &report) {
  const std::string area = "session bus";
  const auto bus = nvx::support::probeSessionBus();
  if (!bus.address) {
    report.warning(area,
                   "none (DBUS_SESSION_BUS_ADDRESS is not set and $XDG_RUNTIME_DIR/bus is missing): mxrk7 watch and "
                   "the change callbacks of programs using the library need one; setting and applying work without it",
                   "use the tool from a desktop login, or run the program inside dbus-run-session");
    return;
  }
  if (!bus.answers) {
    report.warning(area,
                   fmt::format("{} does not answer within 1 s: changes are not announced to other programs",
                               *bus.address),
                   "log out and in again (the session's bus has stopped)");
    return;
  }
  report.ok(area, fmt::format("{} answers: changes reach mxrk7 watch and the setup application", *bus.address));
}

void checkSettingsFile(Report &report) {
  const std::string area = "settings file";
  const auto file = StoredSettings::read();
  const std::string &path = file.path();
  if (file.state() == StoredSettings::State::Unreadable) {
    report.problem(area,
                   fmt::format("{} cannot be read ({}): the library ignores it and the next change replaces it", path,
                               file.unreadableReason()),
                   fmt::format("restore your settings from a copy with mxrk7 import FILE, or move it aside: mv {} {}.old",
                               path, path),
                   Exit::Failure);
  }
  if (const auto why = file.writeProblem())
    report.problem(area, fmt::format("changes cannot be stored: {}; the library loses them silently", *why),
                   "make it writable for yourself (chmod u+w, or chown to your user)", Exit::Failure);
  if (file.state() == StoredSettings::State::Missing) {
    report.note(area, fmt::format("{} does not exist yet: nothing was stored", path),
                "mxrk7 set, mxrk7 import and the setup application store settings");
    return;
  }
  if (file.state() != StoredSettings::State::Readable) return;

  size_t held = 0;
  for (const auto &entry : settableEntries(file)) {
    if (entry.source == Source::File) ++held;
    if (entry.source != Source::Invalid || !entry.stored) continue;
    const Setting &setting = *entry.setting;
    const std::string target = targetOf(setting, entry.args);
    std::string values;
    for (const auto &field : setting.fields) values += " " + placeholder(field.name);
    report.warning(area,
                   fmt::format("{} holds {}, which the library does not accept for {} (apply leaves it out)",
                               setting.key(entry.args), *entry.stored, target),
                   fmt::format("mxrk7 set {}{} stores a valid value (mxrk7 list {} names them)", target, values,
                               setting.name));
  }
  std::vector<std::string> foreign;
  for (const auto &key : file.keys()) {
    if (!nvx::support::isLibraryKey(key)) foreign.push_back(key);
    else if (!file.integer(key))
      report.warning(area, fmt::format("{} holds no whole number: the library reads it as absent", key),
                     "set that setting again (mxrk7 show lists them), which stores a number in its place");
  }
  report.ok(area, fmt::format("{}: {} setting{} remembered", path, held, held == 1 ? "" : "s"));
  if (!foreign.empty())
    report.note(area, fmt::format("holds {} key{} the library does not know ({}): another program's, kept as they are",
                                  foreign.size(), foreign.size() == 1 ? "" : "s", fmt::join(foreign, ", ")));
}

// --- The settings file's lock --------------------------------------------------------------------

// Whether another program holds the update lock right now. A writer that stays stuck there makes
// every change wait for the lock's time-out and then not be stored. (A lock file that is not a
// file is among the settings file's findings above.)
void checkSettingsLock(Report &report) {
  const std::string lock = nvx::store::GetAutoSetupFilePath() + ".lock";
  const nvx::store::Fd fd(::open(lock.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
  struct stat info {};
  if (!fd.valid() || ::fstat(fd.get(), &info) != 0 || !S_ISREG(info.st_mode)) return;
  if (::flock(fd.get(), LOCK_SH | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
  const auto waited = std::chrono::duration<double>(nvx::store::lockTimeout()).count();
  report.warning("settings file",
                 fmt::format("another program holds {} right now; if it is stuck there, every change waits {:g} s and "
                             "is then not stored",
                             lock, waited),
                 fmt::format("find it with fuser -v {} and end it", lock));
}

// --- The report ---------------------------------------------------------------------------------

Exit outcome(const Report &report) {
  Exit exit = Exit::Ok;
  for (const auto &finding : report.findings())
    if (finding.status == Status::Problem && (exit == Exit::Ok || finding.exit < exit)) exit = finding.exit;
  return exit;
}

std::string doctorText(const nlohmann::json &doc) {
  std::string text;
  for (const auto &check : doc.at("checks")) {
    text += fmt::format("{:<8} {:<14} {}", check.at("status").get<std::string>(), check.at("area").get<std::string>(),
                        check.at("message").get<std::string>());
    if (check.at("fix").is_string()) text += ". Fix: " + check.at("fix").get<std::string>();
    text += "\n";
  }
  const auto problems = doc.at("summary").at("problems").get<size_t>();
  const auto warnings = doc.at("summary").at("warnings").get<size_t>();
  if (problems != 0)
    text += fmt::format("\n{} problem{} to fix before the mixer can be used (exit code {}).\n", problems,
                        problems == 1 ? "" : "s", doc.at("exit_code").get<int>());
  else if (warnings != 0)
    text += fmt::format("\nNothing stops you from using the mixer; {} warning{} above.\n", warnings,
                        warnings == 1 ? "" : "s");
  else
    text += "\nEverything is in order.\n";
  return text;
}

Exit doctor(Context &context) {
  Report report;
  checkDataFolder(report);
  checkVersionFiles(report);
  checkUdevRule(report);
  checkUserUnit(report);
  checkMixers(report);
  checkSessionBus(report);
  checkSettingsFile(report);
  checkSettingsLock(report);

  nlohmann::json checks = nlohmann::json::array();
  size_t counts[4] = {0, 0, 0, 0};
  for (const auto &finding : report.findings()) {
    ++counts[static_cast<size_t>(finding.status)];
    checks.push_back({{"area", finding.area},
                      {"status", statusName(finding.status)},
                      {"message", finding.message},
                      {"fix", finding.fix.empty() ? nlohmann::json(nullptr) : nlohmann::json(finding.fix)}});
  }
  const Exit exit = outcome(report);
  const nlohmann::json doc = {
      {"checks", checks},
      {"summary", {{"ok", counts[0]}, {"notes", counts[1]}, {"warnings", counts[2]}, {"problems", counts[3]}}},
      {"exit_code", static_cast<int>(exit)}};
  context.out.result(doc, doctorText);
  return exit;
}

}  // namespace

void addDoctorVerb(VerbRegistry &verbs) {
  verbs.add("doctor",
            "Check everything the mixer needs on this computer (the library's data folder, udev rule, the unit that re-applies "
            "settings, each mixer's access, the session bus, the settings file) and say how to fix what is wrong. "
            "Exit 0 when nothing stops you from using the mixer.",
            {"mxrk7 doctor", "mxrk7 doctor --json", "mxrk7 --virtual doctor"}, doctor);
}

}  // namespace mxrk7
