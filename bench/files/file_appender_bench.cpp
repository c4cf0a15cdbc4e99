// Lines appended to a log, beside a bare loop of open, write and close, and beside spdlog's rotating sink.
//
// FileAppender: Every line is in the system's hands when the call returns, whole or not at all, in a file that other
// processes may append to, read, rename and remove meanwhile. Nothing is open between lines.
//
// open, write, close: The same three calls and nothing else: no conversion from UTF-16, no look at the size, no
// rotation, no refusal of links, pipes and devices, and a torn line when the disk is full.
//
// spdlog, flushed: Every line is in the system's hands when the call returns. The file stays open: one call per line.
// It has one writer, since it knows the size and the position only from itself, and a torn line may stay. When somebody
// moves or removes the file, later lines go where nobody looks.
#include "bench/files/system_calls.h"
#include "bench/support/interleaved.h"
#include "zelto/files/file_appender.h"

#include <fcntl.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace Zelto::Bench {
namespace {

constexpr int kLimitKib = 1024;
constexpr int kBackups = 3;
constexpr int kCountedLines = 1000;

std::wstring Widen(const std::string& text) {
  return std::wstring(text.begin(), text.end());
}

std::unique_ptr<spdlog::logger> MakeSpdlog(const std::string& path) {
  auto sink = std::make_shared<spdlog::sinks::rotating_file_sink_st>(path, kLimitKib * 1024, kBackups);
  auto logger = std::make_unique<spdlog::logger>("bench", std::move(sink));
  logger->set_pattern("%v");
  logger->flush_on(spdlog::level::trace);
  return logger;
}

void AppendBare(const std::string& path, const std::string& bytes) {
  const int file = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0664);
  if (file < 0 || ::write(file, bytes.data(), bytes.size()) < 0 || ::close(file) != 0) {
    std::perror("bare loop");
    std::exit(EXIT_FAILURE);
  }
}

template <typename Operation>
void PrintSystemCalls(const std::string& what, const char* who, const Operation& operation) {
  operation();  // makes the file
  const std::int64_t count = CountSystemCalls([&operation] {
    for (int i = 0; i < kCountedLines; ++i) {
      operation();
    }
  });
  PrintFigure(what, who, static_cast<double>(count) / kCountedLines, "system calls per line");
}

void Run(const std::string& folder, std::size_t units) {
  const std::string narrow(units, 'x');
  const std::wstring wide = Widen(narrow);
  const std::string bytes = narrow + "\r\n";
  Utilities::FileAppender unlimited(Widen(folder + "/unlimited.log"));
  Utilities::FileAppender rotating(Widen(folder + "/rotating.log"));
  rotating.SetMaxFileSize(kLimitKib);
  rotating.SetMaxBackupFiles(kBackups);
  const auto logger = MakeSpdlog(folder + "/spdlog.log");
  const auto append = [&] { unlimited.AppendLine(wide); };
  const auto append_rotating = [&] { rotating.AppendLine(wide); };
  const auto append_bare = [&] { AppendBare(folder + "/bare.log", bytes); };
  const auto append_spdlog = [&] { logger->info(narrow); };

  constexpr double kBatchNs = 2.5e5;  // some fifty lines: short beside a turn of the scheduler
  constexpr std::size_t kPairs = 101;
  const std::string unlimited_line = "a line of " + std::to_string(units) + " units";
  const std::string rotating_line = unlimited_line + ", 1 MiB and 3 backups";
  Print(unlimited_line, "open, write, close", Compare(append, append_bare, kPairs, kBatchNs));
  Print(rotating_line, "open, write, close", Compare(append_rotating, append_bare, kPairs, kBatchNs));
  Print(rotating_line, "spdlog, flushed", Compare(append_rotating, append_spdlog, kPairs, kBatchNs));
  PrintSystemCalls(unlimited_line, "Zelto", append);
  PrintSystemCalls(unlimited_line, "open, write, close", append_bare);
  PrintSystemCalls(rotating_line, "Zelto", append_rotating);
  PrintSystemCalls(rotating_line, "spdlog, flushed", append_spdlog);
}

}  // namespace
}  // namespace Zelto::Bench

int main() {
  std::string folder = (std::filesystem::temp_directory_path() / "zelto_bench_XXXXXX").string();
  if (::mkdtemp(folder.data()) == nullptr) {
    std::perror("mkdtemp");
    return EXIT_FAILURE;
  }
  for (const std::size_t units : {80U, 1000U}) {
    Zelto::Bench::Run(folder, units);
  }
  std::filesystem::remove_all(folder);
}
