/* An allocator to be preloaded, which fails the N-th call: that one alone, or that one and every
 * later one. FailAllocations sets N. For a whole program the variable FAIL_ALLOCATION sets it, to N
 * or N+ for all later ones too, counted from main on. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <malloc.h>
#include <stdatomic.h>
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>

extern void* __libc_malloc(size_t bytes);
extern void* __libc_calloc(size_t count, size_t bytes);
extern void* __libc_realloc(void* block, size_t bytes);
extern void* __libc_memalign(size_t alignment, size_t bytes);

static atomic_long calls; /* since the last FailAllocations */
static long first_fail;   /* 0: none fails */
static int from_there_on;
static int fired; /* since the start */

/* Counts from now on; the call `number`, from 1, fails. 0 ends it. */
__attribute__((visibility("default"))) void FailAllocations(long number, int and_later) {
  calls = 0;
  from_there_on = and_later;
  first_fail = number;
}

/* Whether a call has failed since the program's start. */
__attribute__((visibility("default"))) int HasAllocationFailed(void) { return fired; }

static int (*program)(int, char**, char**);

static int RunProgram(int argc, char** argv, char** environment) {
  char const* const wish = getenv("FAIL_ALLOCATION");
  if (wish != NULL) {
    char* end = NULL;
    long const number = strtol(wish, &end, 10);
    FailAllocations(number, *end == '+');
  }
  return program(argc, argv, environment);
}

/* The start of every program, which calls its main. */
__attribute__((visibility("default"))) int __libc_start_main(
    int (*main)(int, char**, char**), int argc, char** argv, int (*init)(int, char**, char**),
    void (*finish)(void), void (*loader_finish)(void), void* stack_end) {
  int (*start)(int (*)(int, char**, char**), int, char**, int (*)(int, char**, char**),
               void (*)(void), void (*)(void), void*) = NULL;
  *(void**)&start = dlsym(RTLD_NEXT, "__libc_start_main");
  program = main;
  return start(RunProgram, argc, argv, init, finish, loader_finish, stack_end);
}

static int Fails(void) {
  long const number = atomic_fetch_add(&calls, 1) + 1;
  int const fails =
      first_fail != 0 && (from_there_on ? number >= first_fail : number == first_fail);
  if (fails) {
    errno = ENOMEM;
    fired = 1;
  }
  return fails;
}

__attribute__((visibility("default"))) void* malloc(size_t bytes) {
  return Fails() ? NULL : __libc_malloc(bytes);
}

__attribute__((visibility("default"))) void* calloc(size_t count, size_t bytes) {
  return Fails() ? NULL : __libc_calloc(count, bytes);
}

__attribute__((visibility("default"))) void* realloc(void* block, size_t bytes) {
  return Fails() ? NULL : __libc_realloc(block, bytes);
}

__attribute__((visibility("default"))) void* memalign(size_t alignment, size_t bytes) {
  return Fails() ? NULL : __libc_memalign(alignment, bytes);
}

__attribute__((visibility("default"))) void* aligned_alloc(size_t alignment, size_t bytes) {
  return Fails() ? NULL : __libc_memalign(alignment, bytes);
}

__attribute__((visibility("default"))) int posix_memalign(void** block, size_t alignment,
                                                          size_t bytes) {
  if (Fails()) return ENOMEM;
  *block = __libc_memalign(alignment, bytes);
  return *block != NULL ? 0 : ENOMEM;
}
