/// @file
/// The lexer's inner loops, for the lexer and the reader. Not installed.
#pragma once

#include "zelto/json/lexer.h"
#include "zelto/text/ascii.h"

namespace Zelto::Json {

inline void Lexer::Skip() {
  while (CharactersAvailable() && Utilities::Ascii::IsSpace(input_[pos_])) {
    ++pos_;
  }
}

inline bool Lexer::Ready() {
  if (error_) {
    return false;
  }
  if (keep_white_spaces_ || last_skip_pos_ == pos_) {
    return CharactersAvailable();
  }
  Skip();
  while (!CharactersAvailable()) {
    if (!ReadLine()) {
      last_skip_pos_ = kNoLineYet;  // the source, or another one, may have lines again
      return false;
    }
    Skip();
  }
  last_skip_pos_ = pos_;
  return true;
}

// The next character, 0 when there is none.
inline wchar_t Lexer::Peek() {
  return Ready() ? input_[pos_] : L'\0';
}

inline bool Lexer::TakeChar(wchar_t c) {
  if (!Ready() || input_[pos_] != c) {
    return false;
  }
  ++pos_;
  return true;
}

inline void Lexer::ExpectChar(wchar_t c) {
  if (!TakeChar(c)) {
    error_ = true;
  }
}

inline bool Lexer::TakeText(std::wstring_view text) {
  if (!Ready() || input_.compare(pos_, text.size(), text) != 0) {
    return false;
  }
  pos_ += text.size();
  return true;
}

// Where the next character is a double quote: takes the string, or sets the error and takes the quote alone. `escaped`
// tells whether there is a backslash in it.
inline bool Lexer::TakeQuotedString(std::wstring_view& out, bool& escaped) {
  ++pos_;
  const wchar_t* const start = input_.data() + pos_;
  const wchar_t* const end = input_.data() + input_.size();
  const wchar_t* at = start;
  escaped = false;
  while (at != end && *at != L'"') {
    if (*at == L'\\') {
      escaped = true;
      if (++at == end) {
        break;
      }
    }
    ++at;
  }
  if (at == end) {
    error_ = true;
    return false;
  }
  out = {start, static_cast<std::size_t>(at - start)};
  pos_ += out.size() + 1;
  return true;
}

// Where a character is available.
inline std::wstring_view Lexer::TakeInteger() {
  const std::size_t start = pos_;
  if (input_[pos_] == L'+' || input_[pos_] == L'-') {
    ++pos_;
  }
  while (CharactersAvailable() && Utilities::Ascii::IsDigit(input_[pos_])) {
    ++pos_;
  }
  return input_.substr(start, pos_ - start);
}

}  // namespace Zelto::Json
