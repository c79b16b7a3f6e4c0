// Notification latency across processes: from the start of a post to the callback in every
// listening process, on a private session bus of its own (the program starts itself again under
// dbus-run-session, so no other client of a desktop bus interferes or is disturbed).
//
//   notify_latency [--listeners N] [--posts K] [--warmup W] [--gap-us G]
//
// Starts N listener processes (the public API: Register, then a GLib main loop), then posts K boost
// level changes through the library's own posting code, one at a time: each post waits until every
// listener has reported its callback, then G µs pass. The first W posts are not counted. Prints one
// JSON object: per-callback latency (every listener of every post), the slowest listener per post,
// and how long the post call itself took, each as p50/p90/p99/max in µs.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <chrono>
#include <ctime>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "notify/notifications.h"

namespace {

constexpr const char *kPrivateBusMark = "NVX_BENCH_PRIVATE_BUS";
constexpr int kWaitMs = 5000;

long long monotonicNanos() {
  timespec ts{};
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<long long>(ts.tv_sec) * 1'000'000'000LL + ts.tv_nsec;
}

[[noreturn]] void fail(const std::string &what) {
  std::fprintf(stderr, "notify_latency: %s\n", what.c_str());
  std::exit(1);
}

class Listener {
 public:
  explicit Listener(const std::string &program) {
    int toChild[2];
    int fromChild[2];
    if (pipe2(toChild, O_CLOEXEC) != 0 || pipe2(fromChild, O_CLOEXEC) != 0) fail("pipe failed");
    pid_ = fork();
    if (pid_ < 0) fail("fork failed");
    if (pid_ == 0) {
      dup2(toChild[0], STDIN_FILENO);
      dup2(fromChild[1], STDOUT_FILENO);
      execl(program.c_str(), program.c_str(), static_cast<char *>(nullptr));
      _exit(127);
    }
    close(toChild[0]);
    close(fromChild[1]);
    in_ = toChild[1];
    out_ = fromChild[0];
  }
  ~Listener() {
    close(in_);  // end of input: the listener quits
    int status = 0;
    for (int i = 0; i < 500 && waitpid(pid_, &status, WNOHANG) == 0; ++i) usleep(10'000);
    if (waitpid(pid_, &status, WNOHANG) == 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, &status, 0);
    }
    close(out_);
  }
  Listener(const Listener &) = delete;
  Listener &operator=(const Listener &) = delete;

  // The next whole line, waiting at most kWaitMs.
  std::string line() {
    for (;;) {
      if (const auto end = buffer_.find('\n'); end != std::string::npos) {
        std::string text = buffer_.substr(0, end);
        buffer_.erase(0, end + 1);
        return text;
      }
      pollfd p{out_, POLLIN, 0};
      const int ready = poll(&p, 1, kWaitMs);
      if (ready < 0 && errno == EINTR) continue;
      if (ready <= 0) fail("a listener did not answer in time");
      char chunk[512];
      const ssize_t n = read(out_, chunk, sizeof chunk);
      if (n <= 0) fail("a listener ended");
      buffer_.append(chunk, static_cast<size_t>(n));
    }
  }

 private:
  pid_t pid_ = -1;
  int in_ = -1;
  int out_ = -1;
  std::string buffer_;
};

struct Summary {
  double p50, p90, p99, max;
};

Summary summarize(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  auto at = [&](double q) {
    const size_t i = std::min(values.size() - 1, static_cast<size_t>(q * static_cast<double>(values.size() - 1) + 0.5));
    return values[i];
  };
  return {at(0.50), at(0.90), at(0.99), values.back()};
}

void printSummary(const char *name, const Summary &s, bool last) {
  std::printf("  \"%s\": {\"p50_us\": %.1f, \"p90_us\": %.1f, \"p99_us\": %.1f, \"max_us\": %.1f}%s\n", name, s.p50,
              s.p90, s.p99, s.max, last ? "" : ",");
}

std::string selfPath() {
  std::string self(4096, '\0');
  const ssize_t n = readlink("/proc/self/exe", self.data(), self.size() - 1);
  if (n <= 0) fail("cannot find this program");
  self.resize(static_cast<size_t>(n));
  return self;
}

std::string listenerProgram() {
  const std::string self = selfPath();
  return self.substr(0, self.rfind('/') + 1) + "notify_bench_listener";
}

}  // namespace

int main(int argc, char **argv) {
  if (!std::getenv(kPrivateBusMark)) {
    setenv(kPrivateBusMark, "1", 1);
    std::vector<char *> args{const_cast<char *>("dbus-run-session"), const_cast<char *>("--")};
    std::string self = selfPath();  // not /proc/self/exe: that would name dbus-run-session there
    args.push_back(self.data());
    for (int i = 1; i < argc; ++i) args.push_back(argv[i]);
    args.push_back(nullptr);
    execvp("dbus-run-session", args.data());
    fail("cannot start dbus-run-session");
  }
  int listeners = 1, posts = 1000, warmup = 50, gapMicros = 1000;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    const int value = std::atoi(argv[i + 1]);
    if (option == "--listeners") listeners = value;
    else if (option == "--posts") posts = value;
    else if (option == "--warmup") warmup = value;
    else if (option == "--gap-us") gapMicros = value;
    else fail("unknown option " + option);
  }
  if (listeners < 1 || posts < 1 || warmup < 0) fail("bad arguments");

  const std::string program = listenerProgram();
  std::vector<std::unique_ptr<Listener>> processes;
  for (int i = 0; i < listeners; ++i) processes.push_back(std::make_unique<Listener>(program));
  for (auto &listener : processes) {
    if (listener->line() != "ready 100") fail("a listener could not register");
  }

  std::vector<double> perCallback, slowest, postCall;
  for (int round = 0; round < warmup + posts; ++round) {
    const long long start = monotonicNanos();
    nvx::notify::postBoostLevelChange(round);
    const long long posted = monotonicNanos();
    double worst = 0;
    for (auto &listener : processes) {
      // Every listener sees every post, in order.
      const std::string text = listener->line();
      int index = -1;
      long long at = 0;
      if (std::sscanf(text.c_str(), "%d %lld", &index, &at) != 2 || index != round)
        fail("unexpected callback \"" + text + "\" for post " + std::to_string(round));
      const double micros = static_cast<double>(at - start) / 1000.0;
      worst = std::max(worst, micros);
      if (round >= warmup) perCallback.push_back(micros);
    }
    if (round >= warmup) {
      slowest.push_back(worst);
      postCall.push_back(static_cast<double>(posted - start) / 1000.0);
    }
    if (gapMicros > 0) std::this_thread::sleep_for(std::chrono::microseconds(gapMicros));
  }
  processes.clear();

  std::printf("{\n  \"listeners\": %d,\n  \"posts\": %d,\n", listeners, posts);
  printSummary("post_to_callback", summarize(perCallback), false);
  printSummary("post_to_last_callback", summarize(slowest), false);
  printSummary("post_call", summarize(postCall), true);
  std::printf("}\n");
  return 0;
}
