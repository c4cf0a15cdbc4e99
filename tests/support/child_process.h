/// @file
/// Another process, for tests that need a real one.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace Zelto::Testing {

/// A process that this one started, with its standard input and output. It is killed when it still runs at the end.
class ChildProcess {
 public:
  /// Starts a program that stands in the directory of the test program. @param name  without an extension; on Linux a
  /// program elsewhere by its whole path, too
  ChildProcess(const std::string& name, const std::vector<std::string>& arguments);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  unsigned int Id() const;
  /// The next line that it prints, without its end; empty at the end of its output.
  std::string ReadLine();
  /// Ends its standard input.
  void CloseInput();
  /// Ends it at once, without any of its own code running.
  void Kill();
  /// Waits for its end. @return its exit code; -1 when it was killed or still runs
  int Wait(std::chrono::milliseconds limit = std::chrono::seconds(60));

 private:
  struct State;
  const std::unique_ptr<State> state_;
};

}  // namespace Zelto::Testing
