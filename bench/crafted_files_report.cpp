// Every crafted settings file of tests/support/crafted_files.cpp against a getter and a setter of the
// public API (NVX_GetPADModeIndex, NVX_SetPADModeIndex), each call in a fresh process of its own,
// on the main thread and on a thread with a 256 KiB stack. Prints, per file and call, the wall and
// CPU time of the call and the memory it added at its peak, as a Markdown table; exits with 1 when
// a call crashed or took more than 0.1 s or 32 MiB. Run by scripts/crafted-files.sh.
//   crafted_files_report [NAME-PART]   only the files whose name holds NAME-PART
#include <NorvaneMXRK7Setup.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>

#include "bench_support.h"
#include "support/crafted_files.h"

namespace {

constexpr double kMostSeconds = 0.1;
constexpr double kMostMiB = 32;
constexpr size_t kSmallStack = 256 * 1024;

struct Figures {
  double wallMs = 0;
  double cpuMs = 0;
  double addedMiB = 0;  // peak resident memory during the call, less what was resident before
};

double cpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

double residentMiB() {
  long pages = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

double peakMiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

void call(bool setter) {
  uint32_t value = 0;
  if (setter) NVX_SetPADModeIndex(0, 1);
  else NVX_GetPADModeIndex(0, &value);
}

// In the child: one call, measured; its figures go to `out`.
Figures measure(bool setter, bool smallStack) {
  // Start the peak over from what is resident now ("5" resets the peak resident size).
  std::ofstream("/proc/self/clear_refs") << "5";
  const double before = residentMiB();
  const auto start = std::chrono::steady_clock::now();
  const double cpuStart = cpuSeconds();
  if (smallStack) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, kSmallStack);
    pthread_t thread;
    bool which = setter;
    const auto run = [](void *arg) -> void * {
      call(*static_cast<bool *>(arg));
      return nullptr;
    };
    if (pthread_create(&thread, &attributes, run, &which) != 0) std::abort();
    pthread_join(thread, nullptr);
  } else {
    call(setter);
  }
  Figures figures;
  figures.cpuMs = (cpuSeconds() - cpuStart) * 1000;
  figures.wallMs = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  figures.addedMiB = peakMiB() - before;
  return figures;
}

// Runs one call on the crafted file in a fresh process; nothing when that process did not end well.
std::optional<Figures> inChild(const nvx::test::CraftedFile &file, bool setter, bool smallStack, std::string &why) {
  const nvx::bench::Scratch home("nvx-crafted");
  nvx::bench::writeFile(nvx::bench::settingsPath(home.path()), file.bytes);
  nvx::bench::setEnv("XDG_CONFIG_HOME", home.path().c_str());
  int pipeFds[2];
  if (pipe(pipeFds) != 0) std::abort();
  const pid_t pid = fork();
  if (pid == 0) {
    close(pipeFds[0]);
    const Figures figures = measure(setter, smallStack);
    _exit(write(pipeFds[1], &figures, sizeof figures) == sizeof figures ? 0 : 1);
  }
  close(pipeFds[1]);
  Figures figures;
  const bool got = read(pipeFds[0], &figures, sizeof figures) == sizeof figures;
  close(pipeFds[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  if (WIFSIGNALED(status)) why = "crashed (signal " + std::to_string(WTERMSIG(status)) + ")";
  else if (!got || !WIFEXITED(status) || WEXITSTATUS(status) != 0) why = "failed";
  if (!why.empty()) return std::nullopt;
  return figures;
}

}  // namespace

int main(int argc, char **argv) {
  const std::string only = argc > 1 ? argv[1] : "";
  const nvx::bench::Scratch bus("nvx-crafted-bus");
  const std::string config = bus.file("mixers.json");
  nvx::bench::writeFile(config, nvx::bench::virtualConfig(0));
  nvx::bench::setEnv("MXRK7_VIRTUAL_MIXERS", config.c_str());

  std::printf("| file | size | call | wall (ms) | CPU (ms) | memory added (MiB) |\n|---|---:|---|---:|---:|---:|\n");
  double worstMs = 0, worstMiB = 0;
  int failures = 0;
  for (const auto &file : nvx::test::craftedFiles()) {
    if (file.name.find(only) == std::string::npos) continue;
    for (const bool setter : {false, true}) {
      for (const bool smallStack : {false, true}) {
        std::string why;
        const auto figures = inChild(file, setter, smallStack, why);
        const std::string what = std::string(setter ? "setter" : "getter") + (smallStack ? ", 256 KiB stack" : "");
        if (!figures) {
          ++failures;
          std::printf("| %s | %zu | %s | %s | | |\n", file.name.c_str(), file.bytes.size(), what.c_str(), why.c_str());
          continue;
        }
        worstMs = std::max(worstMs, figures->wallMs);
        worstMiB = std::max(worstMiB, figures->addedMiB);
        if (figures->wallMs > kMostSeconds * 1000 || figures->addedMiB > kMostMiB) ++failures;
        std::printf("| %s | %zu | %s | %.1f | %.1f | %.1f |\n", file.name.c_str(), file.bytes.size(), what.c_str(),
                    figures->wallMs, figures->cpuMs, figures->addedMiB);
      }
    }
  }
  std::printf("\nWorst call: %.1f ms, %.1f MiB added (limits %.0f ms, %.0f MiB); %d call%s crashed or over a limit.\n",
              worstMs, worstMiB, kMostSeconds * 1000, kMostMiB, failures, failures == 1 ? "" : "s");
  return failures == 0 ? 0 : 1;
}
