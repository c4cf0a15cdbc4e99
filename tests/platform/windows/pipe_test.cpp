// Message pipes on Windows: the security and the settings they are made with, clients that are not ours.
#include "tests/platform/pipe_support.h"

#include <windows.h>

#include <aclapi.h>

namespace Zelto::Platform::Testing {

void* OpenRawClient(const std::wstring& name) {
  return ::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED,
                       nullptr);
}

LossCodes ServerClosed() {
  return {109, 232, 109, 109};
}

bool DisconnectDropsAnswers() {
  return true;
}

namespace {

TEST(PipeSecurity, OpenToEveryoneMeansANullDaclAndAnInheritableHandle) {
  for (const bool everyone : {false, true}) {
    const SharedHandle server = MakeInstance({.name = PipeName("security"), .allow_everyone = everyone});
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
  const SharedHandle server =
      MakeInstance({.name = PipeName("settings"), .maximum_instances = 7, .buffer_size = 12345});
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
  const SharedHandle server = MakeInstance({.name = name});
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

}  // namespace
}  // namespace Zelto::Platform::Testing
