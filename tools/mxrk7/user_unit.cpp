#include "user_unit.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>

#include "bounded_command.h"
#include "environment.h"
#include "install_layout.h"
#include "store/accounts.h"
#include "store/safe_file.h"
#include "support/program_environment.h"

namespace fs = std::filesystem;

namespace mxrk7 {

namespace {

// A unit file is a few hundred bytes.
constexpr size_t kMaxUnitBytes = 64 * 1024;

// Where a user's service manager looks for units, in its order (systemd's user search path; the
// per-user folders as the manager of a login session sees them).
std::vector<fs::path> searchPath() {
  std::vector<fs::path> folders;
  const std::string home = nvx::store::homeFolder();
  if (!home.empty()) folders.push_back(fs::path(home) / ".config/systemd/user");
  folders.insert(folders.end(), {"/etc/xdg/systemd/user", "/etc/systemd/user"});
  if (const char *runtime = std::getenv("XDG_RUNTIME_DIR"); runtime && runtime[0] == '/')
    folders.push_back(fs::path(runtime) / "systemd/user");
  folders.push_back("/run/systemd/user");
  if (!home.empty()) folders.push_back(fs::path(home) / ".local/share/systemd/user");
  folders.insert(folders.end(), {"/usr/local/share/systemd/user", "/usr/share/systemd/user",
                                 "/usr/local/lib/systemd/user", "/usr/lib/systemd/user", "/lib/systemd/user"});
  return folders;
}

bool isMask(const fs::path &file) {
  std::error_code error;
  if (fs::is_symlink(file, error)) return fs::read_symlink(file, error) == "/dev/null";
  return fs::is_regular_file(file, error) && fs::file_size(file, error) == 0;
}

std::optional<std::string> execProgram(const fs::path &unit) {
  // Read like every file the tool opens on its own: a FIFO in the unit's place must not block.
  const auto file = nvx::store::readRegularFile(unit.string(), kMaxUnitBytes);
  std::istringstream in(file.bytes);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.starts_with("ExecStart=")) continue;
    std::string command = line.substr(std::string_view("ExecStart=").size());
    // Prefixes such as "-" or "@" modify how systemd runs the command.
    while (!command.empty() && std::string_view("-@:+!").find(command.front()) != std::string_view::npos)
      command.erase(0, 1);
    return command.substr(0, command.find(' '));
  }
  return std::nullopt;
}

std::optional<std::string> askManager() {
  const char *runtime = std::getenv("XDG_RUNTIME_DIR");
  std::error_code error;
  if (!runtime || runtime[0] != '/' || !fs::exists(fs::path(runtime) / "systemd/private", error)) return std::nullopt;
  const auto answer = runBounded({"systemctl", "--user", "is-enabled", kUserUnitName}, std::chrono::seconds(2));
  if (!answer) return std::nullopt;
  std::string state = answer->out.substr(0, answer->out.find('\n'));
  if (state.empty()) state = "not-found";
  return state;
}

}  // namespace

UserUnitReport inspectUserUnit() {
  UserUnitReport report;
  std::set<fs::path> searched;  // each real folder once (/lib is /usr/lib on most systems)
  for (const auto &folder : searchPath()) {
    std::error_code error;
    const fs::path real = fs::weakly_canonical(folder, error);
    if (error || !searched.insert(real).second || report.file) continue;
    const fs::path file = folder / kUserUnitName;
    if (!fs::exists(fs::symlink_status(file, error))) continue;
    report.file = file.string();
    report.masked = isMask(file);
    if (!report.masked) report.program = execProgram(file);
  }
  const fs::path ownDir(kUserUnitDir);
  const fs::path own = (ownDir.is_absolute() ? ownDir : fs::path(installPrefix()) / ownDir) / kUserUnitName;
  std::error_code error;
  const fs::path ownReal = fs::weakly_canonical(own.parent_path(), error);
  if (!error && !searched.contains(ownReal) && fs::exists(own, error)) {
    report.outsideSearchPath = own.lexically_normal().string();
    if (!report.file) report.program = execProgram(own);
  }
  report.managerState = askManager();
  return report;
}

}  // namespace mxrk7
