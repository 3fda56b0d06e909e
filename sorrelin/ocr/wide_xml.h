// RapidXML on the interface's 16-bit characters.
//
// The packaged parser was written for bytes. It classifies a character by its low eight bits alone,
// so that U+043C would start a tag as "<" does and U+0100 would end the text, it writes numeric
// references as UTF-8, and it recurses once per element level. The specialisations here make
// characters past 255 ordinary ones, write references in UTF-16, skip a U+FEFF at the start, and
// refuse documents that are nested too deep for a thread's stack.
#ifndef SORRELIN_OCR_WIDE_XML_H_
#define SORRELIN_OCR_WIDE_XML_H_

#include <sorrelin/platform/types.h>

#include <rapidxml/rapidxml.hpp>

namespace sorrelin {

using XmlDocument = rapidxml::xml_document<WCHAR>;
using XmlNode = rapidxml::xml_node<WCHAR>;
using XmlAttribute = rapidxml::xml_attribute<WCHAR>;

// Elements within elements; hOCR has about ten levels. One level costs the parser and the walk
// some hundred bytes of stack each.
inline constexpr int kMaxXmlDepth = 1000;

namespace xml_internal {

using Table = unsigned char[256];
using Tables = rapidxml::internal::lookup_tables<0>;

// Flags unknown to the parser: they distinguish the two halves of its recursion.
inline constexpr int kInsideElement = rapidxml::parse_default | (1 << 30);

// Characters past 255 count as letters.
inline unsigned char LookUp(Table const& table, WCHAR character) {
  return table[character < 256 ? static_cast<unsigned char>(character) : 'z'];
}

// Counts the elements that are open on this thread's stack.
class ElementLevel {
 public:
  explicit ElementLevel(WCHAR* where) {
    if (depth_ >= kMaxXmlDepth) throw rapidxml::parse_error("nested too deep", where);
    ++depth_;
  }
  ~ElementLevel() { --depth_; }
  ElementLevel(ElementLevel const&) = delete;
  ElementLevel& operator=(ElementLevel const&) = delete;

 private:
  static inline thread_local int depth_ = 0;
};

// Writes a code point as UTF-16. Its reference is longer than that.
inline void InsertUtf16(WCHAR*& text, unsigned long code) {
  if (code >= 0x110000) throw rapidxml::parse_error("invalid numeric character entity", text);
  if (code >= 0x10000) {
    *text++ = static_cast<WCHAR>(0xD800 + ((code - 0x10000) >> 10));
    *text++ = static_cast<WCHAR>(0xDC00 + (code & 0x3FF));
  } else {
    *text++ = static_cast<WCHAR>(code);
  }
}

}  // namespace xml_internal
}  // namespace sorrelin

namespace rapidxml {

template <>
inline unsigned char xml_document<WCHAR>::whitespace_pred::test(WCHAR ch) {
  using namespace sorrelin::xml_internal;
  return LookUp(Tables::lookup_whitespace, ch);
}

template <>
inline unsigned char xml_document<WCHAR>::node_name_pred::test(WCHAR ch) {
  using namespace sorrelin::xml_internal;
  return LookUp(Tables::lookup_node_name, ch);
}

template <>
inline unsigned char xml_document<WCHAR>::attribute_name_pred::test(WCHAR ch) {
  using namespace sorrelin::xml_internal;
  return LookUp(Tables::lookup_attribute_name, ch);
}

template <>
inline unsigned char xml_document<WCHAR>::text_pred::test(WCHAR ch) {
  using namespace sorrelin::xml_internal;
  return LookUp(Tables::lookup_text, ch);
}

template <>
inline unsigned char xml_document<WCHAR>::text_pure_no_ws_pred::test(WCHAR ch) {
  using namespace sorrelin::xml_internal;
  return LookUp(Tables::lookup_text_pure_no_ws, ch);
}

template <>
template <>
inline unsigned char xml_document<WCHAR>::attribute_value_pred<WCHAR{'\''}>::test(WCHAR ch) {
  using namespace sorrelin::xml_internal;
  return LookUp(Tables::lookup_attribute_data_1, ch);
}

template <>
template <>
inline unsigned char xml_document<WCHAR>::attribute_value_pred<WCHAR{'"'}>::test(WCHAR ch) {
  using namespace sorrelin::xml_internal;
  return LookUp(Tables::lookup_attribute_data_2, ch);
}

template <>
template <>
inline unsigned char xml_document<WCHAR>::attribute_value_pure_pred<WCHAR{'\''}>::test(WCHAR ch) {
  using namespace sorrelin::xml_internal;
  return LookUp(Tables::lookup_attribute_data_1_pure, ch);
}

template <>
template <>
inline unsigned char xml_document<WCHAR>::attribute_value_pure_pred<WCHAR{'"'}>::test(WCHAR ch) {
  using namespace sorrelin::xml_internal;
  return LookUp(Tables::lookup_attribute_data_2_pure, ch);
}

template <>
template <>
inline void xml_document<WCHAR>::insert_coded_character<parse_default>(WCHAR*& text,
                                                                       unsigned long code) {
  sorrelin::xml_internal::InsertUtf16(text, code);
}

template <>
template <>
inline void xml_document<WCHAR>::insert_coded_character<sorrelin::xml_internal::kInsideElement>(
    WCHAR*& text, unsigned long code) {
  sorrelin::xml_internal::InsertUtf16(text, code);
}

template <>
template <>
inline void xml_document<WCHAR>::parse_bom<parse_default>(WCHAR*& text) {
  if (*text == 0xFEFF) ++text;
}

template <>
template <>
inline void xml_document<WCHAR>::parse_node_contents<sorrelin::xml_internal::kInsideElement>(
    WCHAR*& text, xml_node<WCHAR>* node) {
  parse_node_contents<parse_default>(text, node);
}

template <>
template <>
inline xml_node<WCHAR>* xml_document<WCHAR>::parse_element<parse_default>(WCHAR*& text) {
  sorrelin::xml_internal::ElementLevel const level(text);
  return parse_element<sorrelin::xml_internal::kInsideElement>(text);
}

}  // namespace rapidxml

#endif  // SORRELIN_OCR_WIDE_XML_H_
