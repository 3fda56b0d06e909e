// Values in other objects, from a source without a document.
#include <gtest/gtest.h>
#include <sorrelin/syntax/object_source.h>
#include <sorrelin/syntax/typed_lookup.h>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

class Objects : public sorrelin::ObjectSource {
 public:
  explicit Objects(std::map<DWORD, std::string> texts) : texts_(std::move(texts)) {}

  std::optional<std::string> TextOf(DWORD number) override {
    asked.push_back(number);
    auto const text = texts_.find(number);
    return text != texts_.end() ? std::optional(text->second) : std::nullopt;
  }
  std::optional<int32_t> Number(std::string text) {
    return sorrelin::FindTypedNumber(this, {reinterpret_cast<BYTE*>(text.data()), text.size()},
                                     "/K", sorrelin::kTypeInteger);
  }

  std::vector<DWORD> asked;

 private:
  std::map<DWORD, std::string> texts_;
};

TEST(ObjectSource, IsAskedForTheObjectThatAReferenceNames) {
  Objects objects({{7, "7 0 obj 42 endobj"}});
  EXPECT_EQ(objects.Number("/K 7 0 R >>"), 42);
  EXPECT_EQ(objects.asked, std::vector<DWORD>{7});
}

TEST(ObjectSource, IsNotAskedForDirectValues) {
  Objects objects({});
  EXPECT_EQ(objects.Number("/K 42 >>"), 42);
  EXPECT_TRUE(objects.asked.empty());
}

TEST(ObjectSource, ObjectThatItLacksGivesNoValue) {
  Objects objects({});
  EXPECT_EQ(objects.Number("/K 7 0 R >>"), std::nullopt);
}

TEST(ObjectSource, IsAskedAtMost32TimesForOneValue) {
  Objects objects({{7, "7 0 obj 7 0 R endobj"}});
  objects.Number("/K 7 0 R >>");
  EXPECT_EQ(objects.asked.size(), 32u);
}

}  // namespace
