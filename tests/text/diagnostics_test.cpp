#include "zelto/text/diagnostics.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace Zelto::Utilities {
namespace {

class DiagnosticsTest : public testing::Test {
 protected:
  ~DiagnosticsTest() override { Diagnostics::SetSink(nullptr); }
};

TEST_F(DiagnosticsTest, ReportsReachTheSinkUntilTheDefaultReturns) {
  std::wstring heard;
  Diagnostics::SetSink([&heard](const std::wstring& text) { heard += text; });
  Diagnostics::Report(L"one");
  Diagnostics::SetSink({});
  Diagnostics::Report(L"two");
  EXPECT_EQ(heard, L"one");
}

TEST_F(DiagnosticsTest, ASinkMayThrowAndReportAndReplaceItself) {
  int calls = 0;
  Diagnostics::SetSink([&calls](const std::wstring& text) {
    ++calls;
    if (text == L"outer") {
      Diagnostics::Report(L"inner");
      Diagnostics::SetSink(nullptr);
    }
    throw std::runtime_error("the sink is broken");
  });
  Diagnostics::Report(L"outer");
  Diagnostics::Report(L"not heard");
  EXPECT_EQ(calls, 2);
}

TEST_F(DiagnosticsTest, ThreadsReportWhileTheSinkChanges) {
  std::atomic<int> heard{0};
  std::atomic<bool> done{false};
  const auto count = [&heard](const std::wstring&) { ++heard; };
  Diagnostics::SetSink(count);
  std::vector<std::thread> reporters;
  for (int i = 0; i < 3; ++i) {
    reporters.emplace_back([&done] {
      while (!done) {
        Diagnostics::Report(L"text");
      }
    });
  }
  for (int i = 0; i < 2000; ++i) {
    Diagnostics::SetSink(count);
  }
  while (heard == 0) {
    std::this_thread::yield();
  }
  done = true;
  for (std::thread& reporter : reporters) {
    reporter.join();
  }
}

}  // namespace
}  // namespace Zelto::Utilities
