// Programs of calculator functions (ISO 32000-1, 7.10.5).
#ifndef TOOLS_EXTRACT_COLOUR_CALCULATOR_H_
#define TOOLS_EXTRACT_COLOUR_CALCULATOR_H_

#include <string>
#include <string_view>
#include <vector>

namespace sorrelin::tool {

class Calculator {
 public:
  // False for what is no program.
  bool Read(std::string_view text);

  // The stack after a run that starts with these values. A run that fails leaves what it has.
  std::vector<double> Run(std::vector<double> stack) const;

 private:
  struct Step {
    std::string word;  // empty: a number; "{": a block
    double number = 0;
    std::vector<Step> block;
  };
  using Stack = std::vector<double>;

  static bool ReadBlock(std::string_view text, size_t& at, std::vector<Step>& block, int depth);
  static bool RunBlock(std::vector<Step> const& block, Stack& stack, size_t& steps);
  static bool RunWord(std::string const& word, Stack& stack);
  static bool RunStackWord(std::string const& word, Stack& stack);
  static bool RunUnary(std::string const& word, Stack& stack);
  static bool RunBinary(std::string const& word, Stack& stack);

  std::vector<Step> program_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_COLOUR_CALCULATOR_H_
