// Documents made from a seed.
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/memory.h>
#include <tests/comparison/written.h>
#include <tests/support/dib.h>
#include <tests/support/temp_dir.h>

#include <algorithm>
#include <memory>
#include <string_view>

namespace comparison {
namespace {

constexpr std::string_view kDateKey = "/CreationDate (D:";
constexpr size_t kDateDigits = 14;

// Dates are those of the run.
void ClearDates(Bytes& document) {
  auto at = document.begin();
  while ((at = std::search(at, document.end(), kDateKey.begin(), kDateKey.end())) !=
         document.end()) {
    at += kDateKey.size();
    auto const digits = std::min<ptrdiff_t>(kDateDigits, document.end() - at);
    std::fill(at, at + digits, BYTE{'0'});
  }
}

std::vector<RGBQUAD> RandomPalette(Dice& dice, WORD bits) {
  std::vector<RGBQUAD> palette;
  if (bits == 24 || dice.OneIn(3)) return palette;
  for (uint32_t i = 0; i < 1u << bits; ++i) {
    palette.push_back({static_cast<BYTE>(dice.Below(256)), static_cast<BYTE>(dice.Below(256)),
                       static_cast<BYTE>(dice.Below(256)), 0});
  }
  return palette;
}

test::Block RandomDib(Dice& dice) {
  WORD const depths[] = {1, 8, 24};
  test::DibSpec spec;
  spec.bits = depths[dice.Below(3)];
  spec.width = static_cast<LONG>(1 + dice.Below(90));
  spec.height = static_cast<LONG>(1 + dice.Below(60));
  spec.x_per_metre = dice.OneIn(4) ? 0 : static_cast<LONG>(dice.Below(30000));
  spec.y_per_metre = dice.OneIn(4) ? spec.x_per_metre : static_cast<LONG>(dice.Below(30000));
  spec.palette = RandomPalette(dice, spec.bits);
  DWORD const mask = spec.bits == 24 ? 0xFFFFFF : (1u << spec.bits) - 1;
  // Runs and noise, so that every coder has both.
  DWORD value = 0;
  return test::MakeDib(spec, [&](LONG, LONG) {
    if (dice.OneIn(5)) value = dice.Below(0x1000000) & mask;
    return value;
  });
}

std::string Note(char const* what, int result, CCreatePDF& session) {
  std::string note(what);
  note += '=';
  note += std::to_string(result);
  if (result == 0) note += ':' + std::to_string(session.PDF_GetLastError());
  note += ' ';
  return note;
}

// Mostly one that the depth can have.
DWORD RandomCoding(Dice& dice, HDIB dib) {
  if (dice.OneIn(8)) return dice.Below(9);
  auto const* const header = static_cast<BITMAPINFOHEADER const*>(GlobalLock(dib));
  WORD const bits = header->biBitCount;
  GlobalUnlock(dib);
  if (dice.OneIn(2)) return bits == 1 ? PDF_COMPRESSION_CCITT : PDF_COMPRESSION_JPEG;
  if (bits == 8 && dice.OneIn(3)) return PDF_COMPRESSION_RUN_LENGTH;
  return dice.OneIn(2) ? PDF_COMPRESSION_FLATE : PDF_COMPRESSION_NONE;
}

std::string AddPage(Dice& dice, CCreatePDF& session) {
  test::Block const dib = RandomDib(dice);
  DWORD const coding = RandomCoding(dice, dib);
  int const quality = static_cast<int>(dice.Below(102)) - 1;
  char const* library = coding == PDF_COMPRESSION_JPEG ? "Rennick.dll" : "Cadwick.dll";
  if (dice.OneIn(20)) library = "NoSuchCodec.dll";
  int const result = session.SaveDIBAsColorPDFPage(dib, library, coding, quality);
  return Note("page", result, session);
}

std::string SetStrings(Dice& dice, CCreatePDF& session) {
  // Latin, Cyrillic and a pair of surrogates; brackets and a backslash.
  static constexpr WCHAR kLetters[] = SORRELIN_TEXT("Ab(c)\\ d\u00E9\u0416\u4E2D");
  std::basic_string<WCHAR> text;
  for (uint32_t i = dice.Below(40); i > 0; --i) text += kLetters[dice.Below(11)];
  std::string notes;
  if (dice.OneIn(2)) notes += Note("title", session.SetTitleW(text.c_str()), session);
  if (dice.OneIn(2)) notes += Note("author", session.SetAuthorW(text.c_str()), session);
  if (dice.OneIn(3)) notes += Note("subject", session.SetSubjectA("A subject (one)"), session);
  if (dice.OneIn(3)) notes += Note("keywords", session.SetKeywordsA("some, keys"), session);
  return notes;
}

std::string FillDocument(Dice& dice, CCreatePDF& session) {
  session.SetChar13(dice.OneIn(2) ? 1 : 0);
  std::string notes = SetStrings(dice, session);
  for (uint32_t pages = dice.Below(4); pages > 0; --pages) notes += AddPage(dice, session);
  return notes;
}

Written WriteInMemory(Dice& dice, Bytes const* old) {
  auto const session = std::make_unique<CCreatePDF>();
  Written written;
  int64_t data = old == nullptr ? 0 : static_cast<int64_t>(reinterpret_cast<intptr_t>(old->data()));
  DWORD size = old == nullptr ? 0 : static_cast<DWORD>(old->size());
  int const created = session->CreatePDFInMemory(data, size);
  written.codes = Note("create", created, *session);
  if (created == 0) return written;
  written.codes += FillDocument(dice, *session);
  int const finished = session->FinishPDFInMemory(&data, &size);
  written.codes += Note("finish", finished, *session);
  if (finished == 0) return written;
  auto const* const bytes = reinterpret_cast<BYTE const*>(static_cast<intptr_t>(data));
  written.document.assign(bytes, bytes + size);
  pdf_FreePDFInMemory(reinterpret_cast<void*>(static_cast<intptr_t>(data)));
  return written;
}

Written WriteFile(Dice& dice, std::filesystem::path const& path) {
  auto const session = std::make_unique<CCreatePDF>();
  Written written;
  int const created = session->CreatePDFW(path.string<WCHAR>().c_str());
  written.codes = Note("create", created, *session);
  if (created == 0) return written;
  written.codes += FillDocument(dice, *session);
  written.codes += Note("finish", session->FinishPDF(), *session);
  session->ClosePDFFile();
  written.document = test::ReadAll(path);
  return written;
}

}  // namespace

Written WriteDocument(Dice& dice, std::filesystem::path const& folder) {
  bool const update = dice.OneIn(3);
  if (dice.OneIn(2)) {
    Written written = WriteInMemory(dice, nullptr);
    if (update && !written.document.empty()) {
      Written again = WriteInMemory(dice, &written.document);
      again.codes = written.codes + again.codes;
      written = std::move(again);
    }
    ClearDates(written.document);
    return written;
  }
  std::filesystem::path const path = folder / "a.pdf";
  std::filesystem::remove(path);
  Written written = WriteFile(dice, path);
  if (update) {
    Written again = WriteFile(dice, path);
    again.codes = written.codes + again.codes;
    written = std::move(again);
  }
  ClearDates(written.document);
  return written;
}

}  // namespace comparison
