/// @file
/// The stack of 16-bit units on which the texts of a document are put while it is read. Not installed.
#pragma once

#include "zelto/json/unit_block.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>

namespace Zelto::Json {

/// A growing run of units whose end is cut off again and again; new room is not initialised.
class UnitStack {
 public:
  std::size_t Size() const noexcept { return size_; }
  char16_t* Data() noexcept { return units_.get(); }
  const char16_t* Data() const noexcept { return units_.get(); }
  void CutTo(std::size_t size) noexcept { size_ = size; }

  void Push(char16_t unit) {
    *Room(1) = unit;
    ++size_;
  }

  /// Appends a text of ASCII.
  template <std::size_t Size>
  void Append(const char16_t (&text)[Size]) {
    std::copy_n(text, Size - 1, Room(Size - 1));
    size_ += Size - 1;
  }

  /// Appends characters up to the first one that is above U+FFFF or that `stops_at(block)` flags, and returns where
  /// that is. At least eight units behind the old end can be read afterwards, be they of use or not.
  template <typename StopsAt>
  const wchar_t* AppendUntil(const wchar_t* at, const wchar_t* end, const StopsAt& stops_at) {
    for (; end - at >= 8; at += 8) {
      const BlockFlags flags = CopyBlock(at, stops_at);
      if (flags != 0) {
        size_ += FirstFlag(flags);
        return at + FirstFlag(flags);
      }
      size_ += 8;
    }
    wchar_t last[8] = {};
    const auto left = static_cast<std::size_t>(std::copy(at, end, last) - last);
    const BlockFlags flags = CopyBlock(last, stops_at);
    const std::size_t taken = flags == 0 ? left : std::min(left, FirstFlag(flags));
    size_ += taken;
    return at + taken;
  }

  /// Where the next `count` units may be written.
  char16_t* Room(std::size_t count) {
    if (capacity_ - size_ < count) {
      Grow(count);
    }
    return units_.get() + size_;
  }

  void Advance(std::size_t count) noexcept { size_ += count; }

 private:
  template <typename StopsAt>
  BlockFlags CopyBlock(const wchar_t* eight, const StopsAt& stops_at) {
    const UnitBlock<8> block(eight);
    block.Store(Room(8));
    return stops_at(block) | UnitBlock<8>::TooWide(eight);
  }

  void Grow(std::size_t count) {
    const std::size_t capacity = std::max({capacity_ * 2, size_ + count, std::size_t{512}});
    auto units = std::make_unique_for_overwrite<char16_t[]>(capacity);
    if (size_ != 0) {
      std::memcpy(units.get(), units_.get(), size_ * sizeof(char16_t));
    }
    units_ = std::move(units);
    capacity_ = capacity;
  }

  std::unique_ptr<char16_t[]> units_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace Zelto::Json
