// Everything that a session does with a document that it reads or updates.
#include "fuzz/fuzz_session.h"

#include <sorrelin/channel/file_channel.h>
#include <sorrelin/image/codecs/sibling_library.h>
#include <sorrelin/image/codecs/sibling_names.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/wide_string.h>
#include <tests/support/dib.h>
#include <tests/support/session_probe.h>

#include <cstring>
#include <new>
#include <utility>
#include <vector>

namespace fuzz {
namespace {

// What is asked of one document: a page list and a table can be far larger than the document.
constexpr DWORD kMostPages = 12;
constexpr DWORD kMostObjects = 64;

int64_t AddressOf(Data data) { return reinterpret_cast<int64_t>(data.data()); }
DWORD SizeOf(Data data) { return static_cast<DWORD>(data.size()); }

// Siblings are loaded for each image. Here they stay loaded, since libFuzzer holds on to the
// counters of every module that it has seen.
void KeepSiblingsLoaded() {
  static bool const loaded = sorrelin::LoadSibling(sorrelin::kCcittLibrary) != nullptr &&
                             sorrelin::LoadSibling(sorrelin::kJpegLibrary) != nullptr;
  Require(loaded, "the siblings are missing");
}

void LoadPages(CCreatePDF& session) {
  DWORD const pages = std::min(session.GetNumberOfPages(), kMostPages);
  // One past the end too.
  for (DWORD page = 0; page <= pages; ++page) {
    session.LoadPageObject(session.GetPageObjectNumber(page));
    DWORD compression = 0;
    DWORD kind = 0;
    void* const bitmap = session.LoadImageAndInfoFromPDF(page, &compression, &kind);
    RequireWholeBitmap(bitmap);
    sorrelin::OwnedBlock const owner(bitmap);
  }
}

void LoadObjects(CCreatePDF& session) {
  DWORD const objects = std::min(SessionProbe::ObjectsInFile(session), kMostObjects);
  for (DWORD number = 0; number <= objects; ++number) {
    session.GetObjectSize(number);
    sorrelin::OwnedBlock const block(session.LoadObject(number));
    sorrelin::LockedBlock const lock(block.get());
    if (!lock) continue;
    auto const size = static_cast<DWORD>(lock.bytes().size());
    session.GetObjectType(lock.bytes().data(), size);
    session.GetProcSetData(lock.bytes().data(), size);
    sorrelin::OwnedBlock const palette(session.LoadPalette(8, 255, number));
  }
}

using Getter = int (CCreatePDF::*)(WCHAR*, DWORD*);
using NarrowGetter = int (CCreatePDF::*)(char*, DWORD*);

template <typename Unit>
void GetText(CCreatePDF& session, int (CCreatePDF::*getter)(Unit*, DWORD*)) {
  Unit buffer[8];
  DWORD size = 8;
  if ((session.*getter)(buffer, &size) == 0 && size > 8 && size < 65536) {
    std::vector<Unit> longer(size);
    (session.*getter)(longer.data(), &size);
  }
}

void GetTexts(CCreatePDF& session) {
  for (Getter const getter : {&CCreatePDF::GetTitleW, &CCreatePDF::GetAuthorW,
                              &CCreatePDF::GetSubjectW, &CCreatePDF::GetKeywordsW}) {
    GetText(session, getter);
  }
  for (NarrowGetter const getter : {&CCreatePDF::GetTitleA, &CCreatePDF::GetAuthorA,
                                    &CCreatePDF::GetSubjectA, &CCreatePDF::GetKeywordsA}) {
    GetText(session, getter);
  }
}

}  // namespace

Session::Session() : session_(new (storage_.get()) CCreatePDF) { KeepSiblingsLoaded(); }

Session::~Session() {
  RememberChannel();
  session_->ClosePDFFile();
  session_->~CCreatePDF();
  delete channel_;
  Spare() = std::move(storage_);
}

std::unique_ptr<Session::Storage>& Session::Spare() {
  static std::unique_ptr<Storage> spare;
  return spare;
}

std::unique_ptr<Session::Storage> Session::TakeStorage() {
  return Spare() != nullptr ? std::move(Spare()) : std::make_unique<Storage>();
}

void Session::RememberChannel() {
  sorrelin::FileChannel* const channel = SessionProbe::Channel(*session_);
  if (sorrelin::IsUsableChannel(channel)) channel_ = channel;
}

bool Session::Open(Data document) {
  std::string_view const header = TextOf(document).substr(0, 8);
  if (header.size() < 8 || !header.starts_with("%PDF-1.") || header[7] < '0' || header[7] > '8') {
    return false;
  }
  return session_->OpenPDFFileInMemory(AddressOf(document), SizeOf(document)) != 0;
}

bool Session::Create(std::filesystem::path const& name) {
  int const result = session_->CreatePDFW(sorrelin::ToWide(name.c_str()).c_str());
  RememberChannel();
  return result != 0;
}

bool Session::CreateInMemory(Data document) {
  int const result = session_->CreatePDFInMemory(AddressOf(document), SizeOf(document));
  RememberChannel();
  return result != 0;
}

void RequireWholeBitmap(void* bitmap) {
  if (bitmap == nullptr || bitmap == INVALID_HANDLE_VALUE) return;
  BITMAPINFOHEADER header{};
  size_t const size = GlobalSize(bitmap);
  Require(size >= sizeof header, "a bitmap without a header");
  std::memcpy(&header, GlobalLock(bitmap), sizeof header);
  GlobalUnlock(bitmap);
  int const bits = header.biBitCount;
  Require(bits == 1 || bits == 8 || bits == 24, "depth of the bitmap");
  Require(header.biWidth >= 0 && header.biHeight >= 0, "size of the bitmap");
  size_t const table = bits == 1 ? 8 : bits == 8 ? 1024 : 0;
  size_t const rows = static_cast<size_t>(header.biHeight);
  Require(size == sizeof header + table + rows * test::StrideOf(header.biWidth, bits),
          "size of the bitmap's block");
}

void ReadEverything(Data document) {
  Session session;
  if (!session.Open(document)) return;
  LoadPages(*session);
  LoadObjects(*session);
  GetTexts(*session);
}

bool AddPage(CCreatePDF& session) {
  test::Block const page =
      test::MakeDib({.width = 2, .height = 2, .bits = 8, .x_per_metre = 2835},
                    [](LONG x, LONG y) { return static_cast<DWORD>(100 + x + y); });
  return session.SaveDIBAsColorPDFPageW(page, SORRELIN_TEXT(""), PDF_COMPRESSION_NONE, 0) != 0;
}

std::string AppendPage(Data document) {
  Session session;
  int64_t data = 0;
  DWORD size = 0;
  if (!session.CreateInMemory(document) || !AddPage(*session) ||
      session->FinishPDFInMemory(&data, &size) == 0) {
    return {};
  }
  std::string const updated(reinterpret_cast<char const*>(data), size);
  pdf_FreePDFInMemory(reinterpret_cast<void*>(data));
  return updated;
}

}  // namespace fuzz
