#include "tests/files/child_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

extern char** environ;

namespace Zelto::Testing {

struct ChildProcess::State {
  pid_t process = -1;
  int output = -1;
  int status = 0;
};

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments)
    : state_(std::make_unique<State>()) {
  std::vector<char*> pointers{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) {
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  pointers.push_back(nullptr);
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) {
    throw std::runtime_error("pipe2");
  }
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  const int error = ::posix_spawn(&state_->process, program.c_str(), &actions, nullptr, pointers.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  ::close(ends[1]);
  state_->output = ends[0];
  if (error != 0) {
    throw std::runtime_error("posix_spawn");
  }
}

ChildProcess::ChildProcess(ChildProcess&&) noexcept = default;

ChildProcess::~ChildProcess() {
  if (state_ != nullptr) {
    Kill();
    Wait();
    ::close(state_->output);
  }
}

bool ChildProcess::ReadByte(char& byte) {
  return ::read(state_->output, &byte, 1) == 1;
}

void ChildProcess::Kill() {
  if (state_->process > 0) {
    ::kill(state_->process, SIGKILL);
  }
}

int ChildProcess::Wait() {
  if (state_->process > 0 && ::waitpid(state_->process, &state_->status, 0) == state_->process) {
    state_->process = -1;
  }
  return WIFEXITED(state_->status) ? WEXITSTATUS(state_->status) : -1;
}

}  // namespace Zelto::Testing
