/// @file
/// Programs of this machine that run to their end.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <string>

namespace Zelto::Testing {

/// What a program printed, on both outputs, and its exit status.
struct Result {
  int status = -1;
  std::string text = {};
};

/// Runs a line of the shell.
inline Result Run(const std::string& line) {
  Result result;
  std::FILE* const output = ::popen(("{ " + line + "\n} 2>&1").c_str(), "r");
  for (int byte = 0; (byte = std::getc(output)) != EOF;) {
    result.text += static_cast<char>(byte);
  }
  result.status = WEXITSTATUS(::pclose(output));
  return result;
}

}  // namespace Zelto::Testing
