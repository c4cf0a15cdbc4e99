#include "arguments.h"

std::vector<std::string> ReadArguments(int argc, char** argv) {
  return std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc);
}

void WriteBytesToStandardOutput() {}
