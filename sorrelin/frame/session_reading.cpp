// Doors of the session: documents opened, their objects and their images.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/document/opening.h>
#include <sorrelin/document/page_image.h>
#include <sorrelin/document/page_tree.h>
#include <sorrelin/document/palette.h>
#include <sorrelin/document/proc_set.h>
#include <sorrelin/document/reader_state.h>
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/wide_string.h>
#include <sorrelin/syntax/value_scan.h>

#include <cstring>

using sorrelin::Door;
using sorrelin::FileChannel;
using sorrelin::ObjectLoader;
using sorrelin::PageImage;
using sorrelin::SessionState;
using sorrelin::Status;

namespace {

constexpr auto kFixed = sorrelin::DocumentFile::Growth::kFixed;

// Takes the channel, tests the header and reads the index. After a failure after the header the
// document stays open, for the caller to close.
bool ReadDocument(SessionState& state, FileChannel* channel) {
  state.TakeChannel(channel, kFixed);
  if (channel == sorrelin::InvalidChannel()) {
    state.m_Output.channel = nullptr;
    return state.Report(Status::Failed(PDF_ERROR_OPEN));
  }
  Status const header = sorrelin::ReadHeader(channel);
  if (!header.ok()) {
    sorrelin::ChannelClose(channel);
    state.TakeChannel(nullptr, kFixed);
    return state.Report(header);
  }
  sorrelin::Opening opening(*state.m_pReader, state.m_Objects, state.m_Pages, state.m_Facts);
  return state.Report(opening.Run()) && state.m_Objects.rows_in_document() != 0;
}

bool OpenFile(SessionState& state, WCHAR const* name) {
  state.CloseOpenDocument();
  return ReadDocument(state, sorrelin::ChannelOpenFile(name, GENERIC_READ, FILE_SHARE_READ, nullptr,
                                                       OPEN_EXISTING, 0, nullptr));
}

// What the image says of itself counts for later decodes also where its data are not found.
void TakeDescription(SessionState& state, PageImage const& image) {
  state.m_bBlackIs1 = image.black_is_1 ? 1 : 0;
  state.m_bDecodeNormal = image.decode_normal ? 1 : 0;
  if (image.kind != 0) state.m_nProcSetFlags = image.kind;
}

// Kept: the page decides, also over the resolution that a JPEG file brought with it.
void SetResolution(void* bitmap, PageImage const& image) {
  sorrelin::LockedBlock const block(bitmap);
  BITMAPINFOHEADER header;
  if (!image.resolution || block.bytes().size() < sizeof header) return;
  std::memcpy(&header, block.bytes().data(), sizeof header);
  header.biXPelsPerMeter = image.resolution->x;
  header.biYPelsPerMeter = image.resolution->y;
  std::memcpy(block.bytes().data(), &header, sizeof header);
}

void* LoadImageAndInfo(SessionState& state, DWORD page, DWORD* compression, DWORD* kind) {
  PageImage image;
  ObjectLoader objects = state.Objects();
  Status const status = sorrelin::ReadPageImage(objects, state.m_Pages, page, image);
  TakeDescription(state, image);
  if (!state.Report(status)) return nullptr;
  if (!sorrelin::HasDecoder(image.compression)) {
    static_cast<void>(state.Report(Status::Failed(PDF_ERROR_UNSUPPORTED_COMPRESSION)));
    return nullptr;
  }
  sorrelin::ImageShape const shape{image.width, image.height, image.kind, image.palette.get()};
  void* const bitmap = state.TakeBlock(DecodeImage(image.compression, image.data.get(), shape,
                                                   image.flipped, state.ImagePolarity()));
  SetResolution(bitmap, image);
  if (compression != nullptr) *compression = image.compression;
  if (kind != nullptr) *kind = state.m_nProcSetFlags;
  return bitmap;
}

}  // namespace

int CCreatePDF::OpenPDFFile(char const* szFileName) {
  return Door(m_pState, [&](SessionState& state) {
    return OpenFile(state, sorrelin::ToWide(szFileName).c_str()) ? 1 : 0;
  });
}

int CCreatePDF::OpenPDFFileW(WCHAR const* szFileName) {
  return Door(m_pState, [&](SessionState& state) {
    if (szFileName == nullptr)
      return state.Report(Status::Failed(PDF_ERROR_INVALID_PARAMETER)) ? 1 : 0;
    return OpenFile(state, szFileName) ? 1 : 0;
  });
}

int CCreatePDF::OpenPDFFileInMemory(int64_t pData, DWORD nSize) {
  return Door(m_pState, [&](SessionState& state) {
    if (pData == 0 || nSize == 0)
      return state.Report(Status::Failed(PDF_ERROR_INVALID_PARAMETER)) ? 1 : 0;
    state.CloseOpenDocument();
    auto const data = reinterpret_cast<void const*>(pData);
    return ReadDocument(state, sorrelin::ChannelAttachMemory(data, nSize, true)) ? 1 : 0;
  });
}

void* CCreatePDF::LoadObject(DWORD nObject) {
  return Door(m_pState, [&](SessionState& state) {
    void* const block = state.Objects().Load(nObject);
    state.Report(Status::Ok());
    return block;
  });
}

DWORD CCreatePDF::GetObjectSize(DWORD nObject) {
  return Door(m_pState, [&](SessionState& state) { return state.Objects().SizeOf(nObject); });
}

DWORD CCreatePDF::GetObjectType(BYTE* pData, DWORD nSize) {
  return Door(m_pState, [&](SessionState& state) {
    bool const given = pData != nullptr && nSize != 0;
    if (!given) state.Fail(PDF_ERROR_INVALID_HANDLE);
    return given ? sorrelin::ObjectType({pData, nSize}) : DWORD{1};
  });
}

int CCreatePDF::GetValueFromReference(DWORD nObject, DWORD* pValue) {
  return Door(m_pState, [&](SessionState& state) {
    ObjectLoader objects = state.Objects();
    if (pValue == nullptr && objects.Open(nObject)) state.Fail(PDF_ERROR_INVALID_HANDLE);
    bool const read = pValue != nullptr && objects.ReadNumberOf(nObject, pValue);
    return state.Report(read ? Status::Ok() : Status::Failed()) ? 1 : 0;
  });
}

int CCreatePDF::LoadPageObject(DWORD nObject) {
  return Door(m_pState, [&](SessionState& state) {
    ObjectLoader objects = state.Objects();
    return state.Report(sorrelin::TestPageObject(objects, nObject)) ? 1 : 0;
  });
}

void* CCreatePDF::LoadImageFromPDF(DWORD nPage) {
  return LoadImageAndInfoFromPDF(nPage, nullptr, nullptr);
}

void* CCreatePDF::LoadImageAndInfoFromPDF(DWORD nPage, DWORD* pnCompression, DWORD* pnKind) {
  return Door(m_pState, [&](SessionState& state) {
    return LoadImageAndInfo(state, nPage, pnCompression, pnKind);
  });
}

void* CCreatePDF::LoadPDFIntoDIB(char const* szFileName, DWORD nPage) {
  return Door(m_pState, [&](SessionState&) {
    return LoadPDFIntoDIBW(sorrelin::ToWide(szFileName).c_str(), nPage);
  });
}

void* CCreatePDF::LoadPDFIntoDIBW(WCHAR const* szFileName, DWORD nPage) {
  return Door(m_pState, [&](SessionState& state) -> void* {
    if (szFileName == nullptr) state.Fail(PDF_ERROR_INVALID_HANDLE);
    if (szFileName == nullptr || !OpenFile(state, szFileName)) return nullptr;
    return LoadImageAndInfo(state, nPage, nullptr, nullptr);
  });
}

void* CCreatePDF::LoadPalette(DWORD nBitsPerComponent, DWORD nHighValue, DWORD nObject) {
  return Door(m_pState, [&](SessionState& state) {
    ObjectLoader objects = state.Objects();
    sorrelin::Palette palette =
        sorrelin::ReadPalette(objects, nBitsPerComponent, nHighValue, nObject);
    if (palette.black_is_1) state.m_bBlackIs1 = *palette.black_is_1 ? 1 : 0;
    state.Report(Status::Ok());
    return palette.block.Release();
  });
}

int CCreatePDF::ParseKids(BYTE* pData, DWORD nSize) {
  return Door(m_pState, [&](SessionState& state) {
    if (pData == nullptr || nSize == 0 || state.m_pReader == nullptr) {
      return state.Report(Status::Failed(PDF_ERROR_INVALID_HANDLE)) ? 1 : 0;
    }
    ObjectLoader objects = state.Objects();
    bool const listed = sorrelin::ListPages(objects, {pData, nSize}, state.m_Facts.pages_root,
                                            state.m_Pages, state.m_pReader->page_counter);
    return state.Report(listed ? Status::Ok() : Status::Failed()) ? 1 : 0;
  });
}

int CCreatePDF::GetProcSetData(BYTE* pData, DWORD nSize) {
  return Door(m_pState, [&](SessionState& state) {
    if (pData == nullptr || nSize == 0) return 0;
    ObjectLoader objects = state.Objects();
    return state.Report(sorrelin::ReadProcSet(objects, {pData, nSize}, state.m_nProcSetFlags)) ? 1
                                                                                               : 0;
  });
}
