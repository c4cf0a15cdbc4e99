/// @file
/// Where the writer's text goes. Not installed.
#pragma once

#include "zelto/json/compact_text.h"
#include "zelto/json/escapes.h"
#include "zelto/json/unit_block.h"

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
  /// For a string, which `Take` gives. @param length  expected
  explicit TextOutput(std::size_t length) { text_.reserve(length); }
  /// For a stream, which has everything after `Flush`.
  explicit TextOutput(std::wostream& stream) noexcept : stream_(&stream) {}
  TextOutput(const TextOutput&) = delete;
  TextOutput& operator=(const TextOutput&) = delete;

  void Put(wchar_t c) {
    *Room(1) = c;
    ++cursor_;
  }

  /// A literal.
  template <std::size_t Size>
  void Put(const wchar_t (&text)[Size]) {
    std::copy_n(text, Size - 1, Room(Size - 1));
    cursor_ += Size - 1;
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
    *to++ = L'"';  // NOLINT(clang-analyzer-core.NullDereference): there is no room without a buffer
    const std::size_t clean = CopyClean(text, to);
    cursor_ = to + clean;
    if (clean != text.size()) {
      PutRest(text.substr(clean));
    }
    *cursor_++ = L'"';
  }

  /// A key with what stands before and behind it.
  void PutKey(bool separator, std::u16string_view key) {
    wchar_t* to = Room(key.size() + 4);
    *to = L',';
    to += separator ? 1 : 0;
    *to++ = L'"';
    const std::size_t clean = CopyClean(key, to);
    cursor_ = to + clean;
    if (clean != key.size()) {
      PutRest(key.substr(clean));
    }
    *cursor_++ = L'"';
    *cursor_++ = L':';
  }

  std::wstring Take() {
    text_.resize(Used());
    // What was expected in vain does not stay with the text.
    if (text_.capacity() / 2 > text_.size() + kMostSpare) {
      text_.shrink_to_fit();
    }
    return std::move(text_);
  }

  void Flush() {
    stream_->write(text_.data(), static_cast<std::streamsize>(Used()));
    cursor_ = text_.data();
  }

 private:
  static constexpr std::size_t kStep = 1024;  // so much more than asked for is made ready at once
  static constexpr std::size_t kFlushSize = 8192;
  static constexpr std::size_t kMostSpare = 8192;
  static constexpr std::size_t kEscapePiece = 256;  // units that are escaped at once

  std::size_t Used() const noexcept {
    return cursor_ == nullptr ? 0 : static_cast<std::size_t>(cursor_ - text_.data());
  }

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
    // The string fills its room with zeros: step by step, while what is filled is still at hand when it is written.
    const std::size_t needed = used + count;
    const std::size_t step = needed <= text_.capacity() ? std::min(kStep, text_.capacity() - needed) : kStep;
    text_.resize(std::max(text_.size(), needed + step));
    cursor_ = text_.data() + used;
    end_ = text_.data() + text_.size();
  }

  // Copies a text up to the first masked or non-printing character, and says how much that is. What stands behind it in
  // the output is overwritten, as far as the text's size.
  template <typename Unit>
  static std::size_t CopyClean(std::basic_string_view<Unit> text, wchar_t* to) noexcept {
    std::size_t clean = text.size();
    ForEachBlock(
        text.data(), text.size(),
        [to, &clean](const auto& block, std::size_t i) {
          block.Store(to + i);
          const BlockFlags flags = block.ToEscape();
          if (flags != 0) {
            clean = i + FirstFlag(flags);
          }
          return flags == 0;
        },
        [to, text, &clean](std::size_t i) {
          to[i] = static_cast<wchar_t>(text[i]);
          if (EscapeLetterOf(text[i]) == 0 && !IsNonPrinting(text[i])) {
            return true;
          }
          clean = i;
          return false;
        });
    return clean;
  }

  // The rest of a text, which begins with a masked or non-printing character, and room for what follows it.
  template <typename Unit>
  void PutRest(std::basic_string_view<Unit> text) {
    const bool escape = std::any_of(text.begin(), text.end(), [](Unit unit) { return EscapeLetterOf(unit) != 0; });
    if (!escape) {
      for (const Unit unit : text) {
        Put(static_cast<wchar_t>(unit));
      }
    }
    while (escape && !text.empty()) {
      const auto piece = text.substr(0, kEscapePiece);
      text.remove_prefix(piece.size());
      cursor_ = CopyEscaped(piece.data(), piece.data() + piece.size(), Room(piece.size() * kUnicodeEscapeLength + 8));
    }
    Room(2);
  }

  template <typename Unit>
  static wchar_t* CopyEscaped(const Unit* at, const Unit* end, wchar_t* to) noexcept {
    while (at != end) {
      if (end - at >= 8) {
        // Eight are copied, and taken up to one that must be escaped.
        const UnitBlock<8> block(at);
        block.Store(to);
        const BlockFlags flags = block.ToEscape();
        const std::size_t taken = flags == 0 ? 8 : FirstFlag(flags);
        at += taken;
        to += taken;
        if (flags == 0) {
          continue;
        }
      }
      to = WriteEscaped(*at++, to);
    }
    return to;
  }

  std::wstring text_;
  wchar_t* cursor_ = nullptr;  // within `text_`, once there is room
  wchar_t* end_ = nullptr;
  std::wostream* stream_ = nullptr;
};

}  // namespace Zelto::Json
