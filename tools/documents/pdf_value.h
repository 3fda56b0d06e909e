// Values of PDF objects, read strictly (ISO 32000-1, 7.3): where the library finds keys by their
// text alone, the program wants to know what an object really says.
#ifndef TOOLS_DOCUMENTS_PDF_VALUE_H_
#define TOOLS_DOCUMENTS_PDF_VALUE_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sorrelin::tool {

struct PdfValue {
  enum class Kind { kNull, kBoolean, kNumber, kName, kString, kArray, kDictionary, kReference };

  bool Is(Kind wanted) const { return kind == wanted; }
  bool IsName(std::string_view name) const { return kind == Kind::kName && text == name; }
  // The value of a dictionary's key, or a null value; the last one counts.
  PdfValue const& operator[](std::string_view key) const;
  // Takes the key and its value out of a dictionary.
  void Remove(std::string_view key);

  Kind kind = Kind::kNull;
  double number = 0;              // also of a reference: the object's number; 1 for true
  std::string text;               // of a name, without its slash; bytes of a string
  std::vector<std::string> keys;  // of a dictionary, without their slashes
  std::vector<PdfValue> items;    // of an array; the values of a dictionary
};

// Reads values one behind the other. Nesting is limited, and so is the number of values in all.
class PdfValueReader {
 public:
  explicit PdfValueReader(std::string_view text) : text_(text) {}

  // The next value; nothing at the end and for what is no value.
  std::optional<PdfValue> Read();

  // Whether this word stands next, over white space and comments; if so it is passed.
  bool Skip(std::string_view word);

  // Bytes read so far.
  size_t position() const { return at_; }

 private:
  using Kind = PdfValue::Kind;

  int Peek(size_t ahead = 0) const;
  void SkipSpace();
  std::optional<PdfValue> ReadNumberOrReference();
  std::optional<PdfValue> ReadWord();
  PdfValue ReadName();
  std::optional<PdfValue> ReadString();
  std::optional<PdfValue> ReadHexString();
  std::optional<PdfValue> ReadArray();
  std::optional<PdfValue> ReadDictionary();
  void ReadEscape(std::string& text);
  std::optional<unsigned> ReadInteger();

  std::string_view text_;
  size_t at_ = 0;
  int depth_ = 0;
  int values_ = 0;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_PDF_VALUE_H_
