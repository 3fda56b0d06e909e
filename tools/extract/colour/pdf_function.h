// Functions of ISO 32000-1, 7.10: sampled, exponential, stitching and calculator functions.
#ifndef TOOLS_EXTRACT_COLOUR_PDF_FUNCTION_H_
#define TOOLS_EXTRACT_COLOUR_PDF_FUNCTION_H_

#include <memory>
#include <qpdf/QPDFObjectHandle.hh>
#include <span>
#include <vector>

namespace sorrelin::tool {

class PdfFunction {
 public:
  virtual ~PdfFunction() = default;

  // Null if the object is no function that can be read.
  static std::unique_ptr<PdfFunction> Read(QPDFObjectHandle object, int depth = 0);

  // The results for these inputs, clipped to the domain and range.
  std::vector<double> operator()(std::span<double const> inputs) const;

 protected:
  struct Interval {
    double low = 0, high = 0;
    double Clip(double value) const;
  };
  static std::vector<Interval> IntervalsOf(QPDFObjectHandle array);
  // `x` of the interval `from` in the same place of `to`.
  static double Interpolate(double x, Interval from, Interval to);

  virtual bool ReadOwn(QPDFObjectHandle object, int depth) = 0;
  virtual std::vector<double> Evaluate(std::vector<double> const& inputs) const = 0;

  std::vector<Interval> domain_;
  std::vector<Interval> range_;  // empty: none is stated
};

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_COLOUR_PDF_FUNCTION_H_
