/// @file
/// Constants that stay to the very end of the process. Not installed.
#pragma once

namespace Zelto::Utilities {

/// A value that is never destroyed: other static objects may use it in their destructors, and threads while the process
/// ends. Where it can be `constinit`, it is also there before any code runs.
template <typename Value>
union NeverDestroyed {
  constexpr NeverDestroyed() noexcept : value() {}
  ~NeverDestroyed() {}  // `= default` would delete it
  NeverDestroyed(const NeverDestroyed&) = delete;
  NeverDestroyed& operator=(const NeverDestroyed&) = delete;

  Value value;
};

}  // namespace Zelto::Utilities
