// The destructor of a list of libqpdf's JSON values, for clang before 16 in C++20.
//
// libqpdf's header defaults a destructor that needs this one while JSON is still incomplete, and
// clang instantiates it there. Declared first, it waits until JSON is complete. The build includes
// this header before every other one. The rest is the base class's, which frees the memory.
#ifndef TOOLS_DOCUMENTS_JSON_FOR_CLANG_H_
#define TOOLS_DOCUMENTS_JSON_FOR_CLANG_H_

#include <memory>
#include <vector>

class JSON;
template <>
constexpr std::vector<JSON>::~vector<JSON>() noexcept;

#include <qpdf/JSON.hh>

template <>
constexpr std::vector<JSON>::~vector<JSON>() noexcept {
  std::destroy(begin(), end());
}

#endif  // TOOLS_DOCUMENTS_JSON_FOR_CLANG_H_
