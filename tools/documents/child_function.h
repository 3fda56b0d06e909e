// Functions that children call. Each is an object of static storage, which a process that was
// started as a child finds by its name:
//
//   ChildFunction<std::string> const kCountPages("count pages", CountPages);
//   auto const answer = AskChild(kCountPages.With(name), problem);
#ifndef TOOLS_DOCUMENTS_CHILD_FUNCTION_H_
#define TOOLS_DOCUMENTS_CHILD_FUNCTION_H_

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>

#include "tools/documents/child.h"
#include "tools/documents/packed_values.h"

namespace sorrelin::tool {

class NamedFunction {
 public:
  // Calls the function of this name with values that are packed. Throws std::logic_error if there
  // is no such function, or values are cut short.
  static void CallByName(ParentLink& link, std::string_view name, std::string_view packed) {
    NamedFunction const* function = first_;
    while (function != nullptr && function->name_ != name) function = function->next_;
    if (function == nullptr) throw std::logic_error("a child knows no such work");
    function->Call(link, packed);
  }

  NamedFunction(NamedFunction const&) = delete;
  NamedFunction& operator=(NamedFunction const&) = delete;

 protected:
  explicit NamedFunction(char const* name) : name_(name), next_(first_) { first_ = this; }
  ~NamedFunction() = default;
  std::string_view name() const { return name_; }

 private:
  virtual void Call(ParentLink& link, std::string_view packed) const = 0;

  inline static NamedFunction const* first_ = nullptr;
  std::string_view name_;
  NamedFunction const* next_;
};

template <typename... Values>
class ChildFunction final : public NamedFunction {
 public:
  using Sender = void (*)(ParentLink& link, Values const&... values);
  using Answerer = std::optional<std::string> (*)(Values const&... values, std::string& problem);

  ChildFunction(char const* name, Sender send) : NamedFunction(name), call_(send) {}
  // The child sends the answer.
  ChildFunction(char const* name, Answerer answer)
      : NamedFunction(name), call_([answer](ParentLink& link, Values const&... values) {
          SendAnswer(link, [&](std::string& problem) { return answer(values..., problem); });
        }) {}

  // The call with these values, which outlive it.
  ChildWork With(Values const&... values) const {
    return {[this, &values...](ParentLink& link) { call_(link, values...); }, name(),
            [&values...](std::string& bytes) { (Pack(bytes, values), ...); }};
  }

 private:
  void Call(ParentLink& link, std::string_view packed) const override {
    std::tuple<Values...> values;
    std::apply([&](auto&... each) { (Unpack(packed, each), ...); }, values);
    std::apply([&](auto const&... each) { call_(link, each...); }, values);
  }

  std::function<void(ParentLink& link, Values const&... values)> call_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_CHILD_FUNCTION_H_
