// A small agent: a timer looks into a folder, a pool describes the files that are new or have grown, and each becomes a
// line of JSON in a log that rotates.
//
//   zelto_watcher [FOLDER [LOG [SECONDS]]]     by default: examples build/watcher.log 2

#include <zelto/zelto.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <thread>

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
  const fs::path folder = argc > 1 ? argv[1] : "examples";
  FileAppender log(StringUtilities::Utf8ToUtf16(argc > 2 ? argv[2] : "build/watcher.log"));
  log.SetMaxFileSize(64);  // KiB
  log.SetMaxBackupFiles(3);

  ThreadPool pool(2);
  pool.Start();
  ConcurrentQueue<std::wstring> described;
  std::map<fs::path, std::uintmax_t> known;

  // One appender is for one thread at a time: the workers leave their lines in a queue.
  const auto write = [&] {
    for (std::wstring line; described.TryPop(line);) {
      log.AppendLine(line);
    }
  };
  TimerThread timer(
      [&] {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
          if (entry.is_regular_file() && entry.file_size() + 1 > known[entry.path()]) {
            known[entry.path()] = entry.file_size() + 1;  // 0: not known
            pool.ScheduleTask([&described, file = entry.path()] { described.Push(Describe(file)); });
          }
        }
        write();
      },
      100);
  timer.Start();
  std::this_thread::sleep_for(std::chrono::seconds(argc > 3 ? std::stoi(argv[3]) : 2));
  timer.Stop();
  pool.WaitAndStop();
  write();
  for (const std::exception_ptr& thrown : timer.ResetExceptions()) {
    std::rethrow_exception(thrown);  // such as a folder that is not there
  }
  std::cout << known.size() << " files described" << std::endl;
} catch (const std::exception& failure) {
  std::cerr << "zelto_watcher: " << failure.what() << std::endl;
  return 1;
}
