/// @file
/// Texts that must not stay behind in memory. Not installed.
#pragma once

#include <cstddef>
#include <string>

namespace Zelto::Utilities {

/// Overwrites a text that is about to go, also the part of its memory that it does not use now, and empties it. The
/// compiler does not leave it out.
template <class Unit>
void Wipe(std::basic_string<Unit>& text) noexcept {
  text.resize(text.capacity());
  volatile Unit* const units = text.data();
  for (std::size_t i = 0; i < text.size(); ++i) {
    units[i] = Unit{};
  }
  text.clear();
}

/// The same for a text that held nothing before what it holds now.
template <class Unit>
void WipeIfUsed(std::basic_string<Unit>& text) noexcept {
  if (!text.empty()) {
    Wipe(text);
  }
}

/// Wipes a text at the end of a scope, however it ends.
template <class Unit>
class WipeAtEnd {
 public:
  explicit WipeAtEnd(std::basic_string<Unit>& text) noexcept : text_(text) {}
  ~WipeAtEnd() { Wipe(text_); }
  WipeAtEnd(const WipeAtEnd&) = delete;
  WipeAtEnd& operator=(const WipeAtEnd&) = delete;

 private:
  std::basic_string<Unit>& text_;
};

}  // namespace Zelto::Utilities
