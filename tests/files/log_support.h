// What tests of logs share.
#pragma once

#include "tests/support/temp_folder.h"
#include "zelto/text/diagnostics.h"

#include <string>
#include <vector>

namespace Zelto::Testing {

/// Collects what the library reports while this object lives.
class Reports {
 public:
  Reports() {
    Utilities::Diagnostics::SetSink([this](const std::wstring& text) { texts_.push_back(text); });
  }
  Reports(const Reports&) = delete;
  Reports& operator=(const Reports&) = delete;
  ~Reports() { Utilities::Diagnostics::SetSink({}); }

  /// The number of reports since the last call; each must name the log.
  std::size_t Take(const std::wstring& log) {
    std::size_t count = 0;
    for (const std::wstring& text : texts_) {
      count += text.find(log) != std::wstring::npos ? 1 : 0;
    }
    texts_.clear();
    return count;
  }

 private:
  std::vector<std::wstring> texts_;
};

}  // namespace Zelto::Testing
