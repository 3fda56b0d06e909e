/* Global memory blocks: bitmaps and working blocks are handles, and a handle is not an address.
 *
 * A value that is not a live handle (0, -1, a freed handle, any pointer) fails with system error 6
 * and is never followed. Lock counts nest. All calls are safe on any thread; one block is for one
 * thread at a time. Valid C11 and C++. */
#ifndef SORRELIN_PLATFORM_MEMORY_H_
#define SORRELIN_PLATFORM_MEMORY_H_

#include <sorrelin/platform/types.h>

#if !defined(_WIN32)

/* Flags of blocks: their address may change while they are not locked, they start zeroed. */
#define GMEM_FIXED 0x0000u
#define GMEM_MOVEABLE 0x0002u
#define GMEM_ZEROINIT 0x0040u
#define GHND (GMEM_MOVEABLE | GMEM_ZEROINIT)
#define GPTR (GMEM_FIXED | GMEM_ZEROINIT)

/* New block of `bytes` bytes, zeroed if GMEM_ZEROINIT is set. The caller frees it with GlobalFree.
 * Null with system error 8 when memory is short. */
SORRELIN_PLATFORM_API HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes);

/* Resizes a block and keeps its handle; the content is kept up to the smaller size, and growth is
 * zeroed if GMEM_ZEROINIT is set. A locked or fixed block moves only if GMEM_MOVEABLE is set.
 * Null with error 6 or 8; the old block is then unchanged. */
SORRELIN_PLATFORM_API HGLOBAL GlobalReAlloc(HGLOBAL block, SIZE_T bytes, UINT flags);

/* Address of the first byte, valid until the matching GlobalUnlock. Null with error 6, or with
 * error 157 for a movable block of 0 bytes. */
SORRELIN_PLATFORM_API void* GlobalLock(HGLOBAL block);

/* Takes one lock back: non-zero while locks remain. 0 with error 0 after the last one, 0 with
 * error 158 if none was held, 0 with error 6 for a bad handle. */
SORRELIN_PLATFORM_API BOOL GlobalUnlock(HGLOBAL block);

/* The size that was asked for, in bytes; 0 with error 6 for a bad handle. */
SORRELIN_PLATFORM_API SIZE_T GlobalSize(HGLOBAL block);

/* Frees a block, locked or not, and returns null. A bad handle comes back, with error 6; 0 is
 * harmless and sets nothing. */
SORRELIN_PLATFORM_API HGLOBAL GlobalFree(HGLOBAL block);

/* Does nothing and returns 0: the heap needs no compaction. */
SORRELIN_PLATFORM_API SIZE_T GlobalCompact(DWORD min_free_bytes);

#endif /* !_WIN32 */
#endif /* SORRELIN_PLATFORM_MEMORY_H_ */
