/* Preloaded into the program: from the write after the first ENDED_CHILD_AFTER on, its children end
   as if they were done (ENDED_CHILD is "exit"), are killed ("kill"), or fail to write ("fail"). */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

static int is_child = 0;
static int writes = 0;

__attribute__((visibility("default"))) pid_t fork(void) {
  pid_t (*next)(void) = NULL;
  *(void**)&next = dlsym(RTLD_NEXT, "fork");
  pid_t const pid = next();
  if (pid == 0) is_child = 1;
  return pid;
}

__attribute__((visibility("default"))) ssize_t write(int descriptor, void const* data,
                                                     size_t size) {
  if (is_child && writes++ >= atoi(getenv("ENDED_CHILD_AFTER"))) {
    switch (getenv("ENDED_CHILD")[0]) {
      case 'e':
        _exit(EXIT_SUCCESS);
      case 'k':
        kill(getpid(), SIGKILL);
        break;
      default:
        errno = EIO;
        return -1;
    }
  }
  return syscall(SYS_write, descriptor, data, size);
}
