// The page around a picture that does not fill it, as the picture's file states it.
#ifndef TOOLS_FORMATS_PAGE_FRAME_H_
#define TOOLS_FORMATS_PAGE_FRAME_H_

namespace sorrelin::tool {

// In points. The picture has its own size, and its lower left corner is at `left` and `bottom`.
struct PageFrame {
  double width = 0;
  double height = 0;
  double left = 0;
  double bottom = 0;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_PAGE_FRAME_H_
