// The objects of one page, in their fixed order: ProcSet, image, its length, for 8 bits the palette
// and its length, page, contents, their length.
#ifndef SORRELIN_WRITER_PAGE_OBJECTS_H_
#define SORRELIN_WRITER_PAGE_OBJECTS_H_

#include <sorrelin/platform/status.h>
#include <sorrelin/platform/types.h>
#include <sorrelin/writer/encoded_page.h>

namespace sorrelin {

struct Draft;

// Whole points for a picture of pixels at dots per inch.
POINT PageSize(LONG width, LONG height, DWORD dpi_x, DWORD dpi_y);

// Goes to where the page begins: the first of an update after the old document's last byte, after
// an empty line. Error 1 for an end that 32 bits cannot count.
Status BeginPage(Draft const& draft);

// Adds the page. Error 40, before its first byte, where its objects and those of the document's end
// would no longer fit in the table.
Status WritePageObjects(Draft const& draft, EncodedPage const& page);

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_PAGE_OBJECTS_H_
