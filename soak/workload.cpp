#include "soak/workload.h"

#include "zelto/data/data_resource_item.h"
#include "zelto/json/json_reader.h"
#include "zelto/json/json_writer.h"

#include <stdexcept>

namespace Zelto::Soak {

namespace {

using namespace Zelto::Utilities;

constexpr unsigned int kLogIntervalMs = 50;
constexpr int kTaskIntervalMs = 10;

std::wstring Wide(const std::filesystem::path& path) {
  const std::u16string units = path.u16string();
  return {units.begin(), units.end()};
}

/// A document written, read and asked: the work of a task.
std::wstring MakeLine(std::uint64_t number) {
  DataResourceItem item(std::to_wstring(number), L"task");
  item.SetDateValue(L"at", UtcTime::Now());
  item.SetUint64Value(L"number", number);
  std::wstring text = Json::JsonWriter::Encode(item.AsDataObject(), false);
  DataResourceItem read(Json::JsonReader::Decode(text, false));
  if (read.GetUint64Value(L"number") != number) {
    throw std::logic_error("a document came back changed");
  }
  return text;
}

}  // namespace

Workload::Workload(const std::wstring& pipe, const std::filesystem::path& log, Counts& counts)
    : counts_(counts),
      log_(Wide(log)),
      server_(MultiClientNamedPipeServer::Create(
          pipe,
          [this](unsigned int, std::wstring message) {
            ++counts_.messages;
            return message;
          },
          NamedPipeMessageEncoding::Utf16, 5000, 4096, false, [this](unsigned int) { ++counts_.clients_dropped; })),
      log_thread_([this] { WriteLog(); }, kLogIntervalMs) {
  log_.SetMaxFileSize(32);
  log_.SetMaxBackupFiles(3);
  server_->Start({});
  pool_.Start();
  log_thread_.Start();
  task_timer_.Start(kTaskIntervalMs, false, [this] { ScheduleTask(); });
}

Workload::~Workload() {
  task_timer_.Stop();
  server_->Stop();
  pool_.WaitAndStop();
  log_thread_.Stop();
}

void Workload::ScheduleTask() {
  pool_.ScheduleTask([this] { lines_.Push(MakeLine(++counts_.tasks)); });
}

void Workload::WriteLog() {
  for (std::wstring line; lines_.TryPop(line);) {
    log_.AppendLine(line);
    ++counts_.log_lines;
  }
}

}  // namespace Zelto::Soak
