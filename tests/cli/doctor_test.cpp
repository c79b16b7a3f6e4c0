// doctor: one finding per check, each problem with its fix, and an exit code that says whether
// anything stops the mixer from being used.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <memory>

#include "cli_fixture.h"
#include "support/crafted_files.h"
#include "support/private_bus.h"

namespace nvx::test {
namespace {

class ToolDoctor : public CliTest {
 public:
  // What a situation needs kept alive while doctor runs: folders, a bus, a held lock.
  std::vector<std::shared_ptr<void>> keep;

  const ScratchDir &scratch() {
    auto dir = std::make_shared<ScratchDir>();
    keep.push_back(dir);
    return *dir;
  }
  // A user unit in a scratch home (as the user's service manager finds it first); none: masked.
  void unitFile(const std::string &execStart) {
    const ScratchDir &home = scratch();
    env.set("HOME", home.path());
    const std::string unit = home.write(".config/systemd/user/mxrk7-apply.service",
                                        "[Service]\nType=oneshot\nExecStart=" + execStart + " apply --wait\n");
    if (!execStart.empty()) return;
    std::filesystem::remove(unit);
    std::filesystem::create_symlink("/dev/null", unit);
  }
  template <class Bus>
  void sessionBus(std::shared_ptr<Bus> daemon) {
    env.set("DBUS_SESSION_BUS_ADDRESS", daemon->address());
    keep.push_back(daemon);
  }
  // A data folder whose library version file says `version`.
  void dataFolder(const std::string &version) {
    const ScratchDir &root = scratch();
    env.set("MXRK7_SYSROOT", root.path());
    root.write("System/Library/Frameworks/NorvaneMXRK7Setup.framework/Versions/A/Resources/info.plist",
               xmlPlist("<key>CFBundleVersion</key><string>" + version + "</string>\n"));
  }
};

struct Finding {
  const char *name;
  std::function<void(ToolDoctor &)> prepare;
  int exitCode;
  std::string area;
  std::vector<std::string> statuses;  // of the area's findings, in order
  std::vector<std::string> mentions;  // each in some finding's message or fix
};

void PrintTo(const Finding &c, std::ostream *os) { *os << c.name; }

class ToolDoctorFinding : public ToolDoctor, public ::testing::WithParamInterface<Finding> {};

TEST_P(ToolDoctorFinding, SaysWhatIsWrongAndHowToFixIt) {
  const auto &c = GetParam();
  c.prepare(*this);
  const auto run = runTool({"doctor", "--json"});
  EXPECT_EQ(run.exitCode, c.exitCode) << run.transcript();
  std::vector<std::string> statuses;
  std::string said;
  for (const auto &check : run.json()["checks"]) {
    if (check["area"] != c.area) continue;
    statuses.push_back(check["status"]);
    said += check["message"].get<std::string>() + " " + check["fix"].dump() + "\n";
  }
  EXPECT_EQ(statuses, c.statuses) << said;
  for (const auto &text : c.mentions) EXPECT_NE(said.find(text), std::string::npos) << text << "\n" << said;
}

std::string toolVersion() {
  std::string version = runTool({"--version"}).out;
  return version.erase(version.find_last_not_of(" \n") + 1);
}

INSTANTIATE_TEST_SUITE_P(
    , ToolDoctorFinding,
    ::testing::Values(
        Finding{"noMixer", [](ToolDoctor &) {}, 0, "mixers", {"note"}, {"no mixer connected"}},
        Finding{"denied", [](ToolDoctor &d) { d.bus.setMixersOpening({"denied"}); }, 4, "mixers", {"problem"},
                {"udev rule"}},
        Finding{"busyBesideAFreeOne", [](ToolDoctor &d) { d.bus.setMixersOpening({"busy", "ok"}); }, 0, "mixers",
                {"warning", "ok"}, {"another program using the NorvaneMXRK7Setup library", "can be opened"}},
        Finding{"notAPropertyList", [](ToolDoctor &d) { d.settings.writeRaw("not a property list"); }, 5,
                "settings file", {"problem"}, {"cannot be read (it is not a property list", "mxrk7 import"}},
        Finding{"folderWritableByOthers",
                [](ToolDoctor &d) { std::filesystem::permissions(d.settings.home(), std::filesystem::perms::all); }, 5,
                "settings file", {"problem", "note"}, {"may be written by other users"}},
        Finding{"lockHeldNow",
                [](ToolDoctor &d) {
                  const int fd = ::open((d.settings.filePath() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
                  ::flock(fd, LOCK_EX);
                  d.keep.push_back(std::shared_ptr<void>(nullptr, [fd](void *) { ::close(fd); }));
                },
                0, "settings file", {"note", "warning"}, {"holds", "right now", "fuser -v"}},
        Finding{"foreignKeysAndBadValues",
                [](ToolDoctor &d) {
                  d.settings.writeRaw(xmlPlist(
                      "<key>MaxLevel</key><integer>9</integer>\n<key>PADMode</key><string>two</string>\n"
                      "<key>FaderStartMode</key><integer>2</integer>\n<key>PopUp</key><integer>3</integer>\n"
                      "<key>Output4</key><integer>0</integer>\n<key>OtherApp</key><integer>1</integer>\n"));
                },
                0, "settings file", {"warning", "warning", "ok", "note"},
                {"MaxLevel holds 9, which the library does not accept for boost", "mxrk7 set boost LEVEL",
                 "PADMode holds no whole number", "1 setting remembered",
                 "1 key the library does not know (OtherApp)"}},
        Finding{"otherVersion", [](ToolDoctor &d) { d.dataFolder("0.9.1"); }, 5, "data folder", {"problem"},
                {"is version 0.9.1, but this tool is version"}},
        Finding{"sameVersion", [](ToolDoctor &d) { d.dataFolder(toolVersion()); }, 0, "data folder", {"ok"},
                {"the same as this tool"}},
        Finding{"noSessionBus", [](ToolDoctor &) {}, 0, "session bus", {"warning"}, {}},
        Finding{"aSessionBus", [](ToolDoctor &d) { d.sessionBus(std::make_shared<PrivateBus>()); }, 0, "session bus",
                {"ok"}, {}},
        Finding{"aSessionBusThatNeverAnswers",
                [](ToolDoctor &d) { d.sessionBus(std::make_shared<SilentSocket>(d.scratch().file("bus"))); }, 0,
                "session bus", {"warning"}, {"does not answer within 1 s"}},
        Finding{"unitMasked", [](ToolDoctor &d) { d.unitFile(""); }, 0, "user unit", {"note"},
                {"systemctl --user unmask mxrk7-apply.service"}},
        Finding{"unitInstalled", [](ToolDoctor &d) { d.unitFile(MXRK7_TOOL); }, 0, "user unit", {"ok"},
                {"a mixer that is plugged in gets the remembered settings"}},
        Finding{"unitRunsAMissingProgram", [](ToolDoctor &d) { d.unitFile("/nonexistent/bin/mxrk7"); }, 0, "user unit",
                {"warning"}, {"runs /nonexistent/bin/mxrk7, which is not there"}}),
    [](const auto &test) { return std::string(test.param.name); });

// The text report says what --json says, each fix on its finding's line, with the same exit code.
TEST_F(ToolDoctor, TheTextReportIsTheJsonReport) {
  bus.setMixersOpening({"busy", "ok"});
  const auto run = runTool({"doctor", "--json"});
  const auto text = runTool({"doctor"});
  EXPECT_EQ(text.exitCode, run.exitCode);
  for (const auto &check : run.json()["checks"]) {
    std::string line = check["message"].get<std::string>();
    if (check["fix"].is_string()) line += ". Fix: " + check["fix"].get<std::string>();
    EXPECT_NE(text.out.find(line), std::string::npos) << line << "\n" << text.out;
  }
}

}  // namespace
}  // namespace nvx::test
