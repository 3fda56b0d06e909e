// The kind of a value after a key: a reference, a dictionary, a /ProcSet; and values in objects of
// their own.
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <tests/support/object_session.h>
#include <tests/support/scan_buffer.h>

#include <memory>
#include <string>

namespace {

using test::ObjectSession;
using test::ScanBuffer;
using test::WithNuls;

class ValueKind : public testing::Test {
 protected:
  std::unique_ptr<CCreatePDF> const session_ = std::make_unique<CCreatePDF>();

  void SetUp() override { session_->PDF_SetLastError(PDF_ERROR_NONE); }

  int IsReference(std::string const& text) {
    ScanBuffer buffer(text);
    return session_->IsReference(buffer.data(), buffer.size(), "Length");
  }
  // 1 and 0 are the flag, -1 is a miss.
  int DictionaryFlag(std::string const& text, char const* key) {
    ScanBuffer buffer(text);
    int flag = 5;
    if (session_->IsDictionary(buffer.data(), buffer.size(), flag, key) == 1) return flag;
    EXPECT_EQ(flag, 5);
    return -1;
  }
};

TEST_F(ValueKind, ReferenceShape) {
  struct {
    char const* what;
    std::string text;
    int expected;
  } const rows[] = {
      {"plain", "/Length 12 0 R>>", 1},
      {"without blanks", "/Length12 0R>>", 1},
      {"several separators of all kinds", "/Length\r\n [12 [ 0\r\nR>>", 1},
      {"no numbers", "/Length R>>", 1},
      {"one number", "/Length 12 R>>", 1},
      {"rest of a longer name is the first number", "/Length1 12 R>>", 1},
      {"longer name and two numbers", "/Length1 12 0 R>>", 0},
      {"direct", "/Length 12 >>", 0},
      {"three numbers", "/Length 12 0 3 R>>", 0},
      {"tab", "/Length\t12 0 R>>", 0},
      {"slash", "/Length /R>>", 0},
      {"the end in a skip", "/Length 12 0", 0},
      {"R is the last byte", "/Length 12 0 R", 1},
      {"missing", "/Width 12 0 R ", 0},
  };
  for (auto const& row : rows) EXPECT_EQ(IsReference(row.text), row.expected) << row.what;
}

TEST_F(ValueKind, ReferenceArgumentsAreChecked) {
  ScanBuffer b("/K 1 0 R ");
  EXPECT_EQ(session_->IsReference(nullptr, b.size(), "K"), 0);
  EXPECT_EQ(session_->PDF_GetLastError(), DWORD{PDF_ERROR_INVALID_HANDLE});
  session_->PDF_SetLastError(PDF_ERROR_NONE);
  EXPECT_EQ(session_->IsReference(b.data(), 0, "K"), 0);
  EXPECT_EQ(session_->PDF_GetLastError(), DWORD{PDF_ERROR_INVALID_HANDLE});
  session_->PDF_SetLastError(PDF_ERROR_NONE);
  EXPECT_EQ(session_->IsReference(b.data(), b.size(), nullptr), 0);
  EXPECT_EQ(session_->PDF_GetLastError(), DWORD{PDF_ERROR_INVALID_HANDLE});
}

TEST_F(ValueKind, DictionaryBehindAKey) {
  struct {
    char const* what;
    std::string text;
    char const* key;
    int expected;
  } const rows[] = {
      {"plain", "/Resources<</X 1>>", "Resources", 1},
      {"separators are skipped", "/Resources \r\n[ <<", "Resources", 1},
      {"reference", "/Resources 5 0 R ", "Resources", 0},
      {"one bracket", "/Resources <a> ", "Resources", 0},
      {"longer name matches, its rest does not open", "/ResourcesX <<", "Resources", 0},
      {"tab", "/Resources\t<<", "Resources", 0},
      {"null key looks at the start", " <</X 1>>", nullptr, 1},
      {"missing", "/Contents <<", "Resources", -1},
      {"key without its slash in the text", "Resources <<", "Resources", -1},
      {"behind a NUL", WithNuls("a\0/Resources <<"), "Resources", -1},
      {"key at the very end", "/Resources", "Resources", 0},
      {"the end behind one bracket", "/Resources <", "Resources", 0},
  };
  for (auto const& row : rows) {
    EXPECT_EQ(DictionaryFlag(row.text, row.key), row.expected) << row.what;
  }
}

TEST_F(ValueKind, DictionaryArgumentsAreChecked) {
  ScanBuffer b("<<");
  int flag = 5;
  EXPECT_EQ(session_->IsDictionary(nullptr, 2, flag, nullptr), 0);
  EXPECT_EQ(session_->PDF_GetLastError(), DWORD{PDF_ERROR_INVALID_HANDLE});
  session_->PDF_SetLastError(PDF_ERROR_NONE);
  EXPECT_EQ(session_->IsDictionary(b.data(), 0, flag, nullptr), 0);
  EXPECT_EQ(session_->PDF_GetLastError(), DWORD{PDF_ERROR_INVALID_HANDLE});
  EXPECT_EQ(flag, 5);
}

TEST(ValueFromReference, IsTheNumberBehindObj) {
  ObjectSession session({{5, "4711"}});
  DWORD value = 0;
  EXPECT_EQ(session->GetValueFromReference(5, &value), 1);
  EXPECT_EQ(value, 4711u);
}

TEST(ValueFromReference, FailsWithoutANumberOrAnObject) {
  ObjectSession session({{5, "/Name"}});
  DWORD value = 77;
  EXPECT_EQ(session->GetValueFromReference(0, &value), 0);
  EXPECT_EQ(session->PDF_GetLastError(), DWORD{PDF_ERROR_NONE});
  EXPECT_EQ(session->GetValueFromReference(5, &value), 0);
  EXPECT_EQ(session->GetValueFromReference(4000000000u, &value), 0);
  EXPECT_EQ(value, 77u);
}

// The object is looked for first.
TEST(GetValueFromReference, MissingArgumentIsCode2ForAnObjectThatIsThere) {
  ObjectSession session({{5, "17"}});
  EXPECT_EQ(session->GetValueFromReference(0, nullptr), 0);
  EXPECT_EQ(session->PDF_GetLastError(), 0u);
  EXPECT_EQ(session->GetValueFromReference(5, nullptr), 0);
  EXPECT_EQ(session->PDF_GetLastError(), 2u);
}

// The flags after a call over `text`, 99 if they stayed, and the call's result.
struct ProcSet {
  int result;
  DWORD flags;
  DWORD error;
};

ProcSet ReadProcSet(ObjectSession& session, std::string const& text) {
  ScanBuffer buffer(text);
  SessionProbe::ProcSetFlags(*session) = 99;
  session->PDF_SetLastError(PDF_ERROR_NONE);
  ProcSet read{};
  read.result = session->GetProcSetData(buffer.data(), buffer.size());
  read.flags = SessionProbe::ProcSetFlags(*session);
  read.error = session->PDF_GetLastError();
  return read;
}

struct ProcSetRow {
  char const* what;
  std::string text;
  ProcSet expected;
};

void ExpectProcSets(ObjectSession& session, std::initializer_list<ProcSetRow> rows) {
  for (ProcSetRow const& row : rows) {
    ProcSet const read = ReadProcSet(session, row.text);
    EXPECT_EQ(read.result, row.expected.result) << row.what;
    EXPECT_EQ(read.flags, row.expected.flags) << row.what;
    EXPECT_EQ(read.error, row.expected.error) << row.what;
  }
}

TEST(ProcSetData, ArrayInTheBuffer) {
  ObjectSession session({});
  ExpectProcSets(session,
                 {{"black and white", "/ProcSet [/PDF /ImageB] ", {1, 1, 0}},
                  {"indexed", "/ProcSet[/ImageI]/X ", {1, 2, 0}},
                  {"colour", "/ProcSet [/ImageC] ", {1, 4, 0}},
                  {"all", "/ProcSet [/ImageB /ImageC /ImageI] ", {1, 7, 0}},
                  {"none", "/ProcSet [/PDF] ", {1, 0, 0}},
                  {"the whole buffer counts", "/ImageB 1 /ProcSet [/ImageC] /ImageI ", {1, 7, 0}},
                  {"missing", "/Type /Page ", {0, 99, 0}},
                  {"a name is an error", "/ProcSet /ImageC ", {0, 0, 2}},
                  {"neither array nor reference", "/ProcSet >> ", {0, 99, 0}}});
}

TEST(ProcSetData, ArrayInAnObject) {
  ObjectSession session({{5, "[/PDF /ImageI]"}});
  ExpectProcSets(session, {{"read from the object", "/ProcSet 5 0 R ", {1, 2, 0}},
                           {"only the object counts", "/ProcSet 5 0 R /ImageC ", {1, 2, 0}},
                           {"no row", "/ProcSet 6 0 R ", {0, 0, 0}},
                           {"row beyond the table", "/ProcSet 90050 0 R ", {0, 0, 0}},
                           {"no clean number", "/ProcSet 5x ", {0, 0, 33}}});
}

TEST(ProcSetData, ObjectOutsideTheDocumentIsNotRead) {
  ObjectSession session({{5, "[/ImageI]"}});
  SessionProbe::Row(*session, 6) = {100000, 0, 1};
  ExpectProcSets(session, {{"nothing read", "/ProcSet 6 0 R ", {0, 0, 0}}});
}

TEST(ProcSetData, NoChannelIsError1) {
  auto const session = std::make_unique<CCreatePDF>();
  SessionProbe::Row(*session, 5) = {10, 0, 1};
  ScanBuffer buffer("/ProcSet 5 0 R ");
  EXPECT_EQ(session->GetProcSetData(buffer.data(), buffer.size()), 0);
  EXPECT_EQ(session->PDF_GetLastError(), DWORD{PDF_ERROR_SYSTEM});
}

TEST(ProcSetData, MissingBufferIsNoError) {
  ObjectSession session({});
  ScanBuffer buffer("/ProcSet [] ");
  EXPECT_EQ(session->GetProcSetData(nullptr, 5), 0);
  EXPECT_EQ(session->GetProcSetData(buffer.data(), 0), 0);
  EXPECT_EQ(session->PDF_GetLastError(), DWORD{PDF_ERROR_NONE});
}

}  // namespace
