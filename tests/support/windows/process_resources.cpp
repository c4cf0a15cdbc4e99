#include "tests/support/process_resources.h"

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

#include <cstdint>

namespace Zelto::Testing {

namespace {

// Wine's GetProcessHandleCount always says 0. Handles are numbered by fours from below, and some are free between them.
std::size_t CountHandles() {
  constexpr int kMostFree = 1000;
  std::size_t count = 0;
  int free = 0;
  for (std::uintptr_t number = 4; free < kMostFree; number += 4) {
    DWORD flags = 0;
    free = ::GetHandleInformation(reinterpret_cast<HANDLE>(number), &flags) ? 0 : free + 1;
    count += free == 0 ? 1 : 0;
  }
  return count;
}

}  // namespace

ProcessResources CountProcessResources() {
  ProcessResources resources;
  resources.handles = CountHandles();
  const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = ::Thread32First(snapshot, &entry); more; more = ::Thread32Next(snapshot, &entry)) {
    resources.threads += entry.th32OwnerProcessID == ::GetCurrentProcessId();
  }
  ::CloseHandle(snapshot);
  PROCESS_MEMORY_COUNTERS memory{};
  ::GetProcessMemoryInfo(::GetCurrentProcess(), &memory, sizeof memory);
  resources.memory_bytes = memory.PagefileUsage;
  return resources;
}

}  // namespace Zelto::Testing
