#include "tests/files/child_process.h"

namespace Zelto::Testing {

bool ChildProcess::ReadLine(std::string& line) {
  line.clear();
  char byte = 0;
  while (ReadByte(byte)) {
    if (byte == '\n') {
      return true;
    }
    if (byte != '\r') {
      line += byte;
    }
  }
  return false;
}

}  // namespace Zelto::Testing
