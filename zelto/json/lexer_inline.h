/// @file
/// The lexer's inner loops, for the lexer and the reader. Not installed.
#pragma once

#include "zelto/json/lexer.h"
#include "zelto/json/unit_block.h"
#include "zelto/json/unit_stack.h"
#include "zelto/text/ascii.h"

#include <algorithm>
#include <string_view>

namespace Zelto::Json {

inline void Lexer::Skip() {
  while (CharactersAvailable() && Utilities::Ascii::IsSpace(*at_)) {
    ++at_;
  }
}

// Skips white space and reads lines until a character is there.
inline bool Lexer::Ready() {
  const bool ready = CharactersAvailable() && !Utilities::Ascii::IsSpace(*at_);
  return ready ? !error_ : GetReady();
}

// The next character, 0 when there is none.
inline wchar_t Lexer::Peek() {
  return Ready() ? *at_ : L'\0';
}

inline bool Lexer::TakeChar(wchar_t c) {
  if (!Ready() || *at_ != c) {
    return false;
  }
  ++at_;
  return true;
}

inline void Lexer::ExpectChar(wchar_t c) {
  if (!TakeChar(c)) {
    error_ = true;
  }
}

inline bool Lexer::TakeText(std::wstring_view text) {
  if (!Ready() || Left() < text.size() || !std::equal(text.begin(), text.end(), at_)) {
    return false;
  }
  at_ += text.size();
  return true;
}

// Where the next character is a double quote: takes the string and appends what it stands for, or sets the error. What
// an unterminated string has appended is of no use.
inline bool Lexer::TakeQuotedString(UnitStack& to) {
  at_ = to.AppendUntil(at_ + 1, end_, [](const UnitBlock<8>& block) { return block.QuotesAndBackslashes(); });
  if (CharactersAvailable() && *at_ == L'"') {
    ++at_;
    return true;
  }
  return TakeRestOfQuotedString(to);
}

// Where a character is available: takes an integer and appends its text.
inline void Lexer::TakeInteger(UnitStack& to) {
  if (*at_ == L'+' || *at_ == L'-') {
    to.Push(static_cast<char16_t>(*at_++));
  }
  at_ = to.AppendUntil(at_, end_, [](const UnitBlock<8>& block) { return block.NotDigits(); });
}

// Takes "true" or "false", whatever follows, and appends it.
inline bool Lexer::TakeBoolean(UnitStack& to) {
  if (TakeText(L"true")) {
    to.Append(u"true");
    return true;
  }
  if (TakeText(L"false")) {
    to.Append(u"false");
    return true;
  }
  return false;
}

}  // namespace Zelto::Json
