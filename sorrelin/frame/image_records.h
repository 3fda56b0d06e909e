// The records that describe an image to the session's methods.
#ifndef SORRELIN_FRAME_IMAGE_RECORDS_H_
#define SORRELIN_FRAME_IMAGE_RECORDS_H_

#include <sorrelin/platform/image_records.h>

#endif  // SORRELIN_FRAME_IMAGE_RECORDS_H_
