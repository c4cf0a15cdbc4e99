#include "tests/files/child_process.h"

#include <windows.h>

#include <stdexcept>

namespace Zelto::Testing {
namespace {

constexpr UINT kKilled = 0xDEAD;

}  // namespace

struct ChildProcess::State {
  HANDLE process = nullptr;
  HANDLE output = nullptr;
};

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments)
    : state_(std::make_unique<State>()) {
  std::string command = "\"" + program + "\"";
  for (const std::string& argument : arguments) {
    command += " " + argument;
  }
  SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  HANDLE write_end = nullptr;
  if (!::CreatePipe(&state_->output, &write_end, &inheritable, 0)) {
    throw std::runtime_error("CreatePipe");
  }
  ::SetHandleInformation(state_->output, HANDLE_FLAG_INHERIT, 0);
  STARTUPINFOA startup{};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = write_end;
  PROCESS_INFORMATION started{};
  const BOOL done =
      ::CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &started);
  ::CloseHandle(write_end);
  if (!done) {
    throw std::runtime_error("CreateProcessA");
  }
  ::CloseHandle(started.hThread);
  state_->process = started.hProcess;
}

ChildProcess::ChildProcess(ChildProcess&&) noexcept = default;

ChildProcess::~ChildProcess() {
  if (state_ != nullptr) {
    Kill();
    Wait();
    ::CloseHandle(state_->output);
    ::CloseHandle(state_->process);
  }
}

bool ChildProcess::ReadByte(char& byte) {
  DWORD count = 0;
  return ::ReadFile(state_->output, &byte, 1, &count, nullptr) && count == 1;
}

void ChildProcess::Kill() {
  ::TerminateProcess(state_->process, kKilled);
}

int ChildProcess::Wait() {
  DWORD code = 0;
  ::WaitForSingleObject(state_->process, INFINITE);
  ::GetExitCodeProcess(state_->process, &code);
  return code == kKilled ? -1 : static_cast<int>(code);
}

}  // namespace Zelto::Testing
