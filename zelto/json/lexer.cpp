#include "zelto/json/lexer.h"

#include "zelto/json/lexer_inline.h"
#include "zelto/json/number_text.h"

#include <limits>
#include <utility>

namespace Zelto::Json {

Lexer::Lexer(const Lexer& other) {
  *this = other;
}

Lexer& Lexer::operator=(const Lexer& other) {
  if (this != &other) {
    const bool own_line = other.input_.data() == other.line_.data();
    error_ = other.error_;
    keep_white_spaces_ = other.keep_white_spaces_;
    line_ = other.line_;
    pos_ = other.pos_;
    read_line_ = other.read_line_;
    input_ = own_line ? std::wstring_view(line_) : other.input_;
  }
  return *this;
}

void Lexer::SetReadLine(LineSource read_line) {
  read_line_ = std::move(read_line);
}

void Lexer::ReadText(std::wstring_view text) noexcept {
  read_line_ = nullptr;
  input_ = text;
  pos_ = 0;
}

void Lexer::ReleaseText() noexcept {
  input_ = {};
  pos_ = 0;
}

// The next line, in which nothing is taken yet; false at the end of the input.
bool Lexer::ReadLine() {
  bool read = false;
  if (read_line_) {
    read = read_line_(line_);
    input_ = line_;
  }
  pos_ = read ? 0 : input_.size();
  return read;
}

bool Lexer::GetReady() {
  if (error_) {
    return false;
  }
  if (keep_white_spaces_) {
    return CharactersAvailable();
  }
  Skip();
  while (!CharactersAvailable()) {
    if (!ReadLine()) {
      return false;
    }
    Skip();
  }
  return true;
}

bool Lexer::ReadLineIfEmpty() {
  return Ready();
}

void Lexer::SkipWhiteSpaces() {
  Skip();
}

bool Lexer::CheckChar(wchar_t c) {
  return TakeChar(c);
}

void Lexer::GetChar(wchar_t c) {
  ExpectChar(c);
}

bool Lexer::CheckString(const std::wstring& text) {
  return TakeText(text);
}

bool Lexer::CheckEndingDoubleQuotes() {
  bool escaped = false;
  for (; CharactersAvailable(); ++pos_) {
    const wchar_t c = input_[pos_];
    if (escaped) {
      escaped = false;
    } else if (c == L'\\') {
      escaped = true;
    } else if (c == L'"') {
      return true;
    }
  }
  return false;
}

bool Lexer::CheckQuotedString(std::wstring& out) {
  if (Peek() != L'"') {
    return false;
  }
  std::wstring_view text;
  bool plain = false;
  if (!TakeQuotedString(text, plain)) {
    error_ = false;
    return false;
  }
  out = text;
  return true;
}

std::wstring Lexer::GetQuotedString() {
  if (!Ready()) {
    error_ = true;
    return {};
  }
  ExpectChar(L'"');
  const std::size_t start = pos_;
  if (!CheckEndingDoubleQuotes()) {
    pos_ = start;
    error_ = true;
    return {};
  }
  std::wstring text(input_.substr(start, pos_ - start));
  ++pos_;
  return text;
}

bool Lexer::CheckInteger(IntegerToken& out) {
  const wchar_t next = Peek();
  if (next != L'+' && next != L'-' && !Utilities::Ascii::IsDigit(next)) {
    return false;
  }
  out = IntegerToken(std::wstring(TakeInteger()));
  return true;
}

bool Lexer::CheckInteger(int& out) {
  IntegerToken token;
  if (!CheckInteger(token)) {
    return false;
  }
  const ScannedNumber number = ScanNumber(std::wstring_view(token.GetText()));
  using Limits = std::numeric_limits<int>;
  out = ToInt32(number).value_or(number.negative ? Limits::min() : Limits::max());
  return true;
}

IntegerToken Lexer::GetInteger() {
  if (!ReadLineIfEmpty()) {
    error_ = true;
    return {};
  }
  return IntegerToken(std::wstring(TakeInteger()));
}

bool Lexer::CheckJsonBoolean(BooleanToken& out) {
  for (const bool value : {true, false}) {
    if (TakeText(value ? L"true" : L"false")) {
      out = BooleanToken(value);
      return true;
    }
  }
  return false;
}

std::wstring Lexer::GetStringUntil(wchar_t c) {
  if (!ReadLineIfEmpty()) {
    error_ = true;
    return {};
  }
  const std::wstring_view rest = input_.substr(pos_);
  const std::wstring_view text = rest.substr(0, rest.find(c));
  pos_ += text.size();
  return std::wstring(text);
}

}  // namespace Zelto::Json
