// What the content of a page draws, and how large.
#ifndef TOOLS_DOCUMENTS_PAGE_CONTENT_H_
#define TOOLS_DOCUMENTS_PAGE_CONTENT_H_

#include <map>
#include <string>
#include <string_view>

namespace sorrelin::tool {

// The sides of a picture on its page, in points.
struct DrawnSize {
  double width = 0;
  double height = 0;
  bool flipped = false;  // the picture's first row is at the bottom
};

// The names that stand before "Do", each with the size of its first picture. The text is tokenized,
// not interpreted: only the transformation matrix and its stack are followed.
std::map<std::string, DrawnSize> DrawnPictures(std::string_view content);

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_PAGE_CONTENT_H_
