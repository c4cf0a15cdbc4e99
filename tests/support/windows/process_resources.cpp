#include "tests/support/process_resources.h"

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

#include <cstdint>
#include <vector>

namespace Zelto::Testing {

namespace {

// What NtQuerySystemInformation tells of all handles of the system.
struct HandleEntry {
  void* object;
  std::uintptr_t process_id;
  std::uintptr_t handle;
  std::uint32_t access;
  std::uint16_t creator_index;
  std::uint16_t type_index;
  std::uint32_t attributes;
  std::uint32_t reserved;
};
struct HandleTable {
  std::uintptr_t count;
  std::uintptr_t reserved;
  HandleEntry entries[1];
};

// Wine's GetProcessHandleCount always says 0, so the system's table is asked.
std::size_t CountHandles() {
  using Query = LONG(WINAPI*)(int, void*, ULONG, ULONG*);
  constexpr int kSystemExtendedHandleInformation = 64;
  const auto query = reinterpret_cast<Query>(
      reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
  std::vector<std::uint64_t> room(1U << 15U);
  while (query(kSystemExtendedHandleInformation, room.data(), static_cast<ULONG>(room.size() * sizeof room[0]),
               nullptr) != 0) {
    if (room.size() > 1U << 24U) {
      return 0;
    }
    room.resize(room.size() * 2);
  }
  const auto* table = reinterpret_cast<const HandleTable*>(room.data());
  std::size_t count = 0;
  for (std::uintptr_t i = 0; i < table->count; ++i) {
    count += table->entries[i].process_id == ::GetCurrentProcessId() ? 1 : 0;
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
