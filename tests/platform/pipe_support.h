/// @file
/// What the tests of message pipes share: ends made in a line, operations run to their end within a generous limit.
#pragma once

#include "zelto/platform/message_pipe.h"
#include "zelto/platform/process.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace Zelto::Platform::Testing {

using Utilities::SharedHandle;

inline constexpr std::uint32_t kLimitMs = 20000;  ///< far above what anything here takes

// What differs between the targets: in windows/pipe_test.cpp and posix/pipe_test.cpp.
/// Makes a client's end that lies in no `SharedHandle` yet, as a caller with a handle from elsewhere has.
void* OpenRawClient(const std::wstring& name);
/// The codes of an end that lost its peer, by what it does then or was doing.
struct LossCodes {
  ErrorCode read;
  ErrorCode write;
  ErrorCode pending_read;
  ErrorCode pending_write;
};
/// On a client's end whose server closed, or died, without disconnecting.
LossCodes ServerClosed();
/// Whether disconnecting takes away what the client has not read.
bool DisconnectDropsAnswers();

/// A full pipe name that no other process uses.
inline std::wstring PipeName(const std::string& suffix) {
  const std::string name = "Zelto-Test-" + std::to_string(CurrentProcessId()) + "-" + suffix;
  return L"\\\\.\\pipe\\" + std::wstring(name.begin(), name.end());
}

/// An operation with all that it needs.
class Operation {
 public:
  explicit Operation(SharedHandle pipe) : operation_(std::move(pipe), event_, record_) {}
  PipeOperation* operator->() noexcept { return &operation_; }
  PipeOperation& operator*() noexcept { return operation_; }

  /// The message must outlive the operation.
  ErrorCode BeginWrite(std::string_view message) {
    return operation_.BeginWrite(message.data(), static_cast<std::uint32_t>(message.size()));
  }
  ErrorCode Finish() { return operation_.Finish(transferred_); }
  /// The outcome of an operation that `begun` is the first result of. 1460 when it does not end.
  ErrorCode Outcome(ErrorCode begun = kIoPending) {
    if (begun == kIoPending && WaitForAny(std::vector<Waitable>{operation_}, kLimitMs) != 0) {
      return kTimeout;
    }
    const bool accepted = begun == kIoPending || begun == kSuccess || begun == kMoreData || begun == kPipeConnected;
    return accepted ? Finish() : begun;
  }
  std::uint32_t Transferred() const noexcept { return transferred_; }

 private:
  SharedHandle event_;
  OverlappedRecord record_;
  PipeOperation operation_;
  std::uint32_t transferred_ = 0;
};

inline ErrorCode Connect(const SharedHandle& server) {
  Operation operation(server);
  return operation.Outcome(operation->BeginConnect());
}

inline ErrorCode Write(const SharedHandle& pipe, const std::string& message) {
  Operation operation(pipe);
  const ErrorCode result = operation.Outcome(operation.BeginWrite(message));
  EXPECT_TRUE(result != kSuccess || operation.Transferred() == message.size());
  return result;
}

/// Writes until a write is pending: the last.
inline std::deque<Operation> FillUp(const SharedHandle& pipe, const std::string& message) {
  std::deque<Operation> writes;
  while (writes.size() < 10000 && writes.emplace_back(pipe).BeginWrite(message) == kSuccess) {
  }
  EXPECT_TRUE(writes.back()->IsPending());
  return writes;
}

/// One message, or the error that ended it.
struct Message {
  ErrorCode code = kSuccess;
  std::string text;
  std::size_t chunks = 0;
};

inline Message Read(const SharedHandle& pipe, std::uint32_t chunk = 4096) {
  Message message;
  Operation operation(pipe);
  std::string buffer(chunk, '?');
  do {
    message.code = operation.Outcome(operation->BeginRead(buffer.data(), chunk));
    if (message.code == kSuccess || message.code == kMoreData) {
      message.text.append(buffer, 0, operation.Transferred());
      ++message.chunks;
    }
  } while (message.code == kMoreData);
  return message;
}

inline SharedHandle MakeInstance(const PipeSettings& settings) {
  SharedHandle server;
  EXPECT_EQ(CreatePipeInstance(settings, server), kSuccess);
  return server;
}

/// A server's instance and its client, connected.
struct Pair {
  std::wstring name;
  SharedHandle server;
  SharedHandle client;

  explicit Pair(const std::string& suffix, std::uint32_t buffer_size = 4096)
      : name(PipeName(suffix)), server(MakeInstance({.name = name, .buffer_size = buffer_size})) {
    EXPECT_EQ(OpenPipe(name, client), kSuccess);
    EXPECT_EQ(SetMessageReadMode(client), kSuccess);
    EXPECT_EQ(Connect(server), kSuccess);
  }
};

/// Reproducible bytes that show a lost, doubled or moved piece.
inline std::string Bytes(std::size_t size) {
  std::string bytes(size, '\0');
  std::uint32_t state = 1;
  for (char& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<char>(state >> 24);
  }
  return bytes;
}

}  // namespace Zelto::Platform::Testing
