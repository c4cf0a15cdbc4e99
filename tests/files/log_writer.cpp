// Appends numbered lines to a log and says on its standard output which of them are written.
// log_writer <path> <name> <lines, 0 for ever> <maximum KiB>
#include "zelto/files/file_appender.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

int main(int argc, char** argv) {
  if (argc != 5) {
    return 2;
  }
  const std::string path = argv[1];
  const std::string name = argv[2];
  const int lines = std::atoi(argv[3]);
  Zelto::Utilities::FileAppender log(std::wstring(path.begin(), path.end()));
  log.SetMaxFileSize(std::atoi(argv[4]));
  // The length tells a reader whether anything of another line is mixed in.
  const std::wstring filling(200, static_cast<wchar_t>(name[0]));
  try {
    for (int i = 0; lines == 0 || i < lines; ++i) {
      log.AppendLine(std::to_wstring(i) + L" " + filling);
      std::printf("%d\n", i);
      std::fflush(stdout);
    }
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s\n", e.what());
    return 1;
  }
  return 0;
}
