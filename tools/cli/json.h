// Text in the form of JSON (RFC 8259), keys in the order in which they are added.
#ifndef TOOLS_CLI_JSON_H_
#define TOOLS_CLI_JSON_H_

#include <string>
#include <string_view>

namespace sorrelin::tool {

// The text in quotation marks. What is not UTF-8 becomes U+FFFD.
std::string JsonString(std::string_view text);

// A number of at most three decimals, without needless ones.
std::string JsonNumber(double value);

// Lines of an object; `indent` is that of its braces.
class JsonObject {
 public:
  explicit JsonObject(int indent) : indent_(static_cast<size_t>(indent)) {}

  // `value` is JSON already.
  void Add(std::string_view key, std::string_view value);
  std::string Finish() const;

 private:
  size_t indent_;
  std::string members_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_CLI_JSON_H_
