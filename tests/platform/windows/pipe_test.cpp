// Message pipes on Windows: the security they are made with, clients that are not ours, a server that is killed.
#include "tests/platform/pipe_support.h"

#include <windows.h>

#include <aclapi.h>

#include <string>

namespace Zelto::Platform::Testing {
namespace {

SharedHandle Make(const std::wstring& name, bool allow_everyone) {
  PipeSettings settings;
  settings.name = name;
  settings.allow_everyone = allow_everyone;
  SharedHandle server;
  EXPECT_EQ(CreatePipeInstance(settings, server), kSuccess);
  return server;
}

TEST(PipeSecurity, OpenToEveryoneMeansANullDaclAndAnInheritableHandle) {
  for (const bool everyone : {false, true}) {
    const SharedHandle server = Make(PipeName("security"), everyone);
    DWORD flags = 0;
    ASSERT_TRUE(::GetHandleInformation(server.Get(), &flags));
    EXPECT_EQ((flags & HANDLE_FLAG_INHERIT) != 0, everyone);
    ACL* access = nullptr;
    SECURITY_DESCRIPTOR* descriptor = nullptr;
    ASSERT_EQ(::GetSecurityInfo(server.Get(), SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &access,
                                nullptr, reinterpret_cast<PSECURITY_DESCRIPTOR*>(&descriptor)),
              ERROR_SUCCESS);
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    ACL* list = nullptr;
    ASSERT_TRUE(::GetSecurityDescriptorDacl(descriptor, &present, &list, &defaulted));
    if (everyone) {
      EXPECT_TRUE(list == nullptr);
    }
    ::LocalFree(descriptor);
  }
}

TEST(PipeSecurity, InstancesAreMessagePipesWithTheSettingsAskedFor) {
  PipeSettings settings;
  settings.name = PipeName("settings");
  settings.buffer_size = 12345;
  settings.maximum_instances = 7;
  SharedHandle server;
  ASSERT_EQ(CreatePipeInstance(settings, server), kSuccess);
  DWORD flags = 0;
  DWORD out = 0;
  DWORD in = 0;
  DWORD most = 0;
  ASSERT_TRUE(::GetNamedPipeInfo(server.Get(), &flags, &out, &in, &most));
  EXPECT_EQ(flags, DWORD{PIPE_SERVER_END | PIPE_TYPE_MESSAGE});
  EXPECT_EQ(out, 12345u);
  EXPECT_EQ(in, 12345u);
  EXPECT_EQ(most, 7u);
}

TEST(PipeServers, ServeAClientThatIsNotOurs) {
  const std::wstring name = PipeName("foreign");
  const SharedHandle server = MakeInstance(name);
  std::thread client([&name] {
    char request[] = "request";
    char answer[32] = {};
    DWORD read = 0;
    EXPECT_TRUE(::CallNamedPipeW(name.c_str(), request, 7, answer, sizeof answer, &read, kLimitMs));
    EXPECT_EQ(std::string(answer, read), "answer");
  });
  EXPECT_EQ(Connect(server), kSuccess);
  EXPECT_EQ(Read(server).text, "request");
  EXPECT_EQ(Write(server, "answer"), kSuccess);
  client.join();
}

// Not a test: what the next one starts as a process of its own.
TEST(PipeServers, DISABLED_ServeUntilKilled) {
  wchar_t name[MAX_PATH] = {};
  ASSERT_NE(::GetEnvironmentVariableW(L"ZELTO_TEST_PIPE", name, MAX_PATH), 0u);
  const SharedHandle server = MakeInstance(name);
  ASSERT_EQ(Connect(server), kSuccess);
  ASSERT_EQ(Write(server, "last words"), kSuccess);
  ::Sleep(kLimitMs);
}

TEST(PipeServers, KilledOneLosesItsNameAndItsClient) {
  const std::wstring name = PipeName("killed");
  ASSERT_TRUE(::SetEnvironmentVariableW(L"ZELTO_TEST_PIPE", name.c_str()));
  wchar_t program[MAX_PATH] = {};
  ASSERT_NE(::GetModuleFileNameW(nullptr, program, MAX_PATH), 0u);
  std::wstring command = L"\"" + std::wstring(program) +
                         L"\" --gtest_brief=1 --gtest_also_run_disabled_tests "
                         L"--gtest_filter=PipeServers.DISABLED_ServeUntilKilled";
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  ASSERT_TRUE(
      ::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process));
  SharedHandle client;
  ErrorCode opened = kFileNotFound;
  // There is nothing to wait for that tells of a name's coming.
  for (int attempt = 0; opened == kFileNotFound && attempt < 2000; ++attempt) {
    opened = OpenPipe(name, client);
    ::Sleep(10);
  }
  ASSERT_EQ(opened, kSuccess);
  ASSERT_EQ(SetMessageReadMode(client), kSuccess);
  EXPECT_EQ(Read(client).text, "last words");
  PipePeer peer;
  EXPECT_EQ(GetPipePeer(client, false, peer), kSuccess);
  EXPECT_EQ(peer.process_id, process.dwProcessId);
  ::TerminateProcess(process.hProcess, 1);
  EXPECT_EQ(::WaitForSingleObject(process.hProcess, kLimitMs), DWORD{WAIT_OBJECT_0});
  EXPECT_EQ(Read(client).code, ServerClosed().read);
  EXPECT_EQ(Write(client, "x"), ServerClosed().write);
  SharedHandle next;
  EXPECT_EQ(OpenPipe(name, next), kFileNotFound);
  ::CloseHandle(process.hThread);
  ::CloseHandle(process.hProcess);
}

}  // namespace
}  // namespace Zelto::Platform::Testing
