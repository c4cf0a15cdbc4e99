/// @file
/// A program of this machine that runs beside the tests.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace Zelto::Testing {

/// A process of ours. It is killed at the end, and by the system when this process or the starting thread goes first.
class Program {
 public:
  /// @param command  the program, searched as a shell does and in the places of system programs, and its arguments
  /// @param output   a file that takes its standard output and errors
  Program(std::vector<std::string> command, const std::filesystem::path& output);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  bool HasEnded();
  /// Waits for its end. @return its exit code; 127 when it could not be started, -1 when it was killed
  int Wait();

 private:
  bool Reap(int options);

  pid_t id_ = -1;
  int exit_code_ = -1;
};

/// Runs a program to its end. @return what it printed. @throws std::runtime_error with that when it failed
std::string Run(const std::vector<std::string>& command);

}  // namespace Zelto::Testing
