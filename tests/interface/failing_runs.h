/* Runs a scenario once for every allocation in it, which fails: that one alone, and then again with
 * all later ones failing too. Each run is a child process of its own, which must end by itself: no
 * signal, no exception. The program runs with failing_allocator preloaded. */
#ifndef TESTS_INTERFACE_FAILING_RUNS_H_
#define TESTS_INTERFACE_FAILING_RUNS_H_

#include <sorrelin/platform/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What the run is doing, for its messages. */
extern char const* step;

/* Whether the allocator is preloaded; to be asked before anything else here. */
int FindAllocator(void);

/* From here on no allocation fails. */
void GiveMemory(void);

/* Ends the run as a broken one, with a message, unless `holds`. */
void Require(int holds, char const* what, long value);

/* Whether a lack of memory may be reported by that code: by itself, by the channel, by a sibling
 * that cannot be loaded or that fails, or where a temporary file or a document cannot be opened. */
int IsShortage(DWORD code);

/* A new bitmap of 40 x 9 pixels with 1, 8 or 24 bits. */
HDIB NewBitmap(int bits);

/* Runs the scenario for every allocation in it, each time after `prepare`, if any, in whose course
 * none fails. Prints the number of runs; whether all of them came through. */
int RunScenario(char const* name, void (*prepare)(void), void (*scenario)(void));

#ifdef __cplusplus
}
#endif

#endif /* TESTS_INTERFACE_FAILING_RUNS_H_ */
