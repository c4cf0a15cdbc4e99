/// @file
/// Servers, clients and bare pipe ends for the pipe tests.
#pragma once

#include "tests/platform/pipe_support.h"
#include "tests/support/diagnostics_recorder.h"
#include "zelto/pipes/async_named_pipe_client.h"
#include "zelto/pipes/multi_client_named_pipe_server.h"
#include "zelto/platform/message_pipe.h"
#include "zelto/platform/process.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Zelto::Utilities {

using Encoding = NamedPipeMessageEncoding;
using Clock = std::chrono::steady_clock;
using Testing::Counter;
using Testing::DiagnosticsRecorder;
using Testing::Eventually;
using Testing::kLimit;

inline constexpr std::uint32_t kLimitMs = 20000;

/// A name that no other test, and no other run, uses.
inline std::wstring UniquePipeName() {
  static std::atomic<int> count = 0;
  return L"zelto-test-" + std::to_wstring(Platform::CurrentProcessId()) + L"-" + std::to_wstring(++count);
}

inline std::shared_ptr<MultiClientNamedPipeServer> MakeServer(
    const std::wstring& name, MessageReceivedCallback message_received,
    ClientDroppedCallback client_dropped = [](unsigned int) {}) {
  return MultiClientNamedPipeServer::Create(name, std::move(message_received), Encoding::Utf8, 5000, 4096, false,
                                            std::move(client_dropped));
}

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
  std::shared_ptr<Counter> dropped = std::make_shared<Counter>();
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

/// Writes requests and never reads until the server's answer is stuck: then the server reads no more, either.
inline void StopReading(AsyncNamedPipeClient& client) {
  client.SetTimeout(300);
  EXPECT_THROW(
      {
        for (int i = 0; i < 100000; ++i) {
          client.WriteMessage(std::wstring(60000, L'w')).get();
        }
      },
      std::runtime_error);
}

/// One end of a pipe without any of the classes under test.
struct BareEnd {
  /// A server's instance, with room for some messages that nobody reads. @param instances  the most the pipe may have
  static BareEnd Listen(const std::wstring& name, std::uint32_t instances = 255) {
    return {Platform::Testing::MakeInstance(
        Platform::PipeSettings{.name = L"\\\\.\\pipe\\" + name, .maximum_instances = instances, .buffer_size = 65536})};
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
  void Accept() { EXPECT_EQ(Platform::Testing::Connect(pipe), Platform::kSuccess); }
  Platform::ErrorCode Write(const std::string& bytes) { return Platform::Testing::Write(pipe, bytes); }
  /// @return the error and the bytes
  std::pair<Platform::ErrorCode, std::string> Read() {
    const Platform::Testing::Message message = Platform::Testing::Read(pipe, 65536);
    return {message.code, message.text};
  }

  SharedHandle pipe;
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
