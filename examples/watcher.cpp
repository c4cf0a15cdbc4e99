// A small agent: a timer looks into a folder, a pool describes the files that are new or have grown, and each becomes a
// line of JSON in a log that rotates.
//
//   zelto_watcher [FOLDER [LOG [SECONDS]]]     by default: examples build/watcher.log 2

#include "arguments.h"

#include <zelto/zelto.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <string>
#include <thread>
#include <vector>

using namespace Zelto::Utilities;
namespace fs = std::filesystem;

std::wstring Describe(const fs::path& file) {
  std::ifstream content(file, std::ios::binary);
  const auto lines = std::count(std::istreambuf_iterator<char>(content), std::istreambuf_iterator<char>(), '\n');
  const std::u8string name = file.filename().u8string();
  DataResourceItem item(StringUtilities::Utf8ToUtf16(std::string(name.begin(), name.end())), L"file");
  item.SetUint64Value(L"size", fs::file_size(file));
  item.SetIntValue(L"lines", static_cast<int>(lines));
  item.SetDateValue(L"seen", UtcTime::Now());
  return Zelto::Json::JsonWriter::Encode(item.AsDataObject(), false);
}

int main(int argc, char** argv) try {
  const std::vector<std::string> arguments = ReadArguments(argc, argv);
  const auto argument = [&](std::size_t i, const char* usual) { return i < arguments.size() ? arguments[i] : usual; };
  const fs::path folder = PathOf(argument(0, "examples"));
  FileAppender log(StringUtilities::Utf8ToUtf16(argument(1, "build/watcher.log")));
  log.SetMaxFileSize(64);  // KiB
  log.SetMaxBackupFiles(3);

  ThreadPool pool(2);
  pool.Start();
  ConcurrentQueue<fs::path> found;
  ConcurrentQueue<std::wstring> described;
  std::map<fs::path, std::uintmax_t> known;
  std::size_t lines = 0;

  // Of a burst of tasks some may stay in the pool's queue: a task takes all files that there are.
  const auto describe = [&] {
    for (fs::path file; found.TryPop(file);) {
      described.Push(Describe(file));
    }
  };
  // One appender is for one thread at a time: the workers leave their lines in a queue.
  const auto write = [&] {
    for (std::wstring line; described.TryPop(line); ++lines) {
      log.AppendLine(line);
    }
  };
  TimerThread timer(
      [&] {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
          if (entry.is_regular_file() && entry.file_size() + 1 > known[entry.path()]) {
            known[entry.path()] = entry.file_size() + 1;  // 0: not known
            found.Push(entry.path());
          }
        }
        if (found.Size() != 0) {
          pool.ScheduleTask(describe);
        }
        write();
      },
      100);
  timer.Start();
  std::this_thread::sleep_for(std::chrono::seconds(std::stoi(argument(2, "2"))));
  timer.Stop();
  pool.WaitAndStop();
  write();
  for (const std::exception_ptr& thrown : timer.ResetExceptions()) {
    std::rethrow_exception(thrown);  // such as a folder that is not there
  }
  std::cout << lines << " files described" << std::endl;
} catch (const std::exception& failure) {
  std::cerr << "zelto_watcher: " << failure.what() << std::endl;
  return 1;
}
