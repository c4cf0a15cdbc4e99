// Another program, whose output the test reads.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace Zelto::Testing {

class ChildProcess {
 public:
  /// Starts a program. @param arguments  without blanks and quotation marks
  ChildProcess(const std::string& program, const std::vector<std::string>& arguments);
  ChildProcess(ChildProcess&&) noexcept;
  ~ChildProcess();  // kills it

  /// The next line of its standard output without the line end; false at the end of the output.
  bool ReadLine(std::string& line);

  /// Ends it at once, whatever it is doing.
  void Kill();

  /// Waits for its end. @return its exit code; -1 when it was killed
  int Wait();

 private:
  struct State;
  bool ReadByte(char& byte);

  std::unique_ptr<State> state_;
};

}  // namespace Zelto::Testing
