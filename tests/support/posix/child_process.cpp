#include "tests/support/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <thread>

namespace Zelto::Testing {

struct ChildProcess::State {
  pid_t id = -1;
  int input = -1;
  int output = -1;
  bool ended = false;
  int exit_code = -1;
};

ChildProcess::ChildProcess(const std::string& name, const std::vector<std::string>& arguments)
    : state_(std::make_unique<State>()) {
  std::string program = std::filesystem::read_symlink("/proc/self/exe").parent_path() / name;
  std::vector<std::string> texts = arguments;
  std::vector<char*> argv{program.data()};
  for (std::string& text : texts) {
    argv.push_back(text.data());
  }
  argv.push_back(nullptr);
  int input[2];
  int output[2];
  if (::pipe2(input, O_CLOEXEC) != 0 || ::pipe2(output, O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe for a child process");
  }
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  const int error = ::posix_spawn(&state_->id, program.c_str(), &actions, nullptr, argv.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  ::close(input[0]);
  ::close(output[1]);
  state_->input = input[1];
  state_->output = output[0];
  if (error != 0) {
    state_->ended = true;
    throw std::runtime_error("cannot start " + program);
  }
}

ChildProcess::~ChildProcess() {
  Kill();
  CloseInput();
  ::close(state_->output);
}

unsigned int ChildProcess::Id() const {
  return static_cast<unsigned int>(state_->id);
}

std::string ChildProcess::ReadLine() {
  std::string line;
  char next = 0;
  while (::read(state_->output, &next, 1) == 1 && next != '\n') {
    line += next;
  }
  return line;
}

void ChildProcess::CloseInput() {
  if (state_->input >= 0) {
    ::close(state_->input);
    state_->input = -1;
  }
}

void ChildProcess::Kill() {
  if (!state_->ended) {
    ::kill(state_->id, SIGKILL);
    Wait();
  }
}

int ChildProcess::Wait(std::chrono::milliseconds limit) {
  constexpr std::chrono::milliseconds kStep{5};
  for (; limit.count() > 0 && !state_->ended; limit -= kStep) {
    int status = 0;
    if (::waitpid(state_->id, &status, WNOHANG) == state_->id) {
      state_->ended = true;
      state_->exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    } else {
      std::this_thread::sleep_for(kStep);
    }
  }
  return state_->exit_code;
}

}  // namespace Zelto::Testing
