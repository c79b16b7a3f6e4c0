// The systemd user unit that sends the remembered settings to a mixer when it is plugged in (the
// udev rule asks each logged-in user's service manager for it), and whether it will run.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace mxrk7 {

inline constexpr const char *kUserUnitName = "mxrk7-apply.service";

struct UserUnitReport {
  // The unit file the user's service manager uses: the first one in its search path.
  std::optional<std::string> file;
  // That file masks the unit (a link to /dev/null, or an empty file): the user turned it off.
  bool masked = false;
  // The unit file of this program's own install folder, when the manager does not search there.
  std::optional<std::string> outsideSearchPath;
  // The program the unit's ExecStart= runs.
  std::optional<std::string> program;
  // `systemctl --user is-enabled`'s answer ("static", "masked", ...), when the user's service
  // manager could be asked; nullopt when it could not (no user session, or no answer in time).
  std::optional<std::string> managerState;
};

UserUnitReport inspectUserUnit();

}  // namespace mxrk7
