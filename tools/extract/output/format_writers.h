// The writers of single formats; each takes only what its format can hold.
#ifndef TOOLS_EXTRACT_OUTPUT_FORMAT_WRITERS_H_
#define TOOLS_EXTRACT_OUTPUT_FORMAT_WRITERS_H_

#include <memory>

#include "tools/extract/output/picture_writer.h"

namespace sorrelin::tool {

std::unique_ptr<PictureWriter> MakePngWriter(ByteOutput& output);
std::unique_ptr<PictureWriter> MakeTiffWriter(ByteOutput& output);
std::unique_ptr<PictureWriter> MakeBmpWriter(ByteOutput& output);
std::unique_ptr<PictureWriter> MakePnmWriter(ByteOutput& output);
std::unique_ptr<PictureWriter> MakeJpegWriter(ByteOutput& output);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_OUTPUT_FORMAT_WRITERS_H_
