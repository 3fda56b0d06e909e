// What a test sets and sees of the mock siblings. Their "coded" data are the rows themselves, so
// that a test can tell which bytes went which way.
#ifndef TESTS_IMAGE_MOCKS_MOCK_SIBLINGS_H_
#define TESTS_IMAGE_MOCKS_MOCK_SIBLINGS_H_

#include <sorrelin/platform/types.h>
#include <stdint.h>

struct MockCadwick {
  // Set by the test.
  int32_t open_fails;    // mOpen gives -1
  int32_t error;         // TiffError after data that are too short; else CCITT_ERROR_DATA_ENDED
  int32_t fails_at_all;  // every decode fails
  int32_t null_rows;     // hands null rows to the callback
  int32_t first_row;     // index of the first row handed out

  // Seen by the test.
  int32_t opened;
  int32_t closed;
  int32_t rewound;
  int32_t decodes;
  int32_t last_height;
  int32_t last_compression;
  int32_t last_callback;  // the row callback's last result
  int32_t last_rows;      // rows delivered
  DWORD opened_bytes;
  void* last_user;
};

struct MockRennick {
  int32_t fails;  // decoding gives null
  int32_t loads;
  DWORD bytes;  // of the last file
  BYTE first_byte;
  WCHAR path[MAX_PATH];  // of the last file on disk
};

#endif  // TESTS_IMAGE_MOCKS_MOCK_SIBLINGS_H_
