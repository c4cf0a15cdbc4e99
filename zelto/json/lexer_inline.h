/// @file
/// The lexer's inner loops, for the lexer and the reader. Not installed.
#pragma once

#include "zelto/json/lexer.h"
#include "zelto/json/unit_block.h"
#include "zelto/text/ascii.h"

namespace Zelto::Json {

inline void Lexer::Skip() {
  while (CharactersAvailable() && Utilities::Ascii::IsSpace(input_[pos_])) {
    ++pos_;
  }
}

// Skips white space and reads lines until a character is there.
inline bool Lexer::Ready() {
  const bool ready = CharactersAvailable() && !Utilities::Ascii::IsSpace(input_[pos_]);
  return ready ? !error_ : GetReady();
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

// Where the next character is a double quote: takes the string, or sets the error and takes the quote alone. `plain` is
// true only when there is neither a backslash nor a character above U+FFFF in it.
inline bool Lexer::TakeQuotedString(std::wstring_view& out, bool& plain) {
  ++pos_;
  const wchar_t* const start = input_.data() + pos_;
  const wchar_t* const end = input_.data() + input_.size();
  const wchar_t* at = start;
  bool escaped = false;
  std::uint32_t seen = 0;
  for (;;) {
    // To the next quote or backslash, or to another character whose low bits are the same.
    BlockFlags flags = 0;
    while (end - at >= 8 && flags == 0) {
      const UnitBlock<8> block(at);
      seen |= HighBitsOf8(at);
      flags = block.QuotesAndBackslashes();
      at += flags == 0 ? 8 : FirstFlag(flags);
    }
    if (flags == 0) {
      for (; at != end && *at != L'"' && *at != L'\\'; ++at) {
        seen |= HighBitsOf(*at);
      }
    }
    if (at == end || *at == L'"') {
      break;
    }
    escaped |= *at == L'\\';
    at += *at == L'\\' && end - at > 1 ? 2 : 1;
  }
  if (at == end) {
    error_ = true;
    return false;
  }
  plain = !escaped && seen == 0;
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
