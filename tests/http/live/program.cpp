#include "tests/http/live/program.h"

#include "tests/support/temp_folder.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace Zelto::Testing {

namespace {

/// Where the program lies; a user's PATH often lacks the places of system programs.
std::string Find(const std::string& name) {
  const char* path = std::getenv("PATH");
  std::string folders = std::string(path != nullptr ? path : "") + ":/usr/bin:/bin:/usr/sbin:/sbin:";
  for (std::size_t begin = 0, end = 0; (end = folders.find(':', begin)) != std::string::npos; begin = end + 1) {
    const std::string candidate = folders.substr(begin, end - begin) + "/" + name;
    if (end > begin && ::access(candidate.c_str(), X_OK) == 0) {
      return candidate;
    }
  }
  return name;
}

}  // namespace

Program::Program(std::vector<std::string> command, const std::filesystem::path& output) {
  command[0] = Find(command[0]);
  std::vector<char*> arguments;
  for (std::string& argument : command) {
    arguments.push_back(argument.data());
  }
  arguments.push_back(nullptr);
  const int file = ::open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  const pid_t parent = ::getpid();
  id_ = ::fork();
  if (id_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
      ::_exit(127);
    }
    ::dup2(file, STDOUT_FILENO);
    ::dup2(file, STDERR_FILENO);
    ::execv(arguments[0], arguments.data());
    ::_exit(127);
  }
  ::close(file);
  if (id_ < 0) {
    throw std::runtime_error("cannot start " + command[0]);
  }
}

Program::~Program() {
  if (!HasEnded()) {
    ::kill(id_, SIGKILL);
    Wait();
  }
}

bool Program::Reap(int options) {
  int status = 0;
  if (id_ >= 0 && ::waitpid(id_, &status, options) == id_) {
    id_ = -1;
    exit_code_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  return id_ < 0;
}

bool Program::HasEnded() {
  return Reap(WNOHANG);
}

int Program::Wait() {
  Reap(0);
  return exit_code_;
}

std::string Run(const std::vector<std::string>& command) {
  const TempFolder folder;
  const std::filesystem::path output = folder.Path() / "output";
  Program program(command, output);
  const int status = program.Wait();
  const std::string printed = ReadFile(folder / L"output");
  if (status != 0) {
    throw std::runtime_error(command[0] + " ended with " + std::to_string(status) + ": " + printed);
  }
  return printed;
}

}  // namespace Zelto::Testing
