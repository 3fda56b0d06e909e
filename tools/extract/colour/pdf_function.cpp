// Functions (ISO 32000-1, 7.10), each type a class.
#include "tools/extract/colour/pdf_function.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "tools/documents/stream_reader.h"
#include "tools/extract/colour/calculator.h"

namespace sorrelin::tool {
namespace {

constexpr int kMaxDepth = 8;
constexpr size_t kMaxSamples = size_t{1} << 22;  // bytes of a sampled function
constexpr size_t kMaxInputs = 8;

QPDFObjectHandle DictionaryOf(QPDFObjectHandle object) {
  return object.isStream() ? object.getDict() : object;
}

std::vector<double> NumbersOf(QPDFObjectHandle array) {
  std::vector<double> numbers;
  for (int i = 0; array.isArray() && i < array.getArrayNItems(); ++i) {
    QPDFObjectHandle item = array.getArrayItem(i);
    numbers.push_back(item.isNumber() ? item.getNumericValue() : 0);
  }
  return numbers;
}

// Type 0: a table of samples, between which values are interpolated along each input.
class Sampled : public PdfFunction {
 protected:
  bool ReadOwn(QPDFObjectHandle object, int) override {
    QPDFObjectHandle dictionary = DictionaryOf(object);
    QPDFObjectHandle bits = dictionary.getKey("/BitsPerSample");
    if (!object.isStream() || !bits.isInteger() || range_.empty()) return false;
    bits_ = bits.getIntValueAsInt();
    if (bits_ < 1 || bits_ > 32 || domain_.size() > kMaxInputs) return false;
    for (double const size : NumbersOf(dictionary.getKey("/Size"))) {
      if (!(size >= 1 && size < 1e6)) return false;
      sizes_.push_back(static_cast<size_t>(size));
    }
    if (sizes_.size() != domain_.size()) return false;
    ReadMaps(dictionary);
    return ReadSamples(object);
  }

  std::vector<double> Evaluate(std::vector<double> const& inputs) const override {
    std::vector<size_t> floor(inputs.size());
    std::vector<double> share(inputs.size());
    for (size_t i = 0; i < inputs.size(); ++i) {
      double const last = static_cast<double>(sizes_[i] - 1);
      double const at = Interval{0, last}.Clip(Interpolate(inputs[i], domain_[i], encode_[i]));
      floor[i] = static_cast<size_t>(at);
      share[i] = at - std::floor(at);
    }
    std::vector<double> outputs(range_.size());
    for (size_t corner = 0; corner < size_t{1} << inputs.size(); ++corner) {
      AddCorner(corner, floor, share, outputs);
    }
    return outputs;
  }

 private:
  void ReadMaps(QPDFObjectHandle dictionary) {
    encode_ = IntervalsOf(dictionary.getKey("/Encode"));
    for (size_t i = encode_.size(); i < sizes_.size(); ++i) {
      encode_.push_back({0, static_cast<double>(sizes_[i] - 1)});
    }
    decode_ = IntervalsOf(dictionary.getKey("/Decode"));
    for (size_t i = decode_.size(); i < range_.size(); ++i) decode_.push_back(range_[i]);
  }

  bool ReadSamples(QPDFObjectHandle stream) {
    size_t count = range_.size();
    for (size_t const size : sizes_) {
      if (count > kMaxSamples / size) return false;
      count *= size;
    }
    size_t const bytes = (count * static_cast<size_t>(bits_) + 7) / 8;
    auto text = StreamText(stream, bytes);
    if (!text || text->size() < bytes) return false;
    samples_ = std::move(*text);
    return true;
  }

  double SampleAt(size_t index) const {
    uint64_t value = 0;
    uint64_t const first = uint64_t{index} * static_cast<unsigned>(bits_);
    for (uint64_t bit = first; bit < first + static_cast<unsigned>(bits_); ++bit) {
      unsigned const byte = static_cast<unsigned char>(samples_[static_cast<size_t>(bit / 8)]);
      value = value << 1 | (byte >> (7 - bit % 8) & 1);
    }
    return static_cast<double>(value);
  }

  void AddCorner(size_t corner, std::vector<size_t> const& floor, std::vector<double> const& share,
                 std::vector<double>& outputs) const {
    double weight = 1;
    size_t index = 0, stride = 1;
    for (size_t i = 0; i < floor.size(); ++i) {
      bool const upper = (corner >> i & 1) != 0;
      weight *= upper ? share[i] : 1 - share[i];
      index += std::min(floor[i] + (upper ? 1 : 0), sizes_[i] - 1) * stride;
      stride *= sizes_[i];
    }
    if (weight == 0) return;
    double const top = std::pow(2.0, bits_) - 1;
    for (size_t j = 0; j < outputs.size(); ++j) {
      double const sample = SampleAt(index * outputs.size() + j);
      outputs[j] += weight * Interpolate(sample, {0, top}, decode_[j]);
    }
  }

  int bits_ = 8;
  std::vector<size_t> sizes_;
  std::vector<Interval> encode_, decode_;
  std::string samples_;
};

// Type 2: from C0 to C1 by a power of the input.
class Exponential : public PdfFunction {
 protected:
  bool ReadOwn(QPDFObjectHandle object, int) override {
    QPDFObjectHandle dictionary = DictionaryOf(object);
    c0_ = NumbersOf(dictionary.getKey("/C0"));
    c1_ = NumbersOf(dictionary.getKey("/C1"));
    if (c0_.empty()) c0_ = {0};
    if (c1_.empty()) c1_ = {1};
    QPDFObjectHandle exponent = dictionary.getKey("/N");
    if (!exponent.isNumber() || c0_.size() != c1_.size()) return false;
    exponent_ = exponent.getNumericValue();
    return true;
  }

  std::vector<double> Evaluate(std::vector<double> const& inputs) const override {
    double const power = exponent_ == 1 ? inputs[0] : std::pow(inputs[0], exponent_);
    std::vector<double> outputs;
    for (size_t i = 0; i < c0_.size(); ++i) outputs.push_back(c0_[i] + power * (c1_[i] - c0_[i]));
    return outputs;
  }

 private:
  std::vector<double> c0_, c1_;
  double exponent_ = 1;
};

// Type 3: several functions side by side.
class Stitching : public PdfFunction {
 protected:
  bool ReadOwn(QPDFObjectHandle object, int depth) override {
    QPDFObjectHandle dictionary = DictionaryOf(object);
    QPDFObjectHandle functions = dictionary.getKey("/Functions");
    for (int i = 0; functions.isArray() && i < functions.getArrayNItems(); ++i) {
      parts_.push_back(Read(functions.getArrayItem(i), depth + 1));
      if (parts_.back() == nullptr) return false;
    }
    bounds_ = NumbersOf(dictionary.getKey("/Bounds"));
    encode_ = IntervalsOf(dictionary.getKey("/Encode"));
    return !parts_.empty() && bounds_.size() + 1 == parts_.size() &&
           encode_.size() == parts_.size();
  }

  std::vector<double> Evaluate(std::vector<double> const& inputs) const override {
    double const x = inputs[0];
    size_t part = 0;
    while (part < bounds_.size() && x >= bounds_[part]) ++part;
    Interval const piece = {part == 0 ? domain_[0].low : bounds_[part - 1],
                            part == bounds_.size() ? domain_[0].high : bounds_[part]};
    double const encoded = Interpolate(x, piece, encode_[part]);
    return (*parts_[part])({&encoded, 1});
  }

 private:
  std::vector<std::unique_ptr<PdfFunction>> parts_;
  std::vector<double> bounds_;
  std::vector<Interval> encode_;
};

// Type 4: a program of a small stack language.
class Calculated : public PdfFunction {
 protected:
  bool ReadOwn(QPDFObjectHandle object, int) override {
    constexpr size_t kMaxProgram = 65536;
    auto const text = object.isStream() ? StreamText(object, kMaxProgram) : std::nullopt;
    return text && !range_.empty() && calculator_.Read(*text);
  }

  std::vector<double> Evaluate(std::vector<double> const& inputs) const override {
    std::vector<double> stack = calculator_.Run(inputs);
    size_t const wanted = range_.size();
    if (stack.size() < wanted) stack.insert(stack.begin(), wanted - stack.size(), 0.0);
    return {stack.end() - static_cast<ptrdiff_t>(wanted), stack.end()};
  }

 private:
  Calculator calculator_;
};

std::unique_ptr<PdfFunction> MakeFunction(int type) {
  switch (type) {
    case 0:
      return std::make_unique<Sampled>();
    case 2:
      return std::make_unique<Exponential>();
    case 3:
      return std::make_unique<Stitching>();
    case 4:
      return std::make_unique<Calculated>();
    default:
      return nullptr;
  }
}

}  // namespace

double PdfFunction::Interval::Clip(double value) const {
  if (!(value >= low)) return low;
  return std::min(value, std::max(low, high));
}

std::vector<PdfFunction::Interval> PdfFunction::IntervalsOf(QPDFObjectHandle array) {
  std::vector<double> const numbers = NumbersOf(array);
  std::vector<Interval> intervals;
  for (size_t i = 0; i + 1 < numbers.size(); i += 2) {
    intervals.push_back({numbers[i], numbers[i + 1]});
  }
  return intervals;
}

double PdfFunction::Interpolate(double x, Interval from, Interval to) {
  if (from.high == from.low) return to.low;
  return to.low + (x - from.low) * (to.high - to.low) / (from.high - from.low);
}

std::unique_ptr<PdfFunction> PdfFunction::Read(QPDFObjectHandle object, int depth) {
  QPDFObjectHandle dictionary = DictionaryOf(object);
  QPDFObjectHandle type = dictionary.getKeyIfDict("/FunctionType");
  if (depth > kMaxDepth || !type.isInteger()) return nullptr;
  auto function = MakeFunction(type.getIntValueAsInt());
  if (function == nullptr) return nullptr;
  function->domain_ = IntervalsOf(dictionary.getKey("/Domain"));
  function->range_ = IntervalsOf(dictionary.getKey("/Range"));
  if (function->domain_.empty() || !function->ReadOwn(object, depth)) return nullptr;
  return function;
}

std::vector<double> PdfFunction::operator()(std::span<double const> inputs) const {
  std::vector<double> clipped(domain_.size());
  for (size_t i = 0; i < clipped.size(); ++i) {
    clipped[i] = domain_[i].Clip(i < inputs.size() ? inputs[i] : 0);
  }
  std::vector<double> outputs = Evaluate(clipped);
  for (size_t i = 0; i < std::min(outputs.size(), range_.size()); ++i) {
    outputs[i] = range_[i].Clip(outputs[i]);
  }
  return outputs;
}

}  // namespace sorrelin::tool
