// Escapes what JSON must have escaped and nothing else.
#include "tools/cli/json.h"

#include <utf8.h>

#include <cstdio>
#include <iterator>

namespace sorrelin::tool {

std::string JsonString(std::string_view text) {
  std::string valid;
  utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(valid), 0xFFFD);
  std::string json = "\"";
  for (char const c : valid) {
    if (c == '"' || c == '\\') {
      json += '\\';
      json += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
      json += escape;
    } else {
      json += c;
    }
  }
  return json + "\"";
}

std::string JsonNumber(double value) {
  char text[400];
  std::snprintf(text, sizeof text, "%.3f", value);
  std::string number = text;
  number.erase(number.find_last_not_of('0') + 1);
  if (number.ends_with('.')) number.pop_back();
  return number;
}

void JsonObject::Add(std::string_view key, std::string_view value) {
  members_ += members_.empty() ? "\n" : ",\n";
  members_ += std::string(indent_ + 2, ' ') + JsonString(key) + ": " + std::string(value);
}

std::string JsonObject::Finish() const {
  if (members_.empty()) return "{}";
  return "{" + members_ + "\n" + std::string(indent_, ' ') + "}";
}

}  // namespace sorrelin::tool
