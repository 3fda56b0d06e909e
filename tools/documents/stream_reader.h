// Data of a document's streams, decoded by libqpdf and checked on the way.
#ifndef TOOLS_DOCUMENTS_STREAM_READER_H_
#define TOOLS_DOCUMENTS_STREAM_READER_H_

#include <sorrelin/platform/types.h>

#include <functional>
#include <optional>
#include <qpdf/QPDFObjectHandle.hh>
#include <span>
#include <string>
#include <vector>

namespace sorrelin::tool {

struct StreamFilter {
  std::string name;        // without its slash, in full
  QPDFObjectHandle parms;  // a dictionary or null
};

// The filters of a stream in the order in which they are undone; nullopt if they cannot be read.
std::optional<std::vector<StreamFilter>> FiltersOf(QPDFObjectHandle dictionary);

// Whether the filter is the coding of a picture: DCT, CCITT, JPX or JBIG2.
bool IsPictureCoding(std::string const& name);

enum class StreamEnd {
  kWhole,
  kStopped,  // the taker wanted no more
  kDamaged,  // the data are cut or garbled, or fail their checksum; the taker got what came before
  kUnreadable  // a filter is unknown, or its rows take too much memory; the taker got nothing
};

// False stops the reading.
using ByteTaker = std::function<bool(std::span<BYTE const>)>;

// Passes the decrypted and decoded bytes of a stream piece by piece. The codings of pictures are
// not undone: their data come as they are coded. Flate data are read to the end of their checksum.
StreamEnd ReadStream(QPDFObjectHandle stream, ByteTaker const& take);

// The first `most` decoded bytes, of damaged data what could be read; nullopt if nothing can.
std::optional<std::string> StreamText(QPDFObjectHandle stream, size_t most);

// Bounds what libqpdf may inflate on its own when it looks up objects of this object stream; the
// bound is shared by all of them.
void BoundObjectStream(QPDFObjectHandle stream);
void SetObjectStreamBound(uint64_t bytes);

// Makes the filters above known to libqpdf; once, before a document is opened.
void RegisterStreamFilters();

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_STREAM_READER_H_
