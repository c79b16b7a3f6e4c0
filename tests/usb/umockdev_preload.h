// umockdev works by intercepting file and ioctl calls, so its preload library has to be in place
// before a program starts. A program that emulates USB devices calls this first in main().
#pragma once

namespace nvx::test {

// Returns true when umockdev's preload library is loaded (and keeps TMPDIR short enough for the
// testbed's sockets). Otherwise starts this program again with the library preloaded, which does
// not return; returns false, with a message on standard error, when that cannot be done.
bool runUnderUmockdev(char **argv);

}  // namespace nvx::test
