// doctor: one finding per check, each problem with its fix, and an exit code that says whether
// anything stops the mixer from being used.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>

#include "cli_fixture.h"
#include "support/binary_plist.h"
#include "support/crafted_files.h"
#include "support/private_bus.h"

namespace nvx::test {
namespace {

using nlohmann::json;

class ToolDoctor : public CliTest {
 public:
  // What a situation needs kept alive while doctor runs: folders, a bus, a held lock.
  std::vector<std::shared_ptr<void>> keep;
  ProcessOptions options;

  const ScratchDir &scratch() {
    auto dir = std::make_shared<ScratchDir>();
    keep.push_back(dir);
    return *dir;
  }
  // A user unit in a scratch home: as the user's service manager finds it first.
  std::string unitFile(const std::string &execStart) {
    const ScratchDir &home = scratch();
    env.set("HOME", home.path());
    const std::string unit = home.write(".config/systemd/user/mxrk7-apply.service", "");
    if (execStart.empty()) std::filesystem::remove(unit);
    else std::ofstream(unit) << "[Service]\nType=oneshot\nExecStart=" << execStart << " apply --wait\n";
    return unit;
  }
  // A stand-in systemctl on the PATH, and a runtime folder where a user manager seems to listen.
  void serviceManager(const std::string &script) {
    const ScratchDir &runtime = scratch();
    runtime.write("systemd/private", "");
    env.set("XDG_RUNTIME_DIR", runtime.path());
    const std::string systemctl = scratch().write("systemctl", "#!/bin/sh\n" + script);
    ::chmod(systemctl.c_str(), 0755);
    env.set("PATH", std::filesystem::path(systemctl).parent_path().string() + ":" + std::getenv("PATH"));
  }
  void dataFolder(const std::map<std::string, std::string> &versions) {
    const ScratchDir &root = scratch();
    env.set("MXRK7_SYSROOT", versions.empty() ? root.file("missing") : root.path());
    for (const auto &[path, version] : versions)
      if (!path.empty()) root.write(path, xmlPlist("<key>CFBundleVersion</key><string>" + version + "</string>\n"));
  }
};

std::string toolVersion() {
  std::string version = runTool({"--version"}).out;
  return version.erase(version.find_last_not_of(" \n") + 1);
}

const std::string kLibraryPlist = "System/Library/Frameworks/NorvaneMXRK7Setup.framework/Versions/A/Resources/info.plist";
const std::string kSetupAppPlist = "Applications/Norvane/MXR-K7/MXR-K7 Setup.app/Contents/info.plist";

struct Finding {
  const char *name;
  std::function<void(ToolDoctor &)> prepare;
  int exitCode;
  std::string area;
  std::vector<std::string> statuses;  // of the area's findings, in order; none: not checked
  std::vector<std::string> mentions;  // each in some finding's message or fix
  std::vector<std::string> absent = {};
};

void PrintTo(const Finding &c, std::ostream *os) { *os << c.name; }

class ToolDoctorFinding : public ToolDoctor, public ::testing::WithParamInterface<Finding> {};

TEST_P(ToolDoctorFinding, SaysWhatIsWrongAndHowToFixIt) {
  const auto &c = GetParam();
  c.prepare(*this);
  const auto run = runTool({"doctor", "--json"}, options);
  EXPECT_EQ(run.exitCode, c.exitCode) << run.transcript();
  EXPECT_LT(run.took, 5s) << "every check is bounded";
  std::vector<std::string> statuses;
  std::string said;
  for (const auto &check : run.json()["checks"]) {
    if (check["area"] != c.area) continue;
    statuses.push_back(check["status"]);
    said += check["message"].get<std::string>() + " " + check["fix"].dump() + "\n";
  }
  if (!c.statuses.empty()) EXPECT_EQ(statuses, c.statuses) << said;
  for (const auto &text : c.mentions) EXPECT_NE(said.find(text), std::string::npos) << text << "\n" << said;
  for (const auto &text : c.absent) EXPECT_EQ(said.find(text), std::string::npos) << text << "\n" << said;
}

INSTANTIATE_TEST_SUITE_P(
    , ToolDoctorFinding,
    ::testing::Values(
        Finding{"noMixer", [](ToolDoctor &) {}, 0, "mixers", {"note"}, {"no mixer connected"}},
        Finding{"aMixer", [](ToolDoctor &t) { t.bus.setMixersOpening({"ok"}); }, 0, "mixers", {"ok"}, {"can be opened"}},
        Finding{"busy", [](ToolDoctor &t) { t.bus.setMixersOpening({"busy"}); }, 4, "mixers", {"problem"},
                {"another program using the NorvaneMXRK7Setup library"}},
        Finding{"denied", [](ToolDoctor &t) { t.bus.setMixersOpening({"denied"}); }, 4, "mixers", {"problem"}, {"udev rule"}},
        Finding{"busyBesideAFreeOne", [](ToolDoctor &t) { t.bus.setMixersOpening({"busy", "ok"}); }, 0, "mixers",
                {"warning", "ok"}, {"busy"}},
        Finding{"noSettingsFile", [](ToolDoctor &) {}, 0, "settings file", {"note"}, {"does not exist yet"}},
        Finding{"validSettingsFile",
                [](ToolDoctor &t) { t.settings.writeIntegers({{"PADMode", 2}, {"MaxLevel", 1}, {"BFX_TEMP2_1", 0x91C8}}); },
                0, "settings file", {"ok"}, {"3 settings remembered"}},
        Finding{"notAPropertyList", [](ToolDoctor &t) { t.settings.writeRaw("not a property list"); }, 5,
                "settings file", {"problem"}, {"cannot be read (it is not a property list", "mxrk7 import"}},
        Finding{"emptySettingsFile", [](ToolDoctor &t) { t.settings.writeRaw(""); }, 5, "settings file", {"problem"},
                {"it is empty"}},
        Finding{"lockIsAFolder",
                [](ToolDoctor &t) { std::filesystem::create_directory(t.settings.filePath() + ".lock"); }, 5,
                "settings file", {"problem", "note"}, {"the lock file", "is not a regular file"}},
        Finding{"folderWritableByOthers",
                [](ToolDoctor &t) { std::filesystem::permissions(t.settings.home(), std::filesystem::perms::all); }, 5,
                "settings file", {"problem", "note"}, {"may be written by other users"}},
        Finding{"folderNotWritable",
                [](ToolDoctor &t) {
                  // As a user of the tests' own in a folder of root's (the tests run as root).
                  t.options.asUser = &testAccount(Role::User);
                  const ScratchDir &folder = t.scratch();
                  ::chmod(folder.path().c_str(), 0755);
                  t.env.set("XDG_CONFIG_HOME", folder.path());
                },
                5, "settings file", {"problem", "note"}, {"changes cannot be stored: the folder /"}},
        Finding{"valuesOnlyTheBinaryFormatHolds",
                [](ToolDoctor &t) {
                  BinaryPlistBuilder b;
                  t.settings.writeRaw(b.bytes(b.dict({{b.string("PADMode"), b.integer(2)}, {b.string("uid"), b.raw("\x80\x01")}})));
                },
                5, "settings file", {"problem", "ok", "note"}, {"cannot write back"}},
        Finding{"lockHeldNow",
                [](ToolDoctor &t) {
                  struct Held {
                    int fd;
                    ~Held() { ::close(fd); }
                  };
                  auto held = std::make_shared<Held>(::open((t.settings.filePath() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
                  ::flock(held->fd, LOCK_EX);
                  t.keep.push_back(held);
                },
                0, "settings file", {"note", "warning"}, {"holds", "right now", "fuser -v"}},
        Finding{"foreignKeysAndBadValues",
                [](ToolDoctor &t) {
                  t.settings.writeRaw(xmlPlist(
                      "<key>MaxLevel</key><integer>9</integer>\n<key>PADMode</key><string>two</string>\n"
                      "<key>FaderStartMode</key><integer>2</integer>\n<key>PopUp</key><integer>3</integer>\n"
                      "<key>Output4</key><integer>0</integer>\n<key>OtherApp</key><integer>1</integer>\n"));
                },
                0, "settings file", {"warning", "warning", "ok", "note"},
                {"MaxLevel holds 9, which the library does not accept for boost", "mxrk7 set boost LEVEL",
                 "PADMode holds no whole number", "1 setting remembered", "1 key the library does not know (OtherApp)"},
                {"PopUp)", "Output4)"}},
        Finding{"noDataFolder", [](ToolDoctor &t) { t.dataFolder({}); }, 5, "data folder", {"problem"}, {"does not exist"}},
        Finding{"noVersionFile", [](ToolDoctor &t) { t.dataFolder({{"", ""}}); }, 5, "data folder", {"problem"},
                {"has no version file"}},
        Finding{"otherVersion", [](ToolDoctor &t) { t.dataFolder({{kLibraryPlist, "0.9.1"}}); }, 5, "data folder",
                {"problem"}, {"is version 0.9.1, but this tool is version"}},
        Finding{"sameVersion", [](ToolDoctor &t) { t.dataFolder({{kLibraryPlist, toolVersion()}, {kSetupAppPlist, "2.5"}}); },
                0, "data folder", {"ok"}, {"the same as this tool"}},
        Finding{"setupAppFound", [](ToolDoctor &t) { t.dataFolder({{kLibraryPlist, toolVersion()}, {kSetupAppPlist, "2.5"}}); },
                0, "setup app", {"ok"}, {}},
        Finding{"noSessionBus", [](ToolDoctor &) {}, 0, "session bus", {"warning"}, {}},
        Finding{"aSessionBus",
                [](ToolDoctor &t) {
                  auto bus = std::make_shared<PrivateBus>();
                  t.keep.push_back(bus);
                  t.env.set("DBUS_SESSION_BUS_ADDRESS", bus->address());
                },
                0, "session bus", {"ok"}, {}},
        Finding{"aSessionBusThatNeverAnswers",
                [](ToolDoctor &t) {
                  auto silent = std::make_shared<SilentSocket>(t.scratch().file("bus"));
                  t.keep.push_back(silent);
                  t.env.set("DBUS_SESSION_BUS_ADDRESS", silent->address());
                },
                0, "session bus", {"warning"}, {"does not answer within 1 s"}},
        Finding{"unitMasked",
                [](ToolDoctor &t) { std::filesystem::create_symlink("/dev/null", t.unitFile("")); }, 0, "user unit",
                {"note"}, {"systemctl --user unmask mxrk7-apply.service"}},
        Finding{"unitInstalled", [](ToolDoctor &t) { t.unitFile(MXRK7_TOOL); }, 0, "user unit", {"ok"},
                {"a mixer that is plugged in gets the remembered settings"}},
        Finding{"unitRunsAMissingProgram", [](ToolDoctor &t) { t.unitFile("/nonexistent/bin/mxrk7"); }, 0, "user unit",
                {"warning"}, {"runs /nonexistent/bin/mxrk7, which is not there"}},
        Finding{"managerSaysStatic",
                [](ToolDoctor &t) {
                  t.unitFile(MXRK7_TOOL);
                  t.serviceManager("echo static\n");
                },
                0, "user unit", {"ok"}, {"(your service manager: static)"}},
        Finding{"managerSaysMasked",
                [](ToolDoctor &t) {
                  t.unitFile(MXRK7_TOOL);
                  t.serviceManager("echo masked\nexit 1\n");
                },
                0, "user unit", {"note"}, {"systemctl --user unmask"}, {"your service manager:"}},
        // The build tree's rule is staged, not installed, unless the machine has one of its own.
        Finding{"udevRule", [](ToolDoctor &) {}, 0, "udev rule", {}, {"70-mxrk7.rules"}},
        Finding{"noDriverNeeded", [](ToolDoctor &) {}, 0, "driver", {"note"}, {"none needed"}}),
    [](const auto &test) { return std::string(test.param.name); });

// The text report says what --json says: one line per check, the fix on the same line, and the
// exit code follows the problems.
TEST_F(ToolDoctor, TheTextReportIsTheJsonReport) {
  bus.setMixersOpening({"busy", "ok"});
  const auto run = runTool({"doctor", "--json"});
  const json doc = run.json();
  EXPECT_EQ(doc["exit_code"], run.exitCode);
  size_t problems = 0;
  for (const auto &check : doc["checks"]) {
    const std::string status = check["status"];
    EXPECT_TRUE(status == "ok" || status == "note" || check["fix"].is_string()) << check;
    problems += status == "problem";
  }
  EXPECT_EQ(doc["summary"]["problems"], problems);
  const auto text = runTool({"doctor"});
  EXPECT_EQ(text.exitCode, run.exitCode);
  const std::string report = text.out.substr(0, text.out.find("\n\n"));
  EXPECT_EQ(static_cast<size_t>(std::count(report.begin(), report.end(), '\n')) + 1, doc["checks"].size()) << text.out;
  for (const auto &check : doc["checks"]) {
    std::string line = check["message"].get<std::string>();
    if (check["fix"].is_string()) line += ". Fix: " + check["fix"].get<std::string>();
    EXPECT_NE(report.find(line), std::string::npos) << line << "\n" << text.out;
  }
}

}  // namespace
}  // namespace nvx::test
