#include "store/durable_file.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>

namespace nvx::store {

namespace {

constexpr size_t kSuffixLength = 6;
constexpr std::string_view kSuffixLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
constexpr int kNameAttempts = 100;

bool isSuffixLetter(char c) { return kSuffixLetters.find(c) != std::string_view::npos; }

std::string randomSuffix() {
  unsigned char random[kSuffixLength] = {};
  if (::getrandom(random, sizeof random, 0) != static_cast<ssize_t>(sizeof random)) {
    // No entropy at hand: any name will do, O_EXCL keeps it safe.
    for (size_t i = 0; i < kSuffixLength; ++i) random[i] = static_cast<unsigned char>(::rand());
  }
  std::string suffix;
  for (const unsigned char byte : random) suffix += kSuffixLetters[byte % kSuffixLetters.size()];
  return suffix;
}

}  // namespace

bool writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t done = ::write(fd, bytes.data(), bytes.size());
    if (done < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes.remove_prefix(static_cast<size_t>(done));
  }
  return true;
}

bool fsyncRetrying(int fd) {
  while (::fsync(fd) != 0) {
    if (errno != EINTR) return false;
  }
  return true;
}

Fd makeTemporaryFile(int folderFd, std::string_view name, std::string &tempName) {
  for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
    std::string candidate = "." + std::string(name) + "." + randomSuffix();
    Fd fd(::openat(folderFd, candidate.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY, 0600));
    if (fd.valid()) {
      tempName = std::move(candidate);
      return fd;
    }
    if (errno != EEXIST) return fd;
  }
  errno = EEXIST;
  return Fd();
}

bool isTemporaryOf(std::string_view entry, std::string_view name) {
  if (entry.size() != name.size() + 2 + kSuffixLength || !entry.starts_with('.')) return false;
  if (entry.substr(1, name.size()) != name || entry[name.size() + 1] != '.') return false;
  for (const char c : entry.substr(name.size() + 2))
    if (!isSuffixLetter(c)) return false;
  return true;
}

std::optional<Owner> ownerToKeep(const struct stat &existing) {
  if (::geteuid() != 0 || (existing.st_uid == 0 && existing.st_gid == ::getegid())) return std::nullopt;
  return Owner{existing.st_uid, existing.st_gid};
}

std::optional<WriteFailure> replaceDurably(const Replacement &replacement) {
  std::string tempName;
  Fd temp = makeTemporaryFile(replacement.folderFd, replacement.name, tempName);
  if (!temp.valid()) return WriteFailure{WriteStep::Create, errno};
  const auto fail = [&](WriteStep step) {
    const int error = errno;
    ::unlinkat(replacement.folderFd, tempName.c_str(), 0);
    return WriteFailure{step, error};
  };
  if (replacement.owner && ::fchown(temp.get(), replacement.owner->uid, replacement.owner->gid) != 0)
    return fail(WriteStep::Owner);
  // After the owner: a change of owner clears the set-id bits.
  if (::fchmod(temp.get(), replacement.mode & 07777) != 0) return fail(WriteStep::Create);
  if (!writeAll(temp.get(), replacement.bytes) || !fsyncRetrying(temp.get())) return fail(WriteStep::Write);
  if (!temp.close()) return fail(WriteStep::Write);
  if (::renameat(replacement.folderFd, tempName.c_str(), replacement.folderFd, replacement.name.c_str()) != 0)
    return fail(WriteStep::Rename);
  fsyncRetrying(replacement.folderFd);
  return std::nullopt;
}

}  // namespace nvx::store
