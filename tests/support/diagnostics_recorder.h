/// @file
/// What the library tells its sink.
#pragma once

#include "tests/support/counter.h"
#include "zelto/text/diagnostics.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Zelto::Testing {

/// Takes what is told to the diagnostics sink while it lives.
class DiagnosticsRecorder {
 public:
  DiagnosticsRecorder() {
    Utilities::Diagnostics::SetSink([heard = heard_](const std::wstring& text) {
      const std::lock_guard guard(heard->mutex);
      heard->texts.push_back(text);
    });
  }
  ~DiagnosticsRecorder() { Utilities::Diagnostics::SetSink({}); }
  DiagnosticsRecorder(const DiagnosticsRecorder&) = delete;
  DiagnosticsRecorder& operator=(const DiagnosticsRecorder&) = delete;

  /// Waits until a text with these words was heard.
  bool Heard(const std::wstring& words) const {
    return Eventually([&] { return Count(words) != 0; });
  }

  /// The number of texts with these words since the last call.
  std::size_t Take(const std::wstring& words) {
    const std::size_t count = Count(words);
    const std::lock_guard guard(heard_->mutex);
    heard_->texts.clear();
    return count;
  }

 private:
  std::size_t Count(const std::wstring& words) const {
    const std::lock_guard guard(heard_->mutex);
    const auto has_words = [&](const std::wstring& text) { return text.find(words) != std::wstring::npos; };
    return static_cast<std::size_t>(std::count_if(heard_->texts.begin(), heard_->texts.end(), has_words));
  }

  struct Texts {
    std::mutex mutex;
    std::vector<std::wstring> texts;
  };
  const std::shared_ptr<Texts> heard_ = std::make_shared<Texts>();
};

}  // namespace Zelto::Testing
