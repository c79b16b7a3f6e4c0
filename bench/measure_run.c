/* Runs a command and prints its wall time and peak resident memory:
 *   measure_run COMMAND [ARGS...]   ->   "<wall ms> <peak KiB> <exit status>"
 * Written in C and kept tiny because the kernel's peak for the child also counts the memory it had
 * between fork and exec, a copy of this launcher: a large launcher (Python, say) would hide the
 * command's own figure. Standard output and error of the command go to /dev/null. */
#define _GNU_SOURCE
#include <fcntl.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

int main(int argc, char **argv) {
  if (argc < 2) {
    fprintf(stderr, "usage: measure_run COMMAND [ARGS...]\n");
    return 2;
  }
  struct timespec start, end;
  clock_gettime(CLOCK_MONOTONIC, &start);
  const pid_t pid = fork();
  if (pid < 0) return 1;
  if (pid == 0) {
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    dup2(null, STDERR_FILENO);
    execvp(argv[1], argv + 1);
    _exit(127);
  }
  int status = 0;
  struct rusage usage;
  if (wait4(pid, &status, 0, &usage) != pid) return 1;
  clock_gettime(CLOCK_MONOTONIC, &end);
  const double ms = (double)(end.tv_sec - start.tv_sec) * 1e3 + (double)(end.tv_nsec - start.tv_nsec) / 1e6;
  printf("%.3f %ld %d\n", ms, usage.ru_maxrss, WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
  return 0;
}
