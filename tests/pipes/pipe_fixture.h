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
using Platform::Testing::Connect;
using Platform::Testing::Read;
using Platform::Testing::Write;
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
  EchoServer()
      : server(MakeServer(
            name, [](unsigned int id, const std::wstring& message) { return std::to_wstring(id) + L":" + message; },
            [happened = dropped](unsigned int id) { happened->Add(id); })) {}

  void Start(PipeAuthenticationCallback authenticate = {}) const { server->Start(std::move(authenticate)); }

  std::wstring name = UniquePipeName();
  std::shared_ptr<Counter> dropped = std::make_shared<Counter>();
  std::shared_ptr<MultiClientNamedPipeServer> server;
};

inline std::shared_ptr<AsyncNamedPipeClient> OpenClient(const std::wstring& name, std::uint32_t timeout_ms = kLimitMs) {
  auto client = std::make_shared<AsyncNamedPipeClient>(name, timeout_ms);
  client->Open();
  return client;
}

inline std::wstring Ask(AsyncNamedPipeClient& client, const std::wstring& message) {
  client.WriteMessage(message).get();
  return client.ReadMessage().get();
}

/// A server's instance without any of the classes under test, with room for some messages that nobody reads.
/// @param instances  the most the pipe may have
inline SharedHandle Listen(const std::wstring& name, std::uint32_t instances = 255) {
  return Platform::Testing::MakeInstance(
      {.name = L"\\\\.\\pipe\\" + name, .maximum_instances = instances, .buffer_size = 65536});
}

/// A client's end without any of the classes under test.
inline SharedHandle OpenBare(const std::wstring& name) {
  SharedHandle end;
  EXPECT_TRUE(Eventually([&] { return Platform::OpenPipe(L"\\\\.\\pipe\\" + name, end) == Platform::kSuccess; }));
  EXPECT_EQ(Platform::SetMessageReadMode(end), Platform::kSuccess);
  return end;
}

/// A bare server with one client of the library.
struct BareServerAndClient {
  explicit BareServerAndClient(std::uint32_t timeout_ms = kLimitMs)
      : name(UniquePipeName()), server(Listen(name)), client(OpenClient(name, timeout_ms)) {
    EXPECT_EQ(Connect(server), Platform::kSuccess);
  }

  std::wstring name;
  SharedHandle server;
  std::shared_ptr<AsyncNamedPipeClient> client;
};

/// Expects `act` to throw an exception with exactly this text.
template <class Act>
void ExpectFailure(const Act& act, const std::string& text) {
  EXPECT_THAT(act, testing::ThrowsMessage<std::exception>(text));
}

/// Expects `act` to throw a `Win32Exception` whose text begins so, with this code.
template <class Act>
void ExpectWin32Failure(const Act& act, const std::string& beginning, std::uint32_t code) {
  EXPECT_THAT(act, testing::Throws<Win32Exception>(
                       testing::AllOf(testing::Property(&Win32Exception::what, testing::StartsWith(beginning)),
                                      testing::Property(&Win32Exception::GetErrorCode, code))));
}

/// Writes messages of 60000 bytes until the pipe takes no more. @return how many were taken
inline int Fill(AsyncNamedPipeClient& client) {
  int taken = 0;
  client.SetTimeout(300);
  ExpectFailure(
      [&] {
        for (; taken < 100000; ++taken) {
          client.WriteMessage(std::wstring(60000, L'f')).get();
        }
      },
      "Timeout 300 expired while writing to named pipe");
  client.SetTimeout(kLimitMs);
  return taken;
}

}  // namespace Zelto::Utilities
