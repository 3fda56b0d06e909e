// /ID of a cross-reference stream.
#include <gtest/gtest.h>
#include <sorrelin/document/id_key.h>
#include <tests/support/pdf_builder.h>

namespace {

struct IdRow {
  char const* name;
  std::string text;
  int result;
  std::string permanent;
  std::string changing;
};
class IdKey : public testing::TestWithParam<IdRow> {};

TEST_P(IdKey, IsTwoStrings) {
  sorrelin::DocumentId id;
  test::Bytes const text = test::ToBytes(GetParam().text);
  EXPECT_EQ(sorrelin::ReadIdKey(text, id), GetParam().result);
  EXPECT_EQ(id.permanent, GetParam().permanent);
  EXPECT_EQ(id.changing, GetParam().changing);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, IdKey,
    testing::Values(IdRow{"Absent", "<</Root 1 0 R>>", 1, "", ""},
                    IdRow{"Hexadecimal", "/ID [<41 42\r\n43><6465>]", 1, "ABC", "de"},
                    IdRow{"OddDigitIsDropped", "/ID[<414>()]", 1, "A", ""},
                    IdRow{"Literal", "/ID [(ab)(c)]", 1, "ab", "c"},
                    IdRow{"Escapes", "/ID [(\\b\\f\\n\\r\\t\\)\\x\\\\)(d)]", 1, "\b\f\n\r\t)x\\",
                          "d"},
                    IdRow{"Mixed", "/ID [<41>(b)]", 1, "A", "b"},
                    IdRow{"AnythingInFront", "/ID 5 0 R /A [<41><42>]", 1, "A", "B"},
                    IdRow{"WithoutSolidus", "/UUID 1", 0, "", ""},
                    IdRow{"InALongerName", "/IDTree <41> <42>", 1, "A", "B"},
                    IdRow{"NoString", "/ID [1 2]", 1, "", ""},
                    IdRow{"Reference", "/ID 7 0 R", 1, "", ""},
                    IdRow{"OneString", "/ID [<41>]", 1, "", ""},
                    IdRow{"OpenHexadecimal", "/ID [<41", 1, "", ""},
                    IdRow{"OpenLiteral", "/ID [(a)(b", 1, "", ""},
                    IdRow{"BehindNul", std::string("a\0/ID", 5), 1, "", ""}),
    [](auto const& row) { return row.param.name; });

}  // namespace
