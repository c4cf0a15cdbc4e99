#include "tests/support/child_process.h"

#include <windows.h>

#include <stdexcept>

namespace Zelto::Testing {

struct ChildProcess::State {
  HANDLE process = nullptr;
  DWORD id = 0;
  HANDLE input = nullptr;
  HANDLE output = nullptr;
  bool killed = false;
};

ChildProcess::ChildProcess(const std::string& name, const std::vector<std::string>& arguments)
    : state_(std::make_unique<State>()) {
  char path[MAX_PATH] = {};
  ::GetModuleFileNameA(nullptr, path, MAX_PATH);
  std::string program = path;
  program.replace(program.find_last_of('\\') + 1, std::string::npos, name + ".exe");
  std::string command = '"' + program + '"';
  for (const std::string& argument : arguments) {
    command += " \"" + argument + '"';
  }
  HANDLE child_input = nullptr;
  HANDLE child_output = nullptr;
  if (!::CreatePipe(&child_input, &state_->input, nullptr, 0) ||
      !::CreatePipe(&state_->output, &child_output, nullptr, 0)) {
    throw std::runtime_error("no pipe for a child process");
  }
  ::SetHandleInformation(child_input, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  ::SetHandleInformation(child_output, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = child_input;
  startup.hStdOutput = child_output;
  startup.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION process{};
  const BOOL started = ::CreateProcessA(program.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                        &startup, &process);
  ::CloseHandle(child_input);
  ::CloseHandle(child_output);
  if (!started) {
    throw std::runtime_error("cannot start " + program);
  }
  ::CloseHandle(process.hThread);
  state_->process = process.hProcess;
  state_->id = process.dwProcessId;
}

ChildProcess::~ChildProcess() {
  Kill();
  CloseInput();
  ::CloseHandle(state_->output);
  ::CloseHandle(state_->process);
}

unsigned int ChildProcess::Id() const {
  return state_->id;
}

std::string ChildProcess::ReadLine() {
  std::string line;
  char next = 0;
  DWORD count = 0;
  while (::ReadFile(state_->output, &next, 1, &count, nullptr) && count == 1 && next != '\n') {
    if (next != '\r') {
      line += next;
    }
  }
  return line;
}

void ChildProcess::CloseInput() {
  if (state_->input != nullptr) {
    ::CloseHandle(state_->input);
    state_->input = nullptr;
  }
}

void ChildProcess::Kill() {
  if (::WaitForSingleObject(state_->process, 0) == WAIT_TIMEOUT) {
    state_->killed = true;
    ::TerminateProcess(state_->process, 1);
    Wait();
  }
}

int ChildProcess::Wait(std::chrono::milliseconds limit) {
  DWORD code = 0;
  const bool ended = ::WaitForSingleObject(state_->process, static_cast<DWORD>(limit.count())) == WAIT_OBJECT_0;
  ::GetExitCodeProcess(state_->process, &code);
  return ended && !state_->killed ? static_cast<int>(code) : -1;
}

}  // namespace Zelto::Testing
