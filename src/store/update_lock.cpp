// Waiting is polled rather than blocking, so a writer that hangs while holding the lock (stopped,
// or stuck on a dead network file system) costs the others at most the time-out; then their update
// is not made. Polling alone is unfair: a process that updates many keys in a row takes the lock
// again within microseconds of releasing it, while the others sleep between polls (measured with 16
// writers of 100 keys each, whole batches of 100 went through while others waited). So a writer
// that finds others waiting joins them instead of taking the lock, and pauses once first, which
// lets every earlier waiter poll at least once.
#include "store/update_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace nvx::store {

namespace {

constexpr auto kDefaultTimeout = std::chrono::milliseconds(3000);
constexpr auto kLongestTimeout = std::chrono::milliseconds(10 * 60 * 1000);
constexpr auto kFirstPause = std::chrono::microseconds(1000);
// Short, so that the lock does not lie idle long between a release and the next waiter's poll.
constexpr auto kLongestPause = std::chrono::microseconds(2000);

// Byte of the lock file that waiting writers hold a shared open-file-description lock on, so that a
// writer can tell whether others are waiting. (flock and these record locks do not interact.)
constexpr off_t kWaitingByte = 1;

bool setWaitingMark(int fd, short type) {
  struct flock mark {};
  mark.l_type = type;
  mark.l_whence = SEEK_SET;
  mark.l_start = kWaitingByte;
  mark.l_len = 1;
  return ::fcntl(fd, F_OFD_SETLK, &mark) == 0;
}

bool othersWaiting(int fd) {
  struct flock probe {};
  probe.l_type = F_WRLCK;
  probe.l_whence = SEEK_SET;
  probe.l_start = kWaitingByte;
  probe.l_len = 1;
  return ::fcntl(fd, F_OFD_GETLK, &probe) == 0 && probe.l_type != F_UNLCK;
}

bool tryLock(int fd) { return ::flock(fd, LOCK_EX | LOCK_NB) == 0; }

bool worthRetrying() { return errno == EWOULDBLOCK || errno == EINTR; }

}  // namespace

std::chrono::milliseconds lockTimeout() {
  const char *text = std::getenv("MXRK7_STORE_LOCK_TIMEOUT_MS");
  if (!text || !*text) return kDefaultTimeout;
  long long millis = 0;
  const char *end = text + std::strlen(text);
  const auto [stop, error] = std::from_chars(text, end, millis);
  if (error != std::errc() || stop != end || millis < 0) return kDefaultTimeout;
  return std::min(std::chrono::milliseconds(millis), kLongestTimeout);
}

bool takeUpdateLock(int fd, std::chrono::milliseconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  const bool deferring = othersWaiting(fd);
  if (!deferring) {
    if (tryLock(fd)) return true;
    if (!worthRetrying()) return false;
  }
  const bool marked = setWaitingMark(fd, F_RDLCK);
  auto pause = deferring ? kLongestPause : kFirstPause;
  bool held = false;
  while (!held && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(pause);
    pause = std::min(pause * 2, kLongestPause);
    held = tryLock(fd);
    if (!held && !worthRetrying()) break;
  }
  if (marked) setWaitingMark(fd, F_UNLCK);
  return held;
}

}  // namespace nvx::store
