// Fax data in every form that the program decodes.
//
// The input is a byte of flags, the size in pixels (2 words), then the data.
#include <tools/extract/codings/fax_decoder.h>

#include "fuzz/fuzz_input.h"

namespace {

// Looks that rows are as long as is announced.
class Sink final : public sorrelin::tool::SampleSink {
 public:
  explicit Sink(size_t row_bytes) : row_bytes_(row_bytes) {}
  bool Row(std::span<BYTE const> row) override {
    fuzz::Require(row.size() == row_bytes_, "a row of another size");
    ++rows;
    return true;
  }
  unsigned rows = 0;

 private:
  size_t row_bytes_;
};

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  fuzz::Cursor input({bytes, size});
  unsigned const flags = input.Byte();
  sorrelin::tool::PictureShape shape;
  std::string problem;
  shape.width = shape.fax.columns = 1 + input.Word() % 5000;
  shape.height = 1 + input.Word() % 500;
  shape.bits = 1;
  shape.space = sorrelin::tool::ColourSpace::Read(QPDFObjectHandle::newName("/DeviceGray"),
                                                  QPDFObjectHandle::newNull(), problem);
  shape.fax.k = static_cast<int>(flags % 3) - 1;
  shape.fax.byte_aligned = (flags & 4) != 0;
  shape.fax.black_is_1 = (flags & 8) != 0;
  fuzz::Data const rest = input.Rest();
  fuzz::Copy data(rest);
  Sink sink(shape.RowBytes());
  bool const decoded = sorrelin::tool::DecodeFax(shape, {data.data(), rest.size()}, sink, problem);
  fuzz::Require(!decoded || sink.rows == shape.height, "rows are missing");
  return 0;
}
