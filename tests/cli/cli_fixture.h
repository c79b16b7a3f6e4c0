// What every test of the tool starts from: a sandbox (no session bus, English, an empty settings
// folder, virtual mixers), and the built tool run in it.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/process.h"
#include "support/sandbox.h"

namespace nvx::test {

inline Finished runTool(const std::vector<std::string> &args, const ProcessOptions &options = {}) {
  std::vector<std::string> argv{MXRK7_TOOL};
  argv.insert(argv.end(), args.begin(), args.end());
  return run(argv, options);
}

class CliTest : public ::testing::Test, public Sandbox {
 protected:
  // A settings document file holding these entries (JSON objects separated by commas).
  std::string document(const std::string &entries) {
    return settings.dir().write("document.json",
                                R"({"format": "mxrk7-settings", "version": 1, "settings": [)" + entries + "]}");
  }
};

}  // namespace nvx::test
