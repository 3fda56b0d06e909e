// The typed reader: the value of "/K" in the input as every type, with references into a document
// whose objects lead on, back, and nowhere; then the same bytes as /ID and /DecodeParms.
#include <sorrelin/document/decode_parms.h>
#include <sorrelin/document/id_key.h>
#include <sorrelin/syntax/typed_lookup.h>
#include <sorrelin/syntax/typed_value.h>
#include <tests/support/pdf_builder.h>
#include <tests/support/session_probe.h>

#include "fuzz/fuzz_session.h"

namespace {

constexpr DWORD kTypes[] = {1,   2,   4,   6,   8,   16,   32,   64,   257,  258,
                            260, 264, 272, 288, 512, 1024, 1032, 1056, 2048, 4096};

class Document {
 public:
  Document() {
    test::PdfBuilder pdf("%PDF-1.5");
    test::AddPageTree(pdf, 1);
    pdf.Object(4, "[1 2 (text) /Name 5 0 R]");
    pdf.Object(5, "6 0 R");
    pdf.Object(6, "5 0 R");
    pdf.Object(7, "<</K 7 0 R /L <</M 4 0 R>> >>");
    pdf.Object(8, "(a \\(string\\) \\101)");
    pdf.ObjectStream(20, {{9, "<</K (inside)>>"}, {10, "9 0 R"}, {11, "-17.5"}});
    pdf.XrefStream(21);
    document_ = pdf.Document();
    fuzz::Require(session_.Open(document_), "the document does not open");
  }
  sorrelin::ObjectSource* objects() { return SessionProbe::Source(*session_); }

 private:
  test::Bytes document_;
  fuzz::Session session_;
};

void TryTypes(sorrelin::ObjectSource* objects, fuzz::Data text) {
  for (DWORD const type : kTypes) {
    fuzz::Copy copy(text);
    void* out = nullptr;
    uint64_t size = 0;
    if (sorrelin::GetTypedValue(objects, copy.data(), copy.size(), "/K", &out, &size, type) == 0) {
      fuzz::Require(out == nullptr, "a value behind a failure");
      continue;
    }
    volatile BYTE last = 0;
    if (size != 0) last = static_cast<BYTE*>(out)[size - 1];
    static_cast<void>(last);
    std::free(out);
  }
}

void TryValueText(sorrelin::ObjectSource* objects, fuzz::Data text) {
  fuzz::Copy copy(text);
  BYTE* at = copy.data();
  BYTE* out = nullptr;
  DWORD size = 0;
  sorrelin::ParseValueText(objects, &at, copy.size(), &out, &size);
  std::free(out);
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  static auto& document = *new Document;  // for all inputs
  fuzz::Data const text(bytes, size);
  if (text.empty() || fuzz::HoldsEndlessNumber(text)) return 0;
  fuzz::Guard([&] { TryTypes(document.objects(), text); });
  TryTypes(nullptr, text);
  TryValueText(document.objects(), text);
  sorrelin::DocumentId id;
  fuzz::Copy id_text(text);
  sorrelin::ReadIdKey({id_text.data(), id_text.size()}, id);
  fuzz::Copy parms_text(text);
  sorrelin::CDecodeParms(document.objects()).ParseDecodeParms(parms_text.data(), parms_text.size());
  fuzz::Copy filter_text(text);
  sorrelin::FindFilterNames(document.objects(), {filter_text.data(), filter_text.size()});
  return 0;
}
