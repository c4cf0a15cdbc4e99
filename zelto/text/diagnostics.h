/// @file
/// Where the library tells what it cannot throw.
#pragma once

#include <zelto/export.h>

#include <functional>
#include <string>

namespace Zelto::Utilities {

/// The sink for texts about failures that have no caller to be thrown to: on threads of the library's own, in
/// destructors, in callbacks. All operations may be called from any thread at any time.
class ZELTO_API Diagnostics {
 public:
  /// Takes one text without a line end. Runs on the thread that reports, possibly on several threads at once, and must
  /// not block for long. What it throws is ignored.
  using Sink = std::function<void(const std::wstring& text)>;

  Diagnostics() = delete;

  /// Sends later reports to `sink`; an empty one restores the default, which is the debugger on Windows
  /// (`OutputDebugStringW`) and silence on Linux. The former sink may still be running on another thread at the return,
  /// and is destroyed when its last call ends.
  static void SetSink(Sink sink);

  /// Sends a text to the sink. Never throws; without memory for the report, it is lost.
  static void Report(const std::wstring& text) noexcept;
};

}  // namespace Zelto::Utilities
