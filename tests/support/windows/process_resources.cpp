#include "tests/support/process_resources.h"

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

namespace Zelto::Testing {

ProcessResources CountProcessResources() {
  ProcessResources resources;
  DWORD handles = 0;
  ::GetProcessHandleCount(::GetCurrentProcess(), &handles);
  resources.handles = handles;
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
