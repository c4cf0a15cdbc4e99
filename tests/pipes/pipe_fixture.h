/// @file
/// Servers, clients and bare pipe ends for the pipe tests.
#pragma once

#include "zelto/pipes/async_named_pipe_client.h"
#include "zelto/pipes/multi_client_named_pipe_server.h"
#include "zelto/platform/message_pipe.h"
#include "zelto/platform/process.h"
#include "zelto/text/diagnostics.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Zelto::Utilities {

using Encoding = NamedPipeMessageEncoding;
using Clock = std::chrono::steady_clock;

inline constexpr std::chrono::seconds kLimit{20};
inline constexpr std::uint32_t kLimitMs = 20000;

/// A name that no other test, and no other run, uses.
inline std::wstring UniquePipeName() {
  static std::atomic<int> count = 0;
  return L"zelto-test-" + std::to_wstring(Platform::CurrentProcessId()) + L"-" + std::to_wstring(++count);
}

/// Waits, generously, until something that other threads bring about is so.
template <class Condition>
bool Eventually(const Condition& condition) {
  const auto end = Clock::now() + kLimit;
  while (!condition()) {
    if (Clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

/// Something that happened on other threads, as often as it did.
class Happenings {
 public:
  void Add(unsigned int id = 0) {
    const std::lock_guard guard(mutex_);
    ids_.push_back(id);
    changed_.notify_all();
  }
  bool WaitFor(std::size_t count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kLimit, [&] { return ids_.size() >= count; });
  }
  std::vector<unsigned int> Ids() const {
    const std::lock_guard guard(mutex_);
    return ids_;
  }

 private:
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<unsigned int> ids_;
};

/// Takes what is told to the diagnostics sink while it lives.
class DiagnosticsRecorder {
 public:
  DiagnosticsRecorder() {
    Diagnostics::SetSink([heard = heard_](const std::wstring& text) {
      const std::lock_guard guard(heard->mutex);
      heard->text += text + L"\n";
    });
  }
  ~DiagnosticsRecorder() { Diagnostics::SetSink({}); }
  DiagnosticsRecorder(const DiagnosticsRecorder&) = delete;
  DiagnosticsRecorder& operator=(const DiagnosticsRecorder&) = delete;

  /// Waits until a text with these words was heard.
  bool Heard(const std::wstring& words) const {
    return Eventually([&] {
      const std::lock_guard guard(heard_->mutex);
      return heard_->text.find(words) != std::wstring::npos;
    });
  }

 private:
  struct Texts {
    std::mutex mutex;
    std::wstring text;
  };
  const std::shared_ptr<Texts> heard_ = std::make_shared<Texts>();
};

/// A server that answers "<id>:<message>", and what happened to it.
struct EchoServer {
  explicit EchoServer(std::wstring pipe_name = UniquePipeName(), Encoding encoding = Encoding::Utf8,
                      std::uint32_t buffer_size = 4096)
      : name(std::move(pipe_name)),
        server(MultiClientNamedPipeServer::Create(
            name, [](unsigned int id, const std::wstring& message) { return std::to_wstring(id) + L":" + message; },
            encoding, 5000, buffer_size, false, [happened = dropped](unsigned int id) { happened->Add(id); })) {}

  void Start(PipeAuthenticationCallback authenticate = {}) const { server->Start(std::move(authenticate)); }

  std::wstring name;
  std::shared_ptr<Happenings> dropped = std::make_shared<Happenings>();
  std::shared_ptr<MultiClientNamedPipeServer> server;
};

inline std::shared_ptr<AsyncNamedPipeClient> OpenClient(const std::wstring& name, std::uint32_t timeout_ms = kLimitMs,
                                                        Encoding encoding = Encoding::Utf8) {
  auto client = std::make_shared<AsyncNamedPipeClient>(name, timeout_ms);
  client->SetEncoding(encoding);
  client->Open();
  return client;
}

inline std::wstring Ask(AsyncNamedPipeClient& client, const std::wstring& message) {
  client.WriteMessage(message).get();
  return client.ReadMessage().get();
}

/// One end of a pipe without any of the classes under test.
class BareEnd {
 public:
  /// A server's instance, with room for some messages that nobody reads. @param instances  the most the pipe may have
  static BareEnd Listen(const std::wstring& name, std::uint32_t instances = 255) {
    BareEnd end;
    const Platform::ErrorCode code = Platform::CreatePipeInstance(
        {.name = L"\\\\.\\pipe\\" + name, .maximum_instances = instances, .buffer_size = 65536}, end.pipe);
    EXPECT_EQ(code, Platform::kSuccess);
    return end;
  }

  /// A client's end.
  static BareEnd Open(const std::wstring& name) {
    BareEnd end;
    Platform::ErrorCode code = Platform::kPipeBusy;
    EXPECT_TRUE(Eventually([&] {
      code = Platform::OpenPipe(L"\\\\.\\pipe\\" + name, end.pipe);
      return code != Platform::kPipeBusy && code != Platform::kFileNotFound;
    }));
    EXPECT_EQ(code, Platform::kSuccess);
    EXPECT_EQ(Platform::SetMessageReadMode(end.pipe), Platform::kSuccess);
    return end;
  }

  /// Waits for a client.
  void Accept() {
    SharedHandle event;
    Platform::OverlappedRecord record;
    Platform::PipeOperation operation(pipe, event, record);
    operation.BeginConnect();
    EXPECT_EQ(Complete(operation).first, Platform::kSuccess);
  }

  Platform::ErrorCode Write(std::string_view bytes) {
    SharedHandle event;
    Platform::OverlappedRecord record;
    Platform::PipeOperation operation(pipe, event, record);
    const Platform::ErrorCode begun = operation.BeginWrite(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    return begun == Platform::kIoPending ? Complete(operation).first : begun;
  }

  /// Reads a message of at most 64 KiB. @return the error and the bytes
  std::pair<Platform::ErrorCode, std::string> Read() {
    std::string bytes(65536, '\0');
    SharedHandle event;
    Platform::OverlappedRecord record;
    Platform::PipeOperation operation(pipe, event, record);
    const Platform::ErrorCode begun = operation.BeginRead(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    if (begun != Platform::kSuccess && begun != Platform::kIoPending) {
      return {begun, {}};
    }
    const auto [code, count] = Complete(operation);
    bytes.resize(count);
    return {code, bytes};
  }

  SharedHandle pipe;

 private:
  static std::pair<Platform::ErrorCode, std::uint32_t> Complete(Platform::PipeOperation& operation) {
    const std::array<Platform::Waitable, 1> things{operation};
    std::uint32_t count = 0;
    if (Platform::WaitForAny(things, kLimitMs) != 0) {
      operation.Cancel();
      return {Platform::kTimeout, 0};
    }
    const Platform::ErrorCode code = operation.Finish(count);
    return {code, count};
  }
};

/// A bare server with one client of the library.
struct BareServerAndClient {
  explicit BareServerAndClient(std::uint32_t timeout_ms = kLimitMs, Encoding encoding = Encoding::Utf8)
      : name(UniquePipeName()), server(BareEnd::Listen(name)), client(OpenClient(name, timeout_ms, encoding)) {
    server.Accept();
  }

  std::wstring name;
  BareEnd server;
  std::shared_ptr<AsyncNamedPipeClient> client;
};

/// Expects `act` to throw an exception with exactly this text.
template <class Act>
void ExpectFailure(const Act& act, const std::string& text) {
  try {
    act();
    ADD_FAILURE() << "nothing thrown, expected: " << text;
  } catch (const std::exception& error) {
    EXPECT_EQ(std::string(error.what()), text);
  }
}

/// Expects `act` to throw a `Win32Exception` whose text begins so, with this code.
template <class Act>
void ExpectWin32Failure(const Act& act, const std::string& beginning, std::uint32_t code) {
  try {
    act();
    ADD_FAILURE() << "nothing thrown, expected: " << beginning;
  } catch (const Win32Exception& error) {
    EXPECT_THAT(error.what(), testing::StartsWith(beginning));
    EXPECT_EQ(error.GetErrorCode(), code);
  }
}

}  // namespace Zelto::Utilities
