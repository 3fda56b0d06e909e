// Turns a picture on its way to a sink.
#ifndef TOOLS_EXTRACT_PAGE_PICTURE_TURNER_H_
#define TOOLS_EXTRACT_PAGE_PICTURE_TURNER_H_

#include <vector>

#include "tools/extract/page/picture_form.h"
#include "tools/extract/page/placement.h"

namespace sorrelin::tool {

// Brings a picture of an orientation upright. Only one that is upright, or mirrored from left to
// right, is passed on row by row: others are held whole.
class PictureTurner : public PictureSink {
 public:
  PictureTurner(Orientation orientation, PictureSink& sink)
      : orientation_(orientation), sink_(sink) {}

  bool Begin(PictureForm const& form) override;
  bool Row(std::span<BYTE const> row) override;
  bool TakesProfile() const override { return sink_.TakesProfile(); }

  // After the last row. False if not all rows have come.
  bool Finish();

 private:
  bool IsMirrored() const { return orientation_ == 2; }
  bool IsHeld() const { return orientation_ > 2; }
  void CopyPixel(std::span<BYTE const> from, size_t source, std::span<BYTE> to, size_t place) const;
  void FillRow(DWORD y, std::span<BYTE> row) const;

  Orientation orientation_;
  PictureSink& sink_;
  PictureForm form_;    // as stored
  PictureForm turned_;  // as passed on
  std::vector<BYTE> held_;
  DWORD rows_ = 0;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_PAGE_PICTURE_TURNER_H_
