#include "zelto/platform/message_pipe.h"

#include "zelto/platform/posix/errno_codes.h"
#include "zelto/platform/posix/pipe_end.h"
#include "zelto/platform/posix/pipe_names.h"
#include "zelto/platform/posix/pipe_socket.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <new>
#include <utility>

namespace Zelto::Platform {

using Utilities::SharedHandle;

namespace {

// How long a client that found the queue full holds off. Whether there is room now shows only by connecting.
constexpr std::uint32_t kBusyPauseMs = 20;

std::string SocketPath(const PipeDirectory& directory, const std::string& file) {
  return directory.path + '/' + file + ".pipe";
}

// One attempt in one directory.
ErrorCode ConnectIn(const PipeDirectory& directory, const std::string& file, UniqueDescriptor& client) {
  uid_t owner = 0;
  if (const ErrorCode error = CheckPipeDirectory(directory, false, owner); error != kSuccess) {
    return error;
  }
  PipeAddress address;
  if (!address.Set(SocketPath(directory, file))) {
    return kInvalidName;
  }
  UniqueDescriptor made = MakePipeSocket();
  if (!made) {
    return CodeFromErrno(errno);
  }
  while (::connect(made.Get(), address.Get(), address.Size()) != 0) {
    if (errno != EINTR) {
      return CodeFromErrno(errno);
    }
  }
  ucred server{};
  if (!LetBlock(made.Get()) || !GetPeerCredentials(made.Get(), server)) {
    return CodeFromErrno(errno);
  }
  if (server.uid != 0 && server.uid != owner && server.uid != ::geteuid()) {
    return kAccessDenied;
  }
  client = std::move(made);
  return kSuccess;
}

}  // namespace

ErrorCode CreatePipeInstance(const PipeSettings& settings, SharedHandle& pipe) {
  PipeListenerShare share;
  if (const ErrorCode error = PipeListener::Share(settings, share); error != kSuccess) {
    return error;
  }
  pipe = SharedHandle(std::make_shared<PipeHandle>(std::move(share)));
  return kSuccess;
}

ErrorCode OpenPipe(const std::wstring& name, SharedHandle& pipe) {
  const std::string file = PipeFileName(name);
  if (file.empty()) {
    return kInvalidName;
  }
  for (const PipeDirectory& directory : PipeDirectories()) {
    UniqueDescriptor client;
    const ErrorCode error = ConnectIn(directory, file, client);
    if (error == kSuccess) {
      pipe = SharedHandle(std::make_shared<PipeHandle>(std::move(client)));
    }
    if (error != kFileNotFound) {
      return error;
    }
  }
  return kFileNotFound;
}

ErrorCode SetMessageReadMode(const SharedHandle& pipe) noexcept {
  return pipe && pipe.State()->Pipe() != nullptr ? kSuccess : kInvalidHandle;
}

ErrorCode WaitForFreePipe(const std::wstring& name, std::uint32_t timeout_ms) noexcept {
  try {
    const std::string file = PipeFileName(name);
    if (file.empty()) {
      return kInvalidName;
    }
    for (const PipeDirectory& directory : PipeDirectories()) {
      struct stat status {};
      if (::lstat(SocketPath(directory, file).c_str(), &status) != 0) {
        continue;
      }
      const std::uint32_t pause = timeout_ms == 0 ? kBusyPauseMs : std::min(timeout_ms, kBusyPauseMs);
      const timespec time{0, static_cast<long>(pause) * 1'000'000};
      ::clock_nanosleep(CLOCK_MONOTONIC, 0, &time, nullptr);
      return kSuccess;
    }
    return kFileNotFound;
  } catch (const std::bad_alloc&) {
    return kNotEnoughMemory;
  }
}

ErrorCode DisconnectPipe(const SharedHandle& pipe) noexcept {
  PipeEnd* end = pipe ? pipe.State()->Pipe() : nullptr;
  return end != nullptr ? end->Disconnect() : kInvalidHandle;
}

std::uint32_t ListeningInstances() noexcept {
  return 1;
}

bool DisconnectEndsReads() noexcept {
  return true;
}

ErrorCode GetPipePeer(const SharedHandle& pipe, bool, PipePeer& peer) noexcept {
  PipeEnd* end = pipe ? pipe.State()->Pipe() : nullptr;
  ucred credentials{};
  const ErrorCode error = end != nullptr ? end->Peer(credentials) : kInvalidHandle;
  if (error == kSuccess) {
    peer.process_id = static_cast<std::uint32_t>(credentials.pid);
    peer.user_id = credentials.uid;
  }
  return error;
}

}  // namespace Zelto::Platform
