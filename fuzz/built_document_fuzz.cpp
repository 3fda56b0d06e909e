// Documents built from mutated pieces, with true offsets, lengths and checksums, so that damage
// reaches what follows them. The document is read, and a page is added to it.
//
// The input is pieces that end with the byte 0x1E. A piece begins with its kind; where an object's
// number follows, it is one character, "0" for 0 and so on up the code table:
//
//   o1<<...>>           object 1
//   s4/Width 8...\nABC  stream object 4: keys up to the line feed, then the data
//   f4/Width 8...\nABC  the same, its data deflated and /Filter/FlateDecode among its keys
//   p72<<...>>\n3<<...  object stream 7 (deflated): a line for each object, its number first
//   c/Root 1 0 R        classic section with these trailer keys, and a link to the one before
//   x82/Root 1 0 R      cross-reference stream 8, with predictor 12 ("0": without one)
//   t...                text as it is
//
// A document that does not end with a section gets a classic one.
#include <tests/support/pdf_builder.h>

#include "fuzz/fuzz_session.h"

namespace {

constexpr char kPieceEnd = '\x1E';

class Recipe {
 public:
  // The document.
  std::string Follow(std::string_view text) {
    while (!text.empty()) {
      size_t const end = std::min(text.find(kPieceEnd), text.size());
      Add(text.substr(0, end));
      text.remove_prefix(std::min(end + 1, text.size()));
    }
    if (!closed_) Close("/Root 1 0 R /Info 2 0 R");
    return pdf_.Content();
  }

 private:
  static char TakeChar(std::string_view& text) {
    if (text.empty()) return '0';
    char const c = text.front();
    text.remove_prefix(1);
    return c;
  }
  static DWORD TakeNumber(std::string_view& text) {
    return static_cast<DWORD>(static_cast<uint8_t>(TakeChar(text) - '0')) % 64;
  }
  static std::string TakeLine(std::string_view& text) {
    size_t const end = std::min(text.find('\n'), text.size());
    std::string const line(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
  }

  void Add(std::string_view piece) {
    char const kind = TakeChar(piece);
    if (kind == 't') {
      pdf_.Text(piece);
    } else if (kind == 'c') {
      Close(std::string(piece));
    } else {
      AddNumbered(kind, TakeNumber(piece), piece);
    }
  }

  void AddNumbered(char kind, DWORD number, std::string_view piece) {
    if (kind == 's' || kind == 'f') {
      std::string const keys = TakeLine(piece);
      if (kind == 's') pdf_.Stream(number, keys, piece);
      if (kind == 'f') pdf_.Stream(number, keys + "/Filter/FlateDecode", test::Deflate(piece));
    } else if (kind == 'p') {
      std::vector<std::pair<DWORD, std::string>> objects;
      while (!piece.empty()) {
        std::string const line = TakeLine(piece);
        std::string_view rest(line);
        DWORD const inner = TakeNumber(rest);
        objects.emplace_back(inner, rest);
      }
      pdf_.ObjectStream(number, objects);
    } else if (kind == 'x') {
      CloseByStream(number, piece);
    } else if (kind == 'o') {
      pdf_.Object(number, piece);
    }
    closed_ = kind == 'x';
  }

  std::optional<size_t> Previous() const {
    return sections_ == 0 ? std::nullopt : std::optional(pdf_.LastSection());
  }

  void Close(std::string const& keys) {
    pdf_.Classic({.prev = Previous(), .keys = keys});
    ++sections_;
    closed_ = true;
  }

  void CloseByStream(DWORD number, std::string_view piece) {
    test::XrefStreamOptions options{.prev = Previous()};
    options.stream.predictor = TakeChar(piece) == '0' ? 0 : 12;
    options.keys = piece;
    pdf_.XrefStream(number, options);
    ++sections_;
  }

  test::PdfBuilder pdf_{"%PDF-1.5"};
  int sections_ = 0;
  bool closed_ = false;
};

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  if (fuzz::HoldsEndlessNumber({bytes, size})) return 0;
  std::string const document = Recipe().Follow(fuzz::TextOf({bytes, size}));
  fuzz::Data const data(reinterpret_cast<uint8_t const*>(document.data()), document.size());
  fuzz::Guard([&] { fuzz::ReadEverything(data); });
  fuzz::Guard([&] { fuzz::AppendPage(data); });
  return 0;
}
