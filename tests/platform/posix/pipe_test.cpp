// Message pipes on Linux: who may connect, what a dead server leaves, what becomes of descriptors.
#include "tests/platform/pipe_support.h"
#include "zelto/platform/posix/descriptor.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>

namespace Zelto::Platform::Testing {

void* OpenRawClient(const std::wstring& name) {
  SharedHandle client;
  EXPECT_EQ(OpenPipe(name, client), kSuccess);
  return HandleFromDescriptor(::dup(DescriptorFromHandle(client.Get())));
}

LossCodes ServerClosed() {
  return {233, 233, 233, 233};
}

bool DisconnectDropsAnswers() {
  return false;
}

namespace {

constexpr uid_t kStranger = 65534;
constexpr uid_t kOtherStranger = 65533;

int Native(const SharedHandle& handle) {
  return DescriptorFromHandle(handle.Get());
}

/// Runs code in a forked process, as another user if need be. @return what it returned, below 256; 255 on a failure
int InChild(uid_t user, const std::function<int()>& code) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::alarm(60);
    const bool ready = user == ::geteuid() || (::setgid(user) == 0 && ::setuid(user) == 0);
    ::_exit(ready ? code() : 255);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 255;
}

/// Where a server listens.
std::string SocketPath(const SharedHandle& server) {
  sockaddr_un address{};
  socklen_t size = sizeof address;
  EXPECT_EQ(::getsockname(Native(server), reinterpret_cast<sockaddr*>(&address), &size), 0);
  return address.sun_path;
}

class PipeAccess : public testing::Test {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) {
      GTEST_SKIP() << "only root can become another user";
    }
  }
};

TEST_F(PipeAccess, AStrangerIsRefusedUnlessThePipeIsOpenToEveryone) {
  const ::mode_t mask = ::umask(0077);
  for (const bool everyone : {false, true}) {
    const std::wstring name = PipeName("access");
    const SharedHandle server = MakeInstance({.name = name, .allow_everyone = everyone});
    const auto attempt = [&name] {
      SharedHandle client;
      const ErrorCode error = OpenPipe(name, client);
      PipePeer peer;
      if (error == kSuccess && (GetPipePeer(client, false, peer) != kSuccess || peer.user_id != 0u ||
                                Write(client, "from a stranger") != kSuccess)) {
        return 254;
      }
      return static_cast<int>(error);
    };
    EXPECT_EQ(InChild(kStranger, attempt), everyone ? kSuccess : kAccessDenied);
    if (!everyone) {
      // A descriptor handed on, or a mode changed by hand, gets a stranger to the socket: the server turns them away.
      ASSERT_EQ(::chmod(SocketPath(server).c_str(), 0666), 0);
      EXPECT_EQ(InChild(kStranger, attempt), kSuccess);
      SharedHandle client;
      ASSERT_EQ(OpenPipe(name, client), kSuccess);
      ASSERT_EQ(Write(client, "mine"), kSuccess);
    }
    ASSERT_EQ(Connect(server), kSuccess);
    PipePeer peer;
    EXPECT_EQ(GetPipePeer(server, true, peer), kSuccess);
    EXPECT_EQ(peer.user_id, everyone ? kStranger : ::geteuid());
    EXPECT_EQ(Read(server).text, everyone ? "from a stranger" : "mine");
  }
  ::umask(mask);
}

// Each user who may not use the machine's directory has one of their own, and root's clients do not look there.
TEST_F(PipeAccess, UsersHaveTheirOwnDirectory) {
  const std::wstring name = PipeName("own");
  const std::string path = "/tmp/zelto-65534/zelto-test-" + std::to_string(CurrentProcessId()) + "-own.pipe";
  ::unsetenv("XDG_RUNTIME_DIR");
  EXPECT_EQ(InChild(kStranger,
                    [&name, &path] {
                      const SharedHandle server = MakeInstance({.name = name});
                      SharedHandle client;
                      if (OpenPipe(name, client) != kSuccess || SocketPath(server) != path) {
                        return 1;
                      }
                      struct stat status {};
                      return ::stat("/tmp/zelto-65534", &status) == 0 && (status.st_mode & 0777) == 0700 ? 0 : 2;
                    }),
            0);
  std::filesystem::remove_all("/tmp/zelto-65534");
}

TEST_F(PipeAccess, DirectoryThatIsNotTheUsersOwnIsRefused) {
  const std::wstring name = PipeName("squatted");
  ::unsetenv("XDG_RUNTIME_DIR");
  const auto both = [&name] {
    SharedHandle pipe;
    return OpenPipe(name, pipe) == kAccessDenied && CreatePipeInstance({.name = name}, pipe) == kAccessDenied ? 0 : 1;
  };
  for (const std::string make :
       {"mkdir $it && chown 65534 $it", "mkdir -m 777 $it && chown 65533 $it", "ln -s /tmp $it", "touch $it"}) {
    ASSERT_EQ(std::system(("it=/tmp/zelto-65533; rm -rf $it; " + make).c_str()), 0);
    EXPECT_EQ(InChild(kOtherStranger, both), 0) << make;
  }
  std::filesystem::remove_all("/tmp/zelto-65533");
}

// A socket that a stranger serves is refused even where it lies in a directory that is safe.
TEST_F(PipeAccess, ServerOfAStrangerIsRefused) {
  const std::wstring name = PipeName("impostor");
  const std::string path = SocketPath(MakeInstance({.name = name, .allow_everyone = true}));
  int ready[2];
  ASSERT_EQ(::pipe2(ready, O_CLOEXEC), 0);
  const pid_t impostor = ::fork();
  if (impostor == 0) {
    sockaddr_un address{AF_UNIX, {}};
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int socket = ::socket(AF_UNIX, SOCK_SEQPACKET, 0);
    const bool listening = ::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
                           ::setuid(kStranger) == 0 && ::listen(socket, 5) == 0;
    if (!listening || ::write(ready[1], "x", 1) != 1) {
      ::_exit(1);
    }
    ::alarm(60);
    ::pause();
    ::_exit(0);
  }
  char byte = 0;
  ::close(ready[1]);
  ASSERT_EQ(::read(ready[0], &byte, 1), 1) << "the impostor did not come up";
  SharedHandle client;
  EXPECT_EQ(OpenPipe(name, client), kAccessDenied);
  EXPECT_FALSE(client.IsValid());
  ::kill(impostor, SIGKILL);
  ::waitpid(impostor, nullptr, 0);
  ::unlink(path.c_str());
  ::close(ready[0]);
}

TEST(PipeServers, AnotherProcessKeepsItsNameAndADeadOneLosesIt) {
  const std::wstring name = PipeName("owner");
  int ready[2];
  ASSERT_EQ(::pipe2(ready, O_CLOEXEC), 0);
  const pid_t server = ::fork();
  if (server == 0) {
    const SharedHandle instance = MakeInstance({.name = name});
    static_cast<void>(!::write(ready[1], "x", 1));
    ::alarm(60);
    const bool served = Connect(instance) == kSuccess && Write(instance, "last words") == kSuccess;
    ::pause();
    ::_exit(served ? 0 : 1);
  }
  char byte = 0;
  ASSERT_EQ(::read(ready[0], &byte, 1), 1);
  SharedHandle client;
  ASSERT_EQ(OpenPipe(name, client), kSuccess);
  ASSERT_EQ(Write(client, "unread by the server"), kSuccess);
  PipePeer peer;
  EXPECT_EQ(GetPipePeer(client, false, peer), kSuccess);
  EXPECT_EQ(peer.process_id, static_cast<std::uint32_t>(server));
  SharedHandle mine;
  EXPECT_EQ(CreatePipeInstance({.name = name}, mine), kAccessDenied);
  EXPECT_EQ(Read(client).text, "last words");
  ::kill(server, SIGKILL);
  ::waitpid(server, nullptr, 0);
  // The reset for what the server left unread comes first; the end of the connection is told all the same.
  EXPECT_EQ(Read(client).code, ServerClosed().read);
  EXPECT_EQ(Write(client, "x"), ServerClosed().write);
  SharedHandle next;
  EXPECT_EQ(OpenPipe(name, next), kFileNotFound) << "the dead server's socket still lies there";
  EXPECT_EQ(CreatePipeInstance({.name = name}, mine), kSuccess);
  EXPECT_EQ(OpenPipe(name, next), kSuccess);
  ::close(ready[0]);
  ::close(ready[1]);
}

TEST(PipeMessages, BeyondTheLimitOfFileSizesAreRefused) {
  const Pair pair("file-limit");
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit limit{100000, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
  EXPECT_EQ(Write(pair.client, std::string(100000, 'x')), kSuccess);
  EXPECT_EQ(Write(pair.client, std::string(100001, 'x')), 223U) << "too large a file";
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
  EXPECT_EQ(Read(pair.server).text.size(), 100000U);
}

TEST(PipeDescriptors, AreNeverStandardStreamsAndCloseOnExec) {
  EXPECT_EQ(InChild(::geteuid(),
                    [] {
                      for (int standard = 0; standard <= 2; ++standard) {
                        ::close(standard);
                      }
                      const Pair pair("streams");
                      const SharedHandle event = CreateManualEvent();
                      for (const SharedHandle& handle : {pair.server, pair.client, event}) {
                        if (Native(handle) <= 2 || (::fcntl(Native(handle), F_GETFD) & FD_CLOEXEC) == 0) {
                          return 1;
                        }
                      }
                      return Write(pair.client, std::string(100000, 'x')) == kSuccess &&
                                     Read(pair.server).code == kSuccess && ::fcntl(0, F_GETFD) < 0
                                 ? 0
                                 : 2;
                    }),
            0);
}

}  // namespace
}  // namespace Zelto::Platform::Testing
