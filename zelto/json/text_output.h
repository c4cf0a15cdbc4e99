/// @file
/// Where the writer's text goes. Not installed.
#pragma once

#include "zelto/json/compact_text.h"
#include "zelto/json/escapes.h"

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace Zelto::Json {

/// Gathers wide text, in a string or piece by piece for a stream.
class TextOutput {
 public:
  /// For a string, which `Take` gives.
  TextOutput() = default;
  /// For a stream, which has everything after `Flush`.
  explicit TextOutput(std::wostream& stream) noexcept : stream_(&stream) {}
  TextOutput(const TextOutput&) = delete;
  TextOutput& operator=(const TextOutput&) = delete;

  void Put(wchar_t c) {
    *Room(1) = c;
    ++cursor_;
  }

  void Put(std::wstring_view text) {
    std::copy(text.begin(), text.end(), Room(text.size()));
    cursor_ += text.size();
  }

  void Put(std::u16string_view text) {
    Widen(text.data(), text.size(), Room(text.size()));
    cursor_ += text.size();
  }

  /// A text in double quotes. With a masked character in it, masked and non-printing ones are escaped; without one, it
  /// is written as it is.
  template <typename Unit>
  void PutString(std::basic_string_view<Unit> text) {
    wchar_t* to = Room(text.size() + 2);
    *to++ = L'"';
    for (const Unit unit : text) {
      if (EscapeLetterOf(unit) != 0) {
        PutEscapedString(text);
        return;
      }
      *to++ = static_cast<wchar_t>(unit);
    }
    *to++ = L'"';
    cursor_ = to;
  }

  std::wstring Take() {
    text_.resize(Used());
    return std::move(text_);
  }

  void Flush() {
    stream_->write(text_.data(), static_cast<std::streamsize>(Used()));
    cursor_ = text_.data();
  }

 private:
  static constexpr std::size_t kStep = 1024;  // so much more than asked for is made ready at once
  static constexpr std::size_t kFlushSize = 8192;

  std::size_t Used() const noexcept { return static_cast<std::size_t>(cursor_ - text_.data()); }

  wchar_t* Room(std::size_t count) {
    if (static_cast<std::size_t>(end_ - cursor_) < count) {
      Grow(count);
    }
    return cursor_;
  }

  void Grow(std::size_t count) {
    if (stream_ != nullptr && Used() >= kFlushSize) {
      Flush();
    }
    const std::size_t used = Used();
    text_.resize(std::max(text_.size(), used + count + kStep));
    cursor_ = text_.data() + used;
    end_ = text_.data() + text_.size();
  }

  template <typename Unit>
  void PutEscapedString(std::basic_string_view<Unit> text) {
    Put(L'"');
    for (const Unit unit : text) {
      cursor_ = WriteEscaped(unit, Room(kUnicodeEscapeLength));
    }
    Put(L'"');
  }

  std::wstring text_;
  wchar_t* cursor_ = text_.data();
  wchar_t* end_ = cursor_;
  std::wostream* stream_ = nullptr;
};

}  // namespace Zelto::Json
