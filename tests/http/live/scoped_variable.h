// An environment variable for the time of a test.
#pragma once

#include <cstdlib>
#include <string>

namespace Zelto::Testing {

class ScopedVariable {
 public:
  ScopedVariable(const char* name, const std::string& value) : name_(name) { ::setenv(name, value.c_str(), 1); }
  ~ScopedVariable() { ::unsetenv(name_); }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  const char* const name_;
};

}  // namespace Zelto::Testing
