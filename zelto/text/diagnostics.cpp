#include "zelto/text/diagnostics.h"

#include "zelto/platform/debug_output.h"

#include <memory>
#include <mutex>
#include <utility>

namespace Zelto::Utilities {
namespace {

struct CurrentSink {
  std::mutex lock;
  std::shared_ptr<const Diagnostics::Sink> sink;  // none: the default
};

CurrentSink& Current() {
  // Never destroyed: threads may report while static objects are being destroyed.
  static CurrentSink& current = *new CurrentSink;
  return current;
}

}  // namespace

void Diagnostics::SetSink(Sink sink) {
  auto next = sink ? std::make_shared<const Sink>(std::move(sink)) : nullptr;
  {
    const std::lock_guard<std::mutex> guard(Current().lock);
    Current().sink.swap(next);
  }
  // The former sink is released here, outside the lock: its destructor may report, too.
}

void Diagnostics::Report(const std::wstring& text) noexcept {
  try {
    std::shared_ptr<const Sink> sink;
    {
      const std::lock_guard<std::mutex> guard(Current().lock);
      sink = Current().sink;
    }
    if (sink != nullptr) {
      (*sink)(text);
    } else {
      Platform::WriteDebugText(text);
    }
  } catch (...) {
    // A report has nobody to tell about its own failure.
  }
}

}  // namespace Zelto::Utilities
