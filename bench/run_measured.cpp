// Runs a program and writes what it took to standard output: seconds by the clock, seconds of
// processors, and its peak of memory in KiB. Arguments: the program and its own.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace {

double Seconds(timeval time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  auto const start = std::chrono::steady_clock::now();
  pid_t const child = fork();
  if (child == 0) {
    execvp(argv[1], argv + 1);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (child == -1 || wait4(child, &status, 0, &usage) != child) return 1;
  std::chrono::duration<double> const took = std::chrono::steady_clock::now() - start;
  std::printf("%.3f %.3f %ld\n", took.count(), Seconds(usage.ru_utime) + Seconds(usage.ru_stime),
              usage.ru_maxrss);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
