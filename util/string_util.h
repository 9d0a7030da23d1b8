// Text helpers.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace torvane {

// Replaces *tokens with the non-empty pieces of text between any of the delimiters, the whole text
// when there are none, and returns their number.
std::size_t Tokenize(const std::string& text, const std::string& delimiters,
                     std::vector<std::string>* tokens);

}  // namespace torvane
