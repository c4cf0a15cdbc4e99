/// @file
/// Tables whose cases are words.
#pragma once

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace Zelto::Testing {

/// The words of a text, which blanks and line ends part.
template <typename Character>
std::vector<std::basic_string<Character>> Words(const Character* text) {
  std::basic_istringstream<Character> stream(text);
  return {std::istream_iterator<std::basic_string<Character>, Character>(stream), {}};
}

}  // namespace Zelto::Testing
