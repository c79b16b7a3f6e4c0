// doctor: one finding per check, each with its fix, and an exit code that says whether anything
// stops the mixer from being used.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include "cli_fixture.h"
#include "private_bus.h"
#include "support/binary_plist.h"
#include "support/test_accounts.h"

namespace nvx::test {
namespace {

using nlohmann::json;

class Doctor : public CliTest {
 protected:
  // The findings of one area, in the order printed.
  static std::vector<json> area(const json &doc, const std::string &name) {
    std::vector<json> found;
    for (const auto &check : doc["checks"])
      if (check["area"] == name) found.push_back(check);
    return found;
  }

  static std::vector<std::string> statuses(const std::vector<json> &checks) {
    std::vector<std::string> out;
    for (const auto &check : checks) out.push_back(check["status"]);
    return out;
  }

  // Runs doctor with --json and as text, checks that both agree and that the report is whole.
  json doctor(int exitCode, const ToolOptions &options = {}) {
    const auto run = runTool({"doctor", "--json"}, options);
    EXPECT_EQ(run.exitCode, exitCode) << run.transcript();
    const json doc = run.json();
    EXPECT_EQ(doc["exit_code"], run.exitCode);
    size_t problems = 0;
    for (const auto &check : doc["checks"]) {
      EXPECT_TRUE(check["area"].is_string() && check["message"].is_string()) << check;
      const std::string status = check["status"];
      EXPECT_TRUE(status == "ok" || status == "note" || status == "warning" || status == "problem") << check;
      if (status == "warning" || status == "problem") {
        EXPECT_TRUE(check["fix"].is_string()) << check;
      }
      problems += status == "problem";
    }
    EXPECT_EQ(doc["summary"]["problems"], problems);
    EXPECT_EQ(problems != 0, exitCode != 0) << doc.dump(2);

    // The text report: one line per check, the fix on the same line.
    const auto text = runTool({"doctor"}, options);
    EXPECT_EQ(text.exitCode, exitCode);
    const std::string report = text.out.substr(0, text.out.find("\n\n"));
    EXPECT_EQ(static_cast<size_t>(std::count(report.begin(), report.end(), '\n')) + 1, doc["checks"].size()) << text.out;
    for (const auto &check : doc["checks"]) {
      std::string line = check["message"].get<std::string>();
      if (check["fix"].is_string()) line += ". Fix: " + check["fix"].get<std::string>();
      EXPECT_NE(report.find(line), std::string::npos) << line << "\n" << text.out;
    }
    return doc;
  }
};

TEST_F(Doctor, AComputerWithoutMixerIsNormal) {
  const json doc = doctor(0);
  const auto mixers = area(doc, "mixers");
  ASSERT_EQ(mixers.size(), 1u);
  EXPECT_EQ(mixers[0]["status"], "note");
  EXPECT_NE(mixers[0]["message"].get<std::string>().find("no mixer connected"), std::string::npos);
  EXPECT_EQ(statuses(area(doc, "data folder")), std::vector<std::string>{"ok"});
  EXPECT_EQ(statuses(area(doc, "session bus")), std::vector<std::string>{"warning"});
  EXPECT_EQ(statuses(area(doc, "settings file")), std::vector<std::string>{"note"});
  const auto driver = area(doc, "driver");
  ASSERT_EQ(driver.size(), 1u);
  EXPECT_NE(driver[0]["message"].get<std::string>().find("none needed"), std::string::npos);
  EXPECT_FALSE(area(doc, "udev rule").empty());
  EXPECT_FALSE(area(doc, "user unit").empty());
  EXPECT_FALSE(area(doc, "setup app").empty());
}

struct MixerCase {
  const char *name;
  std::vector<std::string> opens;
  int exitCode;
  std::vector<std::string> statuses;  // of the mixers' findings
  std::string mentions;               // in the first mixer's message or fix
};

void PrintTo(const MixerCase &c, std::ostream *os) { *os << c.name; }

class DoctorMixers : public Doctor, public ::testing::WithParamInterface<MixerCase> {};

TEST_P(DoctorMixers, EachMixersAccessWithItsFix) {
  bus.setMixersOpening(GetParam().opens);
  const auto found = area(doctor(GetParam().exitCode), "mixers");
  EXPECT_EQ(statuses(found), GetParam().statuses);
  ASSERT_FALSE(found.empty());
  const std::string said = found[0]["message"].get<std::string>() + " " + found[0]["fix"].dump();
  EXPECT_NE(said.find(GetParam().mentions), std::string::npos) << said;
}

INSTANTIATE_TEST_SUITE_P(
    , DoctorMixers,
    ::testing::Values(MixerCase{"one", {"ok"}, 0, {"ok"}, "can be opened"},
                      MixerCase{"busy", {"busy"}, 4, {"problem"}, "another program using the NorvaneMXRK7Setup library"},
                      MixerCase{"denied", {"denied"}, 4, {"problem"}, "udev rule"},
                      MixerCase{"busyBesideAFreeOne", {"busy", "ok"}, 0, {"warning", "ok"}, "busy"},
                      MixerCase{"twoFree", {"ok", "ok"}, 0, {"ok", "ok"}, "mixer 0"}),
    [](const auto &test) { return std::string(test.param.name); });

// Settings files, and what doctor says about each.
struct FileCase {
  const char *name;
  std::function<void(const SettingsHome &)> prepare;
  int exitCode;
  std::vector<std::string> statuses;  // of the settings file's findings
  std::vector<std::string> mentions;  // each in some finding's message or fix
  std::vector<std::string> absent;    // in none
};

void PrintTo(const FileCase &c, std::ostream *os) { *os << c.name; }

class DoctorFiles : public Doctor, public ::testing::WithParamInterface<FileCase> {};

TEST_P(DoctorFiles, ExplainTheSettingsFile) {
  GetParam().prepare(settings);
  const auto found = area(doctor(GetParam().exitCode), "settings file");
  EXPECT_EQ(statuses(found), GetParam().statuses);
  std::string said;
  for (const auto &check : found) said += check["message"].get<std::string>() + " " + check["fix"].dump() + "\n";
  for (const auto &text : GetParam().mentions) EXPECT_NE(said.find(text), std::string::npos) << text << "\n" << said;
  for (const auto &text : GetParam().absent) EXPECT_EQ(said.find(text), std::string::npos) << text << "\n" << said;
}

std::string plistWith(const std::string &entries) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n" + entries + "</dict>\n</plist>\n";
}

INSTANTIATE_TEST_SUITE_P(
    , DoctorFiles,
    ::testing::Values(
        FileCase{"missing", [](const SettingsHome &) {}, 0, {"note"}, {"does not exist yet"}, {}},
        FileCase{"valid",
                 [](const SettingsHome &s) { s.writeIntegers({{"PADMode", 2}, {"MaxLevel", 1}, {"BFX_TEMP2_1", 0x91C8}}); },
                 0, {"ok"}, {"3 settings remembered"}, {}},
        FileCase{"notAPropertyList", [](const SettingsHome &s) { s.writeRaw("not a property list"); }, 5,
                 {"problem"}, {"cannot be read (it is not a property list", "mxrk7 import"}, {}},
        FileCase{"empty", [](const SettingsHome &s) { s.writeRaw(""); }, 5, {"problem"}, {"it is empty"}, {}},
        FileCase{"lockIsAFolder",
                 [](const SettingsHome &s) { std::filesystem::create_directory(s.filePath() + ".lock"); }, 5,
                 {"problem", "note"}, {"the lock file", "is not a regular file"}, {}},
        FileCase{"folderWritableByOthers",
                 [](const SettingsHome &s) { std::filesystem::permissions(s.home(), std::filesystem::perms::all); }, 5,
                 {"problem", "note"}, {"may be written by other users"}, {}},
        FileCase{"valuesOnlyTheBinaryFormatHolds",
                 [](const SettingsHome &s) {
                   BinaryPlistBuilder b;
                   s.writeRaw(b.bytes(b.dict({{b.string("PADMode"), b.integer(2)}, {b.string("uid"), b.raw("\x80\x01")}})));
                 },
                 5, {"problem", "ok", "note"}, {"cannot write back"}, {}},
        FileCase{"lockHeldNow",
                 [](const SettingsHome &s) {
                   static int held = -1;  // held until the next use (by then the file is another test's)
                   if (held >= 0) ::close(held);
                   held = ::open((s.filePath() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
                   ::flock(held, LOCK_EX);
                 },
                 0, {"note", "warning"}, {"holds", "right now", "fuser -v"}, {}},
        FileCase{"foreignKeysAndBadValues",
                 [](const SettingsHome &s) {
                   s.writeRaw(plistWith("<key>MaxLevel</key><integer>9</integer>\n"
                                        "<key>PADMode</key><string>two</string>\n"
                                        "<key>FaderStartMode</key><integer>2</integer>\n"
                                        "<key>PopUp</key><integer>3</integer>\n"
                                        "<key>Output4</key><integer>0</integer>\n"
                                        "<key>OtherApp</key><integer>1</integer>\n"));
                 },
                 0,
                 {"warning", "warning", "ok", "note"},
                 {"MaxLevel holds 9, which the library does not accept for boost", "mxrk7 set boost LEVEL",
                  "PADMode holds no whole number", "1 setting remembered", "1 key the library does not know (OtherApp)"},
                 {"PopUp)", "Output4)"}}),
    [](const auto &test) { return std::string(test.param.name); });

TEST_F(Doctor, ASettingsFolderThatCannotBeWrittenIsAProblem) {
  // As root (CI) doctor runs as a test account in a folder of root's; as an ordinary user it runs
  // as that user in a folder without write permission.
  const bool root = ::geteuid() == 0;
  ScratchDir folder;
  ASSERT_EQ(::chmod(folder.path().c_str(), root ? 0755 : 0555), 0);
  ToolOptions options;
  if (root) options.wrapper = runAs(testAccount(Role::User));
  EnvGuard env;
  env.set("XDG_CONFIG_HOME", folder.path());
  const auto found = area(doctor(5, options), "settings file");
  ASSERT_FALSE(found.empty());
  EXPECT_EQ(found[0]["status"], "problem");
  EXPECT_NE(found[0]["message"].get<std::string>().find("changes cannot be stored: the folder " + folder.path()),
            std::string::npos)
      << found[0];
}

// Data folders (MXRK7_SYSROOT) and the version files in them.
struct VersionCase {
  const char *name;
  // Fills the scratch folder; returns the data folder below it that the tool is pointed at.
  std::function<std::string(const ScratchDir &, const std::string &toolVersion)> prepare;
  int exitCode;
  std::string dataFolder;  // the data folder's finding: status and a text in its message
  std::string dataFolderMentions;
  std::string setupApp;
};

void PrintTo(const VersionCase &c, std::ostream *os) { *os << c.name; }

class DoctorVersions : public Doctor, public ::testing::WithParamInterface<VersionCase> {};

std::string versionPlist(const std::string &key, const std::string &version) {
  return plistWith("<key>" + key + "</key><string>" + version + "</string>\n");
}

const std::string kLibraryPlist =
    "System/Library/Frameworks/NorvaneMXRK7Setup.framework/Versions/A/Resources/info.plist";
const std::string kSetupAppPlist = "Applications/Norvane/MXR-K7/MXR-K7 Setup.app/Contents/info.plist";

TEST_P(DoctorVersions, CompareTheDataFolderWithTheTool) {
  std::string toolVersion = runTool({"--version"}).out;
  toolVersion.erase(toolVersion.find_last_not_of(" \n") + 1);
  ScratchDir scratch;
  const std::string sysroot = GetParam().prepare(scratch, toolVersion);
  EnvGuard env;
  env.set("MXRK7_SYSROOT", sysroot);
  const json doc = doctor(GetParam().exitCode);
  const auto found = area(doc, "data folder");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0]["status"], GetParam().dataFolder);
  const std::string message = found[0]["message"];
  EXPECT_EQ(message.rfind(sysroot, 0), 0u) << message;
  EXPECT_NE(message.find(GetParam().dataFolderMentions), std::string::npos) << message;
  EXPECT_EQ(statuses(area(doc, "setup app")), std::vector<std::string>{GetParam().setupApp});
}

INSTANTIATE_TEST_SUITE_P(
    , DoctorVersions,
    ::testing::Values(
        VersionCase{"noDataFolder", [](const ScratchDir &root, const std::string &) { return root.file("missing"); },
                    5, "problem", "does not exist", "note"},
        VersionCase{"noVersionFile", [](const ScratchDir &root, const std::string &) { return root.path(); }, 5,
                    "problem", "has no version file", "note"},
        VersionCase{"otherVersion",
                    [](const ScratchDir &root, const std::string &) {
                      root.write(kLibraryPlist, versionPlist("CFBundleVersion", "0.9.1"));
                      return root.path();
                    },
                    5, "problem", "is version 0.9.1, but this tool is version", "note"},
        VersionCase{"sameVersionAndTheSetupApp",
                    [](const ScratchDir &root, const std::string &tool) {
                      root.write(kLibraryPlist, versionPlist("CFBundleVersion", tool));
                      root.write(kSetupAppPlist, versionPlist("CFBundleVersion", "2.5"));
                      return root.path();
                    },
                    0, "ok", "the same as this tool", "ok"}),
    [](const auto &test) { return std::string(test.param.name); });

TEST_F(Doctor, ASessionBusThatAnswers) {
  PrivateBus dbus;
  ASSERT_FALSE(dbus.address().empty()) << "dbus-daemon did not start";
  EnvGuard env;
  env.set("DBUS_SESSION_BUS_ADDRESS", dbus.address());
  const auto found = area(doctor(0), "session bus");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0]["status"], "ok");
}

TEST_F(Doctor, ASessionBusThatNeverAnswersCostsAtMostItsBound) {
  // A socket that accepts connections into its backlog and never says a word.
  ScratchDir dir;
  const std::string path = dir.file("bus");
  const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(path.size(), sizeof address.sun_path);
  path.copy(address.sun_path, path.size());
  ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(listener, 8), 0);
  EnvGuard env;
  env.set("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + path);

  const auto run = runTool({"doctor", "--json"});
  ::close(listener);
  EXPECT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_LT(run.took, std::chrono::seconds(5));
  const auto found = area(run.json(), "session bus");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0]["status"], "warning");
  EXPECT_NE(found[0]["message"].get<std::string>().find("does not answer within 1 s"), std::string::npos);
}

// The user unit as the user's service manager finds it first: in ~/.config/systemd/user.
struct UnitCase {
  const char *name;
  std::function<void(const std::string &unitPath)> install;
  std::string status;
  std::string mentions;  // in the message or the fix
};

void PrintTo(const UnitCase &c, std::ostream *os) { *os << c.name; }

class DoctorUnit : public Doctor, public ::testing::WithParamInterface<UnitCase> {};

TEST_P(DoctorUnit, SaysWhetherSettingsFollowTheMixer) {
  ScratchDir home;
  const std::string unit = home.write(".config/systemd/user/mxrk7-apply.service", "");
  std::filesystem::remove(unit);
  GetParam().install(unit);
  EnvGuard env;
  env.set("HOME", home.path());
  const auto found = area(doctor(0), "user unit");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0]["status"], GetParam().status);
  const std::string said = found[0]["message"].get<std::string>() + " " + found[0]["fix"].dump();
  EXPECT_NE(said.find(GetParam().mentions), std::string::npos) << said;
}

void writeUnitFile(const std::string &path, const std::string &program) {
  std::ofstream(path) << "[Service]\nType=oneshot\nExecStart=" << program << " apply --wait\n";
}

INSTANTIATE_TEST_SUITE_P(
    , DoctorUnit,
    ::testing::Values(
        UnitCase{"masked", [](const std::string &p) { std::filesystem::create_symlink("/dev/null", p); }, "note",
                 "systemctl --user unmask mxrk7-apply.service"},
        UnitCase{"installed", [](const std::string &p) { writeUnitFile(p, MXRK7_TOOL); }, "ok",
                 "a mixer that is plugged in gets the remembered settings"},
        UnitCase{"runsAMissingProgram", [](const std::string &p) { writeUnitFile(p, "/nonexistent/bin/mxrk7"); }, "warning",
                 "runs /nonexistent/bin/mxrk7, which is not there"}),
    [](const auto &test) { return std::string(test.param.name); });

// The user's service manager, asked through a stand-in systemctl when it seems reachable.
struct ManagerCase {
  const char *name;
  std::string systemctl;  // the stand-in's script
  std::string status;
  std::string mentions;
  bool mentionsManager;  // the finding quotes the manager's answer
};

void PrintTo(const ManagerCase &c, std::ostream *os) { *os << c.name; }

class DoctorManager : public Doctor, public ::testing::WithParamInterface<ManagerCase> {};

TEST_P(DoctorManager, IsAskedWithinABound) {
  ScratchDir home;
  writeUnitFile(home.write(".config/systemd/user/mxrk7-apply.service", ""), MXRK7_TOOL);
  ScratchDir runtime;
  runtime.write("systemd/private", "");  // where a running user manager listens
  ScratchDir bin;
  const std::string systemctl = bin.write("systemctl", "#!/bin/sh\n" + GetParam().systemctl);
  ASSERT_EQ(::chmod(systemctl.c_str(), 0755), 0);
  EnvGuard env;
  env.set("HOME", home.path());
  env.set("XDG_RUNTIME_DIR", runtime.path());
  env.set("PATH", bin.path() + ":" + std::getenv("PATH"));

  const auto run = runTool({"doctor", "--json"});
  EXPECT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_LT(run.took, std::chrono::seconds(6));
  const auto found = area(run.json(), "user unit");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0]["status"], GetParam().status);
  const std::string said = found[0]["message"].get<std::string>() + " " + found[0]["fix"].dump();
  EXPECT_NE(said.find(GetParam().mentions), std::string::npos) << said;
  EXPECT_EQ(said.find("your service manager:") != std::string::npos, GetParam().mentionsManager) << said;
}

INSTANTIATE_TEST_SUITE_P(
    , DoctorManager,
    ::testing::Values(ManagerCase{"static", "echo static\n", "ok", "(your service manager: static)", true},
                      ManagerCase{"masked", "echo masked\nexit 1\n", "note", "systemctl --user unmask", false},
                      ManagerCase{"neverAnswers", "exec sleep 30\n", "ok", "gets the remembered settings", false}),
    [](const auto &test) { return std::string(test.param.name); });

TEST_F(Doctor, UdevRuleIsLookedForWhereUdevReadsIt) {
  bool installed = false;
  for (const char *folder : {"/etc/udev/rules.d", "/run/udev/rules.d", "/usr/lib/udev/rules.d", "/lib/udev/rules.d"})
    installed |= std::filesystem::exists(std::string(folder) + "/70-mxrk7.rules");
  const auto found = area(doctor(0), "udev rule");
  ASSERT_EQ(found.size(), 1u);
  if (installed) {
    EXPECT_NE(found[0]["message"].get<std::string>().find("70-mxrk7.rules"), std::string::npos) << found[0];
  } else {
    // The build tree's rule is staged, not installed: udev knows nothing of it.
    EXPECT_EQ(found[0]["status"], "warning");
    EXPECT_NE(found[0]["message"].get<std::string>().find("not installed"), std::string::npos) << found[0];
    EXPECT_NE(found[0]["fix"].get<std::string>().find("mxrk7 udev-rule | sudo tee /etc/udev/rules.d/70-mxrk7.rules"),
              std::string::npos);
  }
}

}  // namespace
}  // namespace nvx::test
