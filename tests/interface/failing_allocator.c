/* An allocator to be preloaded, which fails the N-th call once it is told to: that one alone, or
 * that one and every later one. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <malloc.h>
#include <stddef.h>
#include <stdint.h>

extern void* __libc_malloc(size_t bytes);
extern void* __libc_calloc(size_t count, size_t bytes);
extern void* __libc_realloc(void* block, size_t bytes);
extern void* __libc_memalign(size_t alignment, size_t bytes);

static long calls;      /* since the last FailAllocations */
static long first_fail; /* 0: none fails */
static int from_there_on;
static int fired; /* since the start */

/* Counts from now on; the call `number`, from 1, fails. 0 ends it. */
__attribute__((visibility("default"))) void FailAllocations(long number, int and_later) {
  calls = 0;
  first_fail = number;
  from_there_on = and_later;
}

/* Whether a call has failed since the program's start. */
__attribute__((visibility("default"))) int HasAllocationFailed(void) { return fired; }

static int Fails(void) {
  ++calls;
  int const fails = first_fail != 0 && (from_there_on ? calls >= first_fail : calls == first_fail);
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
