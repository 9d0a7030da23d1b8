#include "util/string_util.h"

namespace torvane {

namespace {

template <typename String>
std::size_t TokenizeAs(const String& text, const String& delimiters, std::vector<String>* tokens) {
  tokens->clear();
  std::size_t start = text.find_first_not_of(delimiters);
  while (start != String::npos) {
    const std::size_t end = text.find_first_of(delimiters, start + 1);
    tokens->push_back(text.substr(start, end - start));
    start = text.find_first_not_of(delimiters, end);
  }
  return tokens->size();
}

}  // namespace

std::size_t Tokenize(const std::string& text, const std::string& delimiters,
                     std::vector<std::string>* tokens) {
  return TokenizeAs(text, delimiters, tokens);
}

}  // namespace torvane
