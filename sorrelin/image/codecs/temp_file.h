// The temporary files of the siblings' file routes.
#ifndef SORRELIN_IMAGE_CODECS_TEMP_FILE_H_
#define SORRELIN_IMAGE_CODECS_TEMP_FILE_H_

#include <sorrelin/platform/types.h>

#include <span>

namespace sorrelin {

class OwnedBlock;

// Makes an empty file in the directory for temporary files and stores its path, MAX_PATH units.
// 0, or the error code: PDF_ERROR_TEMP_DIRECTORY, PDF_ERROR_TEMP_FILE.
DWORD MakeTempFile(WCHAR const* prefix, WCHAR* path);

// Reads a file of `size` bytes from the position into `block`, a new one. 0, or the error code:
// PDF_ERROR_MEMORY (which a size of 0 is too), PDF_ERROR_TEMP_FILE.
DWORD ReadIntoBlock(HANDLE file, DWORD size, OwnedBlock& block);

// Replaces the content of the file `path`. False if not all of the bytes could be written.
bool WriteTempFile(WCHAR const* path, std::span<BYTE const> bytes);

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_CODECS_TEMP_FILE_H_
