#include "zelto/platform/message_pipe.h"

#include <windows.h>

#include <string_view>

namespace Zelto::Platform {

using Utilities::SharedHandle;

namespace {

constexpr std::wstring_view kPrefix = L"\\\\.\\pipe\\";

// What a client opens a pipe for. GENERIC_WRITE would ask for the right to make instances, too.
constexpr DWORD kClientAccess = GENERIC_READ | FILE_WRITE_DATA | FILE_WRITE_ATTRIBUTES;

// Each listening instance takes one client; a burst needs many.
constexpr std::uint32_t kListeningInstances = 60;

// Another name would open a file, and the bare prefix the directory of all pipes; U+0000 would make it a shorter one.
bool IsPipeName(const std::wstring& name) noexcept {
  return name.size() > kPrefix.size() && name.compare(0, kPrefix.size(), kPrefix) == 0 &&
         name.find(L'\0') == std::wstring::npos;
}

// Takes ownership of a handle that a call made, or tells the call's error.
ErrorCode Adopt(HANDLE handle, SharedHandle& pipe) {
  if (handle == INVALID_HANDLE_VALUE) {
    return ::GetLastError();
  }
  pipe = SharedHandle(handle);
  return kSuccess;
}

}  // namespace

ErrorCode CreatePipeInstance(const PipeSettings& settings, SharedHandle& pipe) {
  if (!IsPipeName(settings.name)) {
    return kInvalidName;
  }
  SECURITY_DESCRIPTOR everyone{};
  SECURITY_ATTRIBUTES attributes{sizeof attributes, &everyone, TRUE};
  if (settings.allow_everyone && (!::InitializeSecurityDescriptor(&everyone, SECURITY_DESCRIPTOR_REVISION) ||
                                  !::SetSecurityDescriptorDacl(&everyone, TRUE, nullptr, FALSE))) {
    return ::GetLastError();
  }
  return Adopt(::CreateNamedPipeW(settings.name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                  PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, settings.maximum_instances,
                                  settings.buffer_size, settings.buffer_size, settings.default_timeout_ms,
                                  settings.allow_everyone ? &attributes : nullptr),
               pipe);
}

ErrorCode OpenPipe(const std::wstring& name, SharedHandle& pipe) {
  if (!IsPipeName(name)) {
    return kInvalidName;
  }
  return Adopt(::CreateFileW(name.c_str(), kClientAccess, 0, nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr),
               pipe);
}

ErrorCode SetMessageReadMode(const SharedHandle& pipe) noexcept {
  DWORD mode = PIPE_READMODE_MESSAGE;
  return ::SetNamedPipeHandleState(pipe.Get(), &mode, nullptr, nullptr) ? kSuccess : ::GetLastError();
}

ErrorCode WaitForFreePipe(const std::wstring& name, std::uint32_t timeout_ms) noexcept {
  if (!IsPipeName(name)) {
    return kInvalidName;
  }
  if (::WaitNamedPipeW(name.c_str(), timeout_ms)) {
    return kSuccess;
  }
  const ErrorCode error = ::GetLastError();
  return error == ERROR_SEM_TIMEOUT ? kTimeout : error;
}

ErrorCode DisconnectPipe(const SharedHandle& pipe) noexcept {
  return ::DisconnectNamedPipe(pipe.Get()) ? kSuccess : ::GetLastError();
}

std::uint32_t ListeningInstances() noexcept {
  return kListeningInstances;
}

bool DisconnectEndsReads() noexcept {
  return false;
}

ErrorCode GetPipePeer(const SharedHandle& pipe, bool server_side, PipePeer& peer) noexcept {
  ULONG process_id = 0;
  const BOOL told = server_side ? ::GetNamedPipeClientProcessId(pipe.Get(), &process_id)
                                : ::GetNamedPipeServerProcessId(pipe.Get(), &process_id);
  if (!told) {
    return ::GetLastError();
  }
  peer.process_id = process_id;
  peer.user_id.reset();
  return kSuccess;
}

}  // namespace Zelto::Platform
