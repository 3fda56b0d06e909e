// Image objects of pages whose form goes beyond the library's own: any depth, inks, prediction,
// colour profiles.
#ifndef SORRELIN_WRITER_CODED_IMAGE_H_
#define SORRELIN_WRITER_CODED_IMAGE_H_

#include <sorrelin/writer/encoded_page.h>

namespace sorrelin {

class ObjectWriter;

// Writes the image of a page that has a form, its length, and before it the page's profile if no
// page before has written it. The stream is the page's data to the byte. The image's number, or 0
// after a failure.
DWORD WriteCodedImage(ObjectWriter& out, EncodedPage const& page);

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_CODED_IMAGE_H_
