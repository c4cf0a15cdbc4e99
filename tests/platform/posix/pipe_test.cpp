// Message pipes on Linux: who may connect, what a dead server leaves, what becomes of descriptors and waits.
#include "tests/platform/pipe_support.h"
#include "zelto/platform/posix/descriptor.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>

namespace Zelto::Platform::Testing {
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

TEST_F(PipeAccess, AnotherUserIsRefusedUnlessThePipeIsOpenToEveryone) {
  const ::mode_t mask = ::umask(0077);
  for (const bool everyone : {false, true}) {
    const std::wstring name = PipeName("access");
    const SharedHandle server = MakeInstance(PipeSettings{.name = name, .allow_everyone = everyone});
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
    Operation connect(server);
    EXPECT_EQ(connect->BeginConnect(), everyone ? kPipeConnected : kIoPending);
    if (everyone) {
      PipePeer peer;
      EXPECT_EQ(GetPipePeer(server, true, peer), kSuccess);
      EXPECT_EQ(peer.user_id, kStranger);
      EXPECT_EQ(Read(server).text, "from a stranger");
    }
  }
  ::umask(mask);
}

// A descriptor handed on, or a mode changed by hand, gets a stranger to the socket; the server still looks at the user.
TEST_F(PipeAccess, ServerTurnsAStrangerAwayAndServesTheNextClient) {
  const std::wstring name = PipeName("turned-away");
  const SharedHandle server = MakeInstance(name);
  ASSERT_EQ(::chmod(SocketPath(server).c_str(), 0666), 0);
  EXPECT_EQ(InChild(kStranger,
                    [&name] {
                      SharedHandle client;
                      return static_cast<int>(OpenPipe(name, client));
                    }),
            0);
  SharedHandle client;
  ASSERT_EQ(OpenPipe(name, client), kSuccess);
  ASSERT_EQ(Write(client, "mine"), kSuccess);
  ASSERT_EQ(Connect(server), kSuccess);
  EXPECT_EQ(Read(server).text, "mine");
}

// Each user who may not use the machine's directory has one of their own, and root's clients do not look there.
TEST_F(PipeAccess, UsersHaveTheirOwnDirectory) {
  const std::wstring name = PipeName("own");
  ::unsetenv("XDG_RUNTIME_DIR");
  EXPECT_EQ(InChild(kStranger,
                    [&name] {
                      const SharedHandle server = MakeInstance(name);
                      SharedHandle client;
                      if (OpenPipe(name, client) != kSuccess || !SocketPath(server).starts_with("/tmp/zelto-65534/")) {
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
  const std::string directory = "/tmp/zelto-65533";
  ::unsetenv("XDG_RUNTIME_DIR");
  const auto both = [&name] {
    SharedHandle pipe;
    return OpenPipe(name, pipe) == kAccessDenied && CreatePipeInstance({.name = name}, pipe) == kAccessDenied ? 0 : 1;
  };
  struct Case {
    const char* what;
    std::function<void()> make;
  };
  const Case cases[] = {
      {"a stranger's", [&] { ::mkdir(directory.c_str(), 0777), ::chown(directory.c_str(), kStranger, kStranger); }},
      {"writable by all",
       [&] {
         ::mkdir(directory.c_str(), 0777);
         ::chown(directory.c_str(), kOtherStranger, kOtherStranger);
         ::chmod(directory.c_str(), 0777);
       }},
      {"a link", [&] { ::symlink("/tmp", directory.c_str()); }},
      {"a file", [&] { ::close(::open(directory.c_str(), O_CREAT | O_WRONLY, 0666)); }},
  };
  for (const Case& test : cases) {
    std::filesystem::remove_all(directory);
    test.make();
    EXPECT_EQ(InChild(kOtherStranger, both), 0) << test.what;
  }
  std::filesystem::remove_all(directory);
}

// A socket that a stranger serves is refused even where it lies in a directory that is safe.
TEST_F(PipeAccess, ServerOfAStrangerIsRefused) {
  const std::wstring name = PipeName("impostor");
  const std::string path = SocketPath(MakeInstance(PipeSettings{.name = name, .allow_everyone = true}));
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
    const SharedHandle instance = MakeInstance(name);
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

TEST(PipeServers, AnswersQueuedBeforeAResetAreRead) {
  Pair pair("reset");
  ASSERT_EQ(Write(pair.client, "the server never reads this"), kSuccess);
  ASSERT_EQ(Write(pair.server, "one"), kSuccess);
  ASSERT_EQ(Write(pair.server, std::string(200000, '2')), kSuccess);
  pair.server.Reset();
  EXPECT_EQ(Read(pair.client).text, "one");
  EXPECT_EQ(Read(pair.client).text.size(), 200000u);
  EXPECT_EQ(Read(pair.client).code, ServerClosed().read);
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

TEST(Signals, DoNotShortenWaits) {
  struct sigaction ignore {};
  struct sigaction before {};
  ignore.sa_handler = [](int) {};  // without SA_RESTART: calls are interrupted
  ASSERT_EQ(::sigaction(SIGALRM, &ignore, &before), 0);
  const itimerval often{{0, 3000}, {0, 3000}};
  ASSERT_EQ(::setitimer(ITIMER_REAL, &often, nullptr), 0);
  const Pair pair("signals");
  const std::vector<SharedHandle> events{CreateManualEvent(), CreateManualEvent()};
  char byte = 0;
  Operation read(pair.server);
  ASSERT_EQ(read->BeginRead(&byte, 1), kIoPending);
  constexpr std::uint32_t kTimeMs = 40;
  const std::function<std::uint32_t()> waits[] = {
      [&] { return WaitForEvent(events[0], kTimeMs); },
      [&] { return WaitForEvents(events, true, kTimeMs); },
      [&] { return WaitForAny(std::vector<Waitable>{*read}, kTimeMs); },
      [&] {
        return WaitForAny(std::vector<Waitable>{*read, events[0]}, kTimeMs);
      },
  };
  for (const auto& wait : waits) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(wait(), kWaitTimeout);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(kTimeMs));
  }
  const itimerval never{};
  ::setitimer(ITIMER_REAL, &never, nullptr);
  ::sigaction(SIGALRM, &before, nullptr);
}

}  // namespace
}  // namespace Zelto::Platform::Testing
