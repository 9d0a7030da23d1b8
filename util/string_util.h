// Text helpers.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace torvane {

// Replaces *tokens with the non-empty pieces of text between delimiters and returns their number.
// Every single character of delimiters is one; an empty set gives the whole text as one token.
std::size_t Tokenize(const std::string& text, const std::string& delimiters,
                     std::vector<std::string>* tokens);

}  // namespace torvane
