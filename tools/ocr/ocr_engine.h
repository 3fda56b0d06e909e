// The OCR engine Averna, as far as the program uses its optional entry points.
#ifndef TOOLS_OCR_OCR_ENGINE_H_
#define TOOLS_OCR_OCR_ENGINE_H_

#include <siblings/averna/averna.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "tools/formats/picture/picture.h"

namespace sorrelin::tool {

// Tesseract's automatic page segmentation.
inline constexpr int kUsualSegmentation = 3;

// The "language" whose data detect orientation.
inline constexpr char kOrientationData[] = "osd";

inline constexpr char kTooLargeText[] = "is too large to be recognised (scale it down)";

// Whether a picture of this size, in pixels, can be recognised. False with the reason in `problem`.
bool FitsEngine(uint64_t width, uint64_t height, std::string& problem);

struct OcrEntries;

// An engine with its language data loaded.
class OcrEngine {
 public:
  // `languages` is a list such as "eng+deu". Null with the reason in `problem`.
  static std::unique_ptr<OcrEngine> Open(std::string const& languages, std::string& problem);
  ~OcrEngine();
  OcrEngine(OcrEngine const&) = delete;
  OcrEngine& operator=(OcrEngine const&) = delete;

  // Recognises a picture. False with the reason in `problem`.
  bool Recognize(Picture picture, int segmentation, int timeout_seconds, std::string& problem);

  // What was last recognised, as one of AVERNA_HOCR and so on; `number` counts pages from 0.
  // nullopt with the reason in `problem`.
  std::optional<std::string> Result(int format, int number, std::string& problem);

  // The clockwise quarter turns that bring the text of a picture upright; 0 where that is unknown.
  // The engine is one for kOrientationData.
  int QuarterTurns(Picture const& picture);

 private:
  OcrEngine(OcrEntries const& entries, AVERNA_ENGINE* engine)
      : entries_(entries), engine_(engine) {}

  OcrEntries const& entries_;
  AVERNA_ENGINE* engine_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_OCR_ENGINE_H_
