// What a test sets and sees of the mock siblings. Their "coded" data are the rows themselves, so
// that a test can see which bytes went which way.
#ifndef TESTS_IMAGE_MOCKS_MOCK_SIBLINGS_H_
#define TESTS_IMAGE_MOCKS_MOCK_SIBLINGS_H_

#include <sorrelin/platform/types.h>
#include <stdint.h>

// Without a list of its own, a library for Windows exports all that is not hidden.
#define ENTRY extern "C" __attribute__((visibility("default")))

struct MockCadwick {
  // Set by the test.
  int32_t open_fails;      // mOpen gives -1
  int32_t error;           // TiffError after data that are too short; else CCITT_ERROR_DATA_ENDED
  int32_t fails_at_all;    // every decode fails
  int32_t null_rows;       // hands null rows to the callback
  int32_t no_bitmap;       // hands a null user pointer to the decoder's callback
  int32_t own_thread;      // calls the decoder's callback on a thread of its own
  int32_t first_row;       // index of the first row that is given
  int32_t open_null;       // mOpen gives 0
  int32_t encode_fails;    // every encode fails, after its first row
  int32_t writes_nothing;  // every encode succeeds without data

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
  DWORD opened_block_bytes;  // of the block itself
  void* last_user;
  int32_t encodes;
  int32_t width;
  int32_t height;
  int32_t past_end;  // the row callback's result for the row after the last
};

struct MockRennick {
  int32_t fails;         // decoding gives null
  int32_t status;        // what encoding reports
  int32_t encode_null;   // encoding gives no block
  int32_t encode_empty;  // encoding gives a block of no bytes
  int32_t save_fails;    // encoding to a file fails
  BYTE record[56];       // the last parameter record
  HDIB bitmap;           // the last bitmap to encode
  int32_t loads;
  DWORD bytes;  // of the last file
  BYTE first_byte;
  WCHAR path[MAX_PATH];  // of the last file on disk
};

#endif  // TESTS_IMAGE_MOCKS_MOCK_SIBLINGS_H_
