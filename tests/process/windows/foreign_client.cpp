// Asks a server one thing by the bare system call: foreign_client <pipe name> <message>. Prints the answer.
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <string>

int main(int count, char** arguments) {
  if (count != 3) {
    return 2;
  }
  const std::string name = arguments[1];
  const std::wstring path = L"\\\\.\\pipe\\" + std::wstring(name.begin(), name.end());
  char answer[4096] = {};
  DWORD size = 0;
  if (!::CallNamedPipeW(path.c_str(), arguments[2], static_cast<DWORD>(std::strlen(arguments[2])), answer,
                        sizeof answer - 1, &size, 5000)) {
    std::fprintf(stderr, "CallNamedPipeW: error %lu\n", ::GetLastError());
    return 1;
  }
  std::printf("%s\n", answer);
  return 0;
}
