#include "stress_support.h"

#include "support/plist_integers.h"

#include <dirent.h>
#include <fcntl.h>
#include <plist/plist.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace nvx::stress {

int scale() {
  const char *text = std::getenv("MXRK7_STRESS_SCALE");
  const int value = text ? std::atoi(text) : 1;
  return value > 0 ? value : 1;
}

Process::Process(const std::vector<std::string> &argv) {
  int toChild[2];
  int fromChild[2];
  if (pipe2(toChild, O_CLOEXEC) != 0 || pipe2(fromChild, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
  std::vector<char *> args;
  for (const std::string &arg : argv) args.push_back(const_cast<char *>(arg.c_str()));
  args.push_back(nullptr);
  pid_ = fork();
  if (pid_ < 0) throw std::runtime_error("fork failed");
  if (pid_ == 0) {
    dup2(toChild[0], STDIN_FILENO);
    dup2(fromChild[1], STDOUT_FILENO);
    execvp(args[0], args.data());
    _exit(127);
  }
  close(toChild[0]);
  close(fromChild[1]);
  in_ = toChild[1];
  out_ = fromChild[0];
  signal(SIGPIPE, SIG_IGN);
}

Process::~Process() {
  closeInput();
  if (!waited_) {
    ::kill(pid_, SIGKILL);
    wait();
  }
  close(out_);
}

void Process::writeLine(const std::string &line) {
  if (in_ < 0) return;
  const std::string text = line + "\n";
  [[maybe_unused]] const ssize_t written = ::write(in_, text.data(), text.size());
}

void Process::closeInput() {
  if (in_ >= 0) close(in_);
  in_ = -1;
}

std::optional<std::string> Process::readLine(std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  for (;;) {
    if (const auto end = buffer_.find('\n'); end != std::string::npos) {
      std::string line = buffer_.substr(0, end);
      buffer_.erase(0, end + 1);
      return line;
    }
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() < 0) return std::nullopt;
    pollfd p{out_, POLLIN, 0};
    const int ready = poll(&p, 1, static_cast<int>(left.count()));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return std::nullopt;
    char chunk[4096];
    const ssize_t got = ::read(out_, chunk, sizeof chunk);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return std::nullopt;
    buffer_.append(chunk, static_cast<size_t>(got));
  }
}

std::vector<std::string> Process::drain() {
  std::vector<std::string> lines;
  while (const auto line = readLine(std::chrono::seconds(30))) lines.push_back(*line);
  return lines;
}

void Process::kill(int signal) { ::kill(pid_, signal); }

int Process::wait() {
  if (!waited_) {
    while (waitpid(pid_, &status_, 0) < 0 && errno == EINTR) {
    }
    waited_ = true;
  }
  return status_;
}

std::string fileBytes(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::optional<std::map<std::string, int64_t>> readIntegers(const std::string &path) {
  if (access(path.c_str(), F_OK) != 0) return std::nullopt;
  return nvx::test::plistIntegers(fileBytes(path));
}

std::vector<std::string> leftoverTempFiles(const std::string &folder) {
  std::vector<std::string> names;
  const std::string prefix = std::string(".") + kSettingsName + ".";
  if (DIR *dir = opendir(folder.c_str())) {
    while (const dirent *entry = readdir(dir)) {
      const std::string name = entry->d_name;
      if (name.size() == prefix.size() + 6 && name.compare(0, prefix.size(), prefix) == 0) names.push_back(name);
    }
    closedir(dir);
  }
  return names;
}

}  // namespace nvx::stress
