/* Files: Windows operations on descriptors. Names are UTF-16 and become UTF-8 on disk.
 *
 * Sharing: write access takes an exclusive lock on the file, read access a shared one; a conflict
 * fails with system error 32. Offsets are 64 bits inside; results give the low 32 bits.
 * Valid C11 and C++. */
#ifndef SORRELIN_PLATFORM_FILE_H_
#define SORRELIN_PLATFORM_FILE_H_

#include <sorrelin/platform/process.h>
#include <sorrelin/platform/types.h>
#include <stdint.h>

#if !defined(_WIN32)

/* Access, sharing, dispositions, flags and results of the operations below, as Windows has them. */
#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define FILE_SHARE_READ 0x00000001u
#define FILE_SHARE_DELETE 0x00000004u
#define CREATE_NEW 1u
#define CREATE_ALWAYS 2u
#define OPEN_EXISTING 3u
#define OPEN_ALWAYS 4u
#define TRUNCATE_EXISTING 5u
#define FILE_ATTRIBUTE_DIRECTORY 0x00000010u
#define FILE_ATTRIBUTE_NORMAL 0x00000080u
#define FILE_ATTRIBUTE_TEMPORARY 0x00000100u
#define FILE_FLAG_SEQUENTIAL_SCAN 0x08000000u
#define FILE_BEGIN 0u
#define FILE_CURRENT 1u
#define FILE_END 2u
#define INVALID_SET_FILE_POINTER 0xFFFFFFFFu
#define INVALID_FILE_SIZE 0xFFFFFFFFu
#define INVALID_FILE_ATTRIBUTES 0xFFFFFFFFu
#define MOVEFILE_REPLACE_EXISTING 0x00000001u
#define MOVEFILE_WRITE_THROUGH 0x00000008u

/* Opens or makes a file. INVALID_HANDLE_VALUE with the system error on failure (2 no such file,
 * 3 no such directory or an empty name, 4 too many open files, 5 access denied or a directory, 32
 * held by another session, 80 exists already, 87 refused arguments, 123 a name with a lone
 * surrogate). `security` and `template_file` must be null. CREATE_ALWAYS locks first and truncates
 * after, so a file that another session holds keeps its content. A file that another session
 * replaces while it is being opened for writing counts as held. A new file with
 * FILE_ATTRIBUTE_TEMPORARY is for its owner only (mode 0600). Close with CloseHandle. */
SORRELIN_PLATFORM_API HANDLE CreateFileW(WCHAR const* name, DWORD access, DWORD share,
                                         void* security, DWORD disposition, DWORD flags,
                                         HANDLE template_file);

/* Reads up to `bytes` bytes. Non-zero for success, at the end of the file too, with a count of 0.
 * `count` may be null. `overlapped` must be null. */
SORRELIN_PLATFORM_API BOOL ReadFile(HANDLE file, void* buffer, DWORD bytes, DWORD* count,
                                    void* overlapped);

#endif /* !_WIN32 */

/* Reads up to `bytes` bytes at `offset` and leaves the position of the file where it is. Results as
 * those of ReadFile, error 87 for an offset of 2^63 or more. */
SORRELIN_PLATFORM_API BOOL ReadFileAt(HANDLE file, uint64_t offset, void* buffer, DWORD bytes,
                                      DWORD* count);

#if !defined(_WIN32)

/* Writes all of `bytes` bytes or fails (112 disk full, 223 file too large, 5 not open for writing);
 * `count` then holds what was written. */
SORRELIN_PLATFORM_API BOOL WriteFile(HANDLE file, void const* buffer, DWORD bytes, DWORD* count,
                                     void* overlapped);

/* Moves the position to `offset` from FILE_BEGIN, FILE_CURRENT or FILE_END and returns the low 32
 * bits of the new one, the high 32 bits in `*high` if given. INVALID_SET_FILE_POINTER on
 * failure; as that is a position too, GetLastError is then not 0 (a success with that value sets
 * it to 0). */
SORRELIN_PLATFORM_API DWORD SetFilePointer(HANDLE file, LONG offset, LONG* high, DWORD origin);

/* Ends the file at its position: what is after it is cut off, what is missing before it is filled
 * with 0. 0 with error 5 (not open for writing) or the system's. */
SORRELIN_PLATFORM_API BOOL SetEndOfFile(HANDLE file);

/* Low 32 bits of the size in bytes, the high 32 bits in `*high` if given. */
SORRELIN_PLATFORM_API DWORD GetFileSize(HANDLE file, DWORD* high);

/* Writes what the system still holds of the file to the disk. */
SORRELIN_PLATFORM_API BOOL FlushFileBuffers(HANDLE file);

/* Closes a file handle; 0 with error 6 for any other value. */
SORRELIN_PLATFORM_API BOOL CloseHandle(HANDLE file);

/* Removes a file. 0 with the system error, 2 for a name that there is not. */
SORRELIN_PLATFORM_API BOOL DeleteFileW(WCHAR const* name);

/* Gives a file a new name on the same volume, in one step that no other process can see half done.
 * A name that exists fails with error 183, or is replaced with MOVEFILE_REPLACE_EXISTING. With
 * MOVEFILE_WRITE_THROUGH the new name is on the disk when the call returns. */
SORRELIN_PLATFORM_API BOOL MoveFileExW(WCHAR const* from, WCHAR const* to, DWORD flags);

/* Gives the file `replacement` the name of the file `replaced`, in one step that no other process
 * can see half done, and with that file's owner, group and permissions. The new name is on the disk
 * when the call returns. 0 with the system error, and both files as they were, where these cannot
 * be kept (5) or a name does not exist. `backup` and the last two arguments must be null, `flags`
 * 0. */
SORRELIN_PLATFORM_API BOOL ReplaceFileW(WCHAR const* replaced, WCHAR const* replacement,
                                        WCHAR const* backup, DWORD flags, void* exclude,
                                        void* reserved);

/* Attributes of a name, or INVALID_FILE_ATTRIBUTES with the system error when there is none. */
SORRELIN_PLATFORM_API DWORD GetFileAttributesW(WCHAR const* name);

/* The directory for temporary files with its final separator (TMPDIR, or /tmp): the length without
 * the terminator; the size needed with it if `capacity` units are too few; 0 with error 123 for a
 * TMPDIR that is not UTF-8. The directory need not exist. */
SORRELIN_PLATFORM_API DWORD GetTempPathW(DWORD capacity, WCHAR* buffer);

/* Makes a new, empty file in `directory`, readable by its owner only (mode 0600), and stores its
 * path in `name`, which has room for MAX_PATH units: the first three units of `prefix`, a
 * hexadecimal number and ".tmp". With `unique` not 0 the name uses that number and no file is
 * made. The number, or 0 with the system error (206 for a path beyond MAX_PATH) and `name` left
 * alone. */
SORRELIN_PLATFORM_API UINT GetTempFileNameW(WCHAR const* directory, WCHAR const* prefix,
                                            UINT unique, WCHAR* name);

#endif /* !_WIN32 */
#endif /* SORRELIN_PLATFORM_FILE_H_ */
