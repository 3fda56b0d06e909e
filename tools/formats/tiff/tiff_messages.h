// libtiff's messages about damaged data, one collection for each piece of work of a thread.
#ifndef TOOLS_FORMATS_TIFF_TIFF_MESSAGES_H_
#define TOOLS_FORMATS_TIFF_TIFF_MESSAGES_H_

#include <string>

namespace sorrelin::tool {

// Collects what libtiff says on this thread while it exists, whoever has opened the file: the image
// library opens files of its own. libtiff prints nothing from the first collection on. Collections
// of one thread nest, and the innermost one gets the messages.
class TiffMessages {
 public:
  TiffMessages();
  ~TiffMessages();
  TiffMessages(TiffMessages const&) = delete;
  TiffMessages& operator=(TiffMessages const&) = delete;

  // The first message about lost data: errors and warnings, except those about tags. Empty
  // if there was none.
  std::string const& damage() const { return damage_; }

  void Add(std::string const& message);

 private:
  std::string damage_;
  TiffMessages* outer_;
};

// Has libtiff print nothing.
void KeepTiffQuiet();

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_TIFF_TIFF_MESSAGES_H_
