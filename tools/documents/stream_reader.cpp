// Stream filters that check Flate data. libqpdf accepts data that are cut or whose checksum is
// wrong, so plain Flate streams go through an inflater of our own, and those with a predictor
// through a witness that inflates beside libqpdf. Both are registered with libqpdf.
#include "tools/documents/stream_reader.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <memory>
#include <qpdf/Pipeline.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFStreamFilter.hh>
#include <stdexcept>

namespace sorrelin::tool {
namespace {

constexpr char kInflateFilter[] = "/SorrelinInflate";
constexpr char kWitnessFilter[] = "/SorrelinWitness";
constexpr char kBoundedFilter[] = "/SorrelinBounded";
constexpr std::array<char const*, 4> kPictureCodings = {"DCTDecode", "CCITTFaxDecode", "JPXDecode",
                                                        "JBIG2Decode"};
constexpr size_t kPieceBytes = 65536;

// Filters are made by libqpdf, without a context.
thread_local bool flate_is_damaged = false;
thread_local uint64_t object_bytes_left = 0;

enum class FlateUse {
  kInflate,  // passes on what the data inflate to, and notes damage
  kWitness,  // passes on the data, and notes damage
  kBounded   // passes on the data, and throws when they inflate to more than may be
};

// Of all predictors of a stream together. Libqpdf holds two rows of each from the start on, and no
// true picture's are near that.
constexpr uint64_t kMostRowBytes = uint64_t{32} << 20;
constexpr int kFirstOfTiff = 2;
constexpr int kFirstOfPng = 10;

uint64_t NumberOf(QPDFObjectHandle parms, char const* key, uint64_t usual) {
  constexpr uint64_t kMaxNumber = 0xFFFF'FFFF;
  QPDFObjectHandle value = parms.getKeyIfDict(key);
  if (!value.isInteger() || value.getIntValue() < 0) return usual;
  return std::min(static_cast<uint64_t>(value.getIntValue()), kMaxNumber);
}

// Bytes of a row of samples.
uint64_t RowBytes(QPDFObjectHandle parms) {
  constexpr uint64_t kMaxBits = 0xFFFF'FFFF;
  uint64_t const pixel_bits =
      std::min(NumberOf(parms, "/Colors", 1) * NumberOf(parms, "/BitsPerComponent", 8), kMaxBits);
  return (NumberOf(parms, "/Columns", 1) * pixel_bits + 7) / 8;
}

// Bytes of a row and its tag, as PNG's prediction has them; 0 without it.
uint64_t TaggedRowBytes(QPDFObjectHandle parms) {
  return NumberOf(parms, "/Predictor", 1) < kFirstOfPng ? 0 : 1 + RowBytes(parms);
}

bool AreRowsBounded(std::vector<StreamFilter> const& filters) {
  uint64_t bytes = 0;
  for (StreamFilter const& filter : filters) {
    bool const predicted = NumberOf(filter.parms, "/Predictor", 1) >= kFirstOfTiff;
    if (predicted) bytes += std::min(RowBytes(filter.parms), kMostRowBytes + 1);
  }
  return bytes <= kMostRowBytes;
}

class FlatePipeline : public Pipeline {
 public:
  FlatePipeline(FlateUse use, uint64_t tagged_row_bytes, Pipeline* after)
      : Pipeline("flate", after), use_(use), tagged_row_bytes_(tagged_row_bytes) {
    if (inflateInit(&stream_) != Z_OK) throw std::bad_alloc();
  }
  ~FlatePipeline() override { inflateEnd(&stream_); }
  FlatePipeline(FlatePipeline const&) = delete;
  FlatePipeline& operator=(FlatePipeline const&) = delete;

  void write(unsigned char const* data, size_t size) override {
    Inflate({data, size});
    if (use_ != FlateUse::kInflate) getNext()->write(data, size);
  }

  void finish() override {
    if (!ended_ && use_ != FlateUse::kBounded) flate_is_damaged = true;
    getNext()->finish();
  }

 private:
  void Inflate(std::span<BYTE const> data) {
    stream_.next_in = const_cast<Bytef*>(data.data());
    stream_.avail_in = static_cast<uInt>(data.size());
    while (!ended_ && !failed_) {
      stream_.next_out = room_.data();
      stream_.avail_out = static_cast<uInt>(room_.size());
      int const result = inflate(&stream_, Z_NO_FLUSH);
      Pass(room_.size() - stream_.avail_out);
      ended_ = result == Z_STREAM_END;
      failed_ = result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR;
      if (result == Z_BUF_ERROR || stream_.avail_out != 0) break;
    }
  }

  void Pass(size_t size) {
    if (use_ == FlateUse::kInflate && size != 0) getNext()->write(room_.data(), size);
    if (use_ == FlateUse::kWitness && tagged_row_bytes_ != 0) CheckTags(size);
    if (use_ != FlateUse::kBounded) return;
    if (size > object_bytes_left) throw std::runtime_error("objects inflate without end");
    object_bytes_left -= size;
  }

  // PNG has five kinds of prediction.
  void CheckTags(size_t size) {
    constexpr BYTE kLastTag = 4;
    for (; next_tag_ < size; next_tag_ += tagged_row_bytes_) {
      if (room_[static_cast<size_t>(next_tag_)] > kLastTag) flate_is_damaged = true;
    }
    next_tag_ -= size;
  }

  FlateUse use_;
  uint64_t tagged_row_bytes_;
  uint64_t next_tag_ = 0;  // bytes until it
  z_stream stream_{};
  bool ended_ = false;
  bool failed_ = false;
  std::array<BYTE, kPieceBytes> room_;
};

class FlateFilter : public QPDFStreamFilter {
 public:
  explicit FlateFilter(FlateUse use) : use_(use) {}
  bool setDecodeParms(QPDFObjectHandle parms) override {
    tagged_row_bytes_ = TaggedRowBytes(parms);
    return true;
  }
  Pipeline* getDecodePipeline(Pipeline* next) override {
    pipeline_ = std::make_unique<FlatePipeline>(use_, tagged_row_bytes_, next);
    return pipeline_.get();
  }

 private:
  FlateUse use_;
  uint64_t tagged_row_bytes_ = 0;
  std::unique_ptr<FlatePipeline> pipeline_;
};

// Leaves the data as they are coded.
class PictureFilter : public QPDFStreamFilter {
 public:
  bool setDecodeParms(QPDFObjectHandle) override { return true; }
  Pipeline* getDecodePipeline(Pipeline* next) override { return next; }
  bool isSpecializedCompression() override { return true; }
  bool isLossyCompression() override { return true; }
};

struct Stopped : std::exception {};

class TakerPipeline : public Pipeline {
 public:
  explicit TakerPipeline(ByteTaker const& take) : Pipeline("taker", nullptr), take_(take) {}
  void write(unsigned char const* data, size_t size) override {
    if (size == 0 || take_({data, size})) return;
    stopped_ = true;
    throw Stopped();
  }
  void finish() override {}
  bool stopped() const { return stopped_; }

 private:
  ByteTaker const& take_;
  bool stopped_ = false;
};

bool HasPredictor(QPDFObjectHandle parms) {
  QPDFObjectHandle predictor = parms.getKeyIfDict("/Predictor");
  return !predictor.isNull() && !(predictor.isInteger() && predictor.getIntValueAsInt() <= 1);
}

std::string InFull(std::string const& name) {
  constexpr std::pair<char const*, char const*> kShort[] = {
      {"AHx", "ASCIIHexDecode"}, {"A85", "ASCII85Decode"},  {"LZW", "LZWDecode"},
      {"Fl", "FlateDecode"},     {"RL", "RunLengthDecode"}, {"CCF", "CCITTFaxDecode"},
      {"DCT", "DCTDecode"}};
  for (auto const& [abbreviation, full] : kShort) {
    if (name == abbreviation) return full;
  }
  return name;
}

// The filters of a stream's dictionary, exchanged while the object lives.
class ExchangedFilters {
 public:
  ExchangedFilters(QPDFObjectHandle dictionary, std::vector<StreamFilter> const& filters)
      : dictionary_(dictionary),
        filter_(dictionary.getKey("/Filter")),
        parms_(dictionary.getKey("/DecodeParms")) {
    Replace(QPDFObjectHandle::newArray(NamesOf(filters)),
            QPDFObjectHandle::newArray(ParmsOf(filters)));
  }
  ~ExchangedFilters() { Replace(filter_, parms_); }
  ExchangedFilters(ExchangedFilters const&) = delete;
  ExchangedFilters& operator=(ExchangedFilters const&) = delete;

  static std::vector<QPDFObjectHandle> NamesOf(std::vector<StreamFilter> const& filters) {
    std::vector<QPDFObjectHandle> names;
    for (StreamFilter const& filter : filters) {
      names.push_back(QPDFObjectHandle::newName(filter.name));
    }
    return names;
  }

  static std::vector<QPDFObjectHandle> ParmsOf(std::vector<StreamFilter> const& filters) {
    std::vector<QPDFObjectHandle> parms;
    for (StreamFilter const& filter : filters) parms.push_back(filter.parms);
    return parms;
  }

 private:
  void Replace(QPDFObjectHandle filter, QPDFObjectHandle parms) {
    dictionary_.replaceKey("/Filter", filter);
    dictionary_.replaceKey("/DecodeParms", parms);
  }

  QPDFObjectHandle dictionary_;
  QPDFObjectHandle filter_;
  QPDFObjectHandle parms_;
};

// Flate by the filters above, in full names with their slashes.
std::vector<StreamFilter> Checked(std::vector<StreamFilter> const& filters, char const* guard) {
  std::vector<StreamFilter> checked;
  QPDFObjectHandle none = QPDFObjectHandle::newNull();
  for (StreamFilter const& filter : filters) {
    bool const flate = filter.name == "FlateDecode";
    if (flate && guard == nullptr && !HasPredictor(filter.parms)) {
      checked.push_back({kInflateFilter, none});
      continue;
    }
    if (flate) checked.push_back({guard == nullptr ? kWitnessFilter : guard, filter.parms});
    checked.push_back({"/" + filter.name, filter.parms});
  }
  return checked;
}

}  // namespace

std::optional<std::vector<StreamFilter>> FiltersOf(QPDFObjectHandle dictionary) {
  QPDFObjectHandle filter = dictionary.getKey("/Filter");
  QPDFObjectHandle parms = dictionary.getKey("/DecodeParms");
  if (parms.isNull()) parms = dictionary.getKey("/DP");
  std::vector<StreamFilter> filters;
  if (filter.isNull()) return filters;
  if (filter.isName()) {
    if (parms.isArray()) parms = parms.getArrayItem(0);
    filters.push_back({InFull(filter.getName().substr(1)), parms});
    return filters;
  }
  if (!filter.isArray()) return std::nullopt;
  for (int i = 0; i < filter.getArrayNItems(); ++i) {
    QPDFObjectHandle name = filter.getArrayItem(i);
    if (!name.isName()) return std::nullopt;
    QPDFObjectHandle own = QPDFObjectHandle::newNull();
    if (parms.isArray() && i < parms.getArrayNItems()) own = parms.getArrayItem(i);
    if (parms.isDictionary() && filter.getArrayNItems() == 1) own = parms;
    filters.push_back({InFull(QPDFObjectHandle(name).getName().substr(1)), own});
  }
  return filters;
}

bool IsPictureCoding(std::string const& name) {
  return std::find(kPictureCodings.begin(), kPictureCodings.end(), name) != kPictureCodings.end();
}

StreamEnd ReadStream(QPDFObjectHandle stream, ByteTaker const& take) {
  if (!stream.isStream()) return StreamEnd::kUnreadable;
  auto const filters = FiltersOf(stream.getDict());
  if (!filters || !AreRowsBounded(*filters)) return StreamEnd::kUnreadable;
  ExchangedFilters const exchanged(stream.getDict(), Checked(*filters, nullptr));
  bool known = false;
  stream.pipeStreamData(nullptr, &known, 0, qpdf_dl_all, true, true);
  if (!known && !filters->empty()) return StreamEnd::kUnreadable;
  TakerPipeline taker(take);
  flate_is_damaged = false;
  bool const whole = stream.pipeStreamData(&taker, nullptr, 0, qpdf_dl_all, true, true);
  if (taker.stopped()) return StreamEnd::kStopped;
  return whole && !flate_is_damaged ? StreamEnd::kWhole : StreamEnd::kDamaged;
}

std::optional<std::string> StreamText(QPDFObjectHandle stream, size_t most) {
  std::string text;
  StreamEnd const end = ReadStream(stream, [&](std::span<BYTE const> bytes) {
    text.append(reinterpret_cast<char const*>(bytes.data()),
                std::min(bytes.size(), most - text.size()));
    return text.size() < most;
  });
  if (end == StreamEnd::kUnreadable) return std::nullopt;
  return text;
}

void BoundObjectStream(QPDFObjectHandle stream) {
  if (!stream.isStream()) return;
  QPDFObjectHandle dictionary = stream.getDict();
  auto const filters = FiltersOf(dictionary);
  if (!filters) return;
  if (!AreRowsBounded(*filters)) throw std::runtime_error("objects are in rows without end");
  auto const bounded = Checked(*filters, kBoundedFilter);
  dictionary.replaceKey("/Filter", QPDFObjectHandle::newArray(ExchangedFilters::NamesOf(bounded)));
  dictionary.replaceKey("/DecodeParms",
                        QPDFObjectHandle::newArray(ExchangedFilters::ParmsOf(bounded)));
}

void SetObjectStreamBound(uint64_t bytes) { object_bytes_left = bytes; }

void RegisterStreamFilters() {
  constexpr std::pair<char const*, FlateUse> kUses[] = {{kInflateFilter, FlateUse::kInflate},
                                                        {kWitnessFilter, FlateUse::kWitness},
                                                        {kBoundedFilter, FlateUse::kBounded}};
  for (auto const& [name, use] : kUses) {
    QPDF::registerStreamFilter(name, [use = use] { return std::make_shared<FlateFilter>(use); });
  }
  for (char const* const name : kPictureCodings) {
    QPDF::registerStreamFilter(std::string("/") + name,
                               [] { return std::make_shared<PictureFilter>(); });
  }
}

}  // namespace sorrelin::tool
