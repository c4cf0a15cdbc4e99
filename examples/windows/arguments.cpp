#include "arguments.h"

#include <zelto/text/string_utilities.h>

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <cstdio>
#include <memory>

std::vector<std::string> ReadArguments(int, char**) {
  int count = 0;
  const std::unique_ptr<wchar_t*, decltype(&::LocalFree)> wide(::CommandLineToArgvW(::GetCommandLineW(), &count),
                                                               ::LocalFree);
  std::vector<std::string> arguments;
  for (int i = 1; wide && i < count; ++i) {
    arguments.push_back(Zelto::Utilities::StringUtilities::Utf16ToUtf8(wide.get()[i]));
  }
  return arguments;
}

void WriteBytesToStandardOutput() {
  ::_setmode(::_fileno(stdout), _O_BINARY);
}
