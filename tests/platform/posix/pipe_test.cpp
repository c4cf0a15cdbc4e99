// Message pipes on Linux: who may connect, what a hostile peer can send, what a dead server leaves.
#include "tests/platform/pipe_support.h"
#include "zelto/platform/posix/descriptor.h"
#include "zelto/platform/posix/errno_codes.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
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
  return static_cast<int>(reinterpret_cast<std::intptr_t>(handle.Get()));
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

  static SharedHandle Make(const std::wstring& name, bool allow_everyone) {
    PipeSettings settings;
    settings.name = name;
    settings.allow_everyone = allow_everyone;
    SharedHandle server;
    EXPECT_EQ(CreatePipeInstance(settings, server), kSuccess);
    return server;
  }
};

TEST_F(PipeAccess, AnotherUserIsRefusedUnlessThePipeIsOpenToEveryone) {
  const ::mode_t mask = ::umask(0077);
  for (const bool everyone : {false, true}) {
    const std::wstring name = PipeName("access");
    const SharedHandle server = Make(name, everyone);
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
  const SharedHandle server = Make(name, false);
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
                      const SharedHandle server = Make(name, false);
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
    PipeSettings settings;
    settings.name = name;
    return OpenPipe(name, pipe) == kAccessDenied && CreatePipeInstance(settings, pipe) == kAccessDenied ? 0 : 1;
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
  const std::string path = SocketPath(Make(name, true));
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
  PipeSettings settings;
  settings.name = name;
  EXPECT_EQ(CreatePipeInstance(settings, mine), kAccessDenied);
  EXPECT_EQ(Read(client).text, "last words");
  ::kill(server, SIGKILL);
  ::waitpid(server, nullptr, 0);
  // The reset for what the server left unread comes first; the end of the connection is told all the same.
  EXPECT_EQ(Read(client).code, ServerClosed().read);
  EXPECT_EQ(Write(client, "x"), ServerClosed().write);
  SharedHandle next;
  EXPECT_EQ(OpenPipe(name, next), kFileNotFound) << "the dead server's socket still lies there";
  EXPECT_EQ(CreatePipeInstance(settings, mine), kSuccess);
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

/// Sends what a program that is not ours may send. @return as sendmsg
ssize_t SendRaw(int socket, const std::string& payload, const std::vector<int>& descriptors) {
  iovec part{const_cast<char*>(payload.data()), payload.size()};
  std::vector<char> control(CMSG_SPACE(descriptors.size() * sizeof(int)));
  msghdr header{};
  header.msg_iov = &part;
  header.msg_iovlen = 1;
  if (!descriptors.empty()) {
    header.msg_control = control.data();
    header.msg_controllen = control.size();
    cmsghdr* record = CMSG_FIRSTHDR(&header);
    record->cmsg_level = SOL_SOCKET;
    record->cmsg_type = SCM_RIGHTS;
    record->cmsg_len = CMSG_LEN(descriptors.size() * sizeof(int));
    std::memcpy(CMSG_DATA(record), descriptors.data(), descriptors.size() * sizeof(int));
  }
  return ::sendmsg(socket, &header, MSG_NOSIGNAL);
}

constexpr int kAllSeals = F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

int MemoryFile(off_t size, int seals) {
  const int file = ::memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING);
  EXPECT_EQ(::ftruncate(file, size), 0);
  EXPECT_EQ(::fcntl(file, F_ADD_SEALS, seals), 0);
  return file;
}

TEST(PipeHostility, WrongPacketsCostTheConnectionAndNothingElse) {
  const auto send = [](const std::string& payload, const std::vector<int>& descriptors) {
    return [=](int socket) { EXPECT_EQ(SendRaw(socket, payload, descriptors), static_cast<ssize_t>(payload.size())); };
  };
  const int good = MemoryFile(10, kAllSeals);
  const int empty = MemoryFile(0, kAllSeals);
  const int growing = MemoryFile(10, kAllSeals & ~F_SEAL_GROW & ~F_SEAL_SEAL);
  const int writable = MemoryFile(10, F_SEAL_SHRINK | F_SEAL_GROW);
  const int unsealed = MemoryFile(10, 0);
  const int huge = MemoryFile(off_t{1} << 32, kAllSeals);
  const int device = ::open("/dev/zero", O_RDONLY | O_CLOEXEC);
  const int plain = ::open("/proc/self/exe", O_RDONLY | O_CLOEXEC);
  const int directory = ::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  struct Case {
    const char* what;
    std::function<void(int)> send;
  };
  const Case cases[] = {
      {"payload and descriptor", send("payload", {good})},
      {"payload and many descriptors", send("payload", std::vector<int>(20, good))},
      {"two descriptors", send("", {good, good})},
      {"three descriptors", send("", {good, good, good})},
      {"as many as may be", send("", std::vector<int>(253, good))},
      {"empty file", send("", {empty})},
      {"file that may grow", send("", {growing})},
      {"file that may be written", send("", {writable})},
      {"file that may change", send("", {unsealed})},
      {"file that no message can be", send("", {huge})},
      {"device", send("", {device})},
      {"plain file", send("", {plain})},
      {"directory", send("", {directory})},
      {"huge packet",
       [](int socket) {
         const int size = 4 << 20;
         if (::setsockopt(socket, SOL_SOCKET, SO_SNDBUFFORCE, &size, sizeof size) != 0) {
           ::setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
         }
         EXPECT_EQ(SendRaw(socket, std::string(600000, 'x'), {}), 600000);
       }},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.what);
    const std::size_t before = OpenHandles();
    {
      const Pair pair("hostile");
      test.send(Native(pair.client));
      EXPECT_EQ(SendRaw(Native(pair.client), "after", {}), 5);
      EXPECT_EQ(Read(pair.server).code, kInvalidData);
      EXPECT_EQ(Read(pair.server).code, kInvalidData) << "what follows cannot be trusted";
      EXPECT_EQ(DisconnectPipe(pair.server), kSuccess);
      SharedHandle next;
      ASSERT_EQ(OpenPipe(pair.name, next), kSuccess);
      ASSERT_EQ(Connect(pair.server), kSuccess);
      ASSERT_EQ(Write(next, "good"), kSuccess);
      EXPECT_EQ(Read(pair.server).text, "good");
    }
    EXPECT_EQ(OpenHandles(), before);
  }
  for (const int file : {good, empty, growing, writable, unsealed, huge, device, plain, directory}) {
    ::close(file);
  }
}

/// A socket whose last close takes a minute: its peer does not read, and it lingers.
int LingeringSocket(const sockaddr_in& address) {
  const int size = 4096;
  const linger minute{1, 60};
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ::setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
  ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &minute, sizeof minute);
  EXPECT_EQ(::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  const std::string bytes(65536, 'x');
  pollfd poll{socket, POLLOUT, 0};
  do {
    while (::send(socket, bytes.data(), bytes.size(), MSG_DONTWAIT) > 0) {
    }
  } while (::poll(&poll, 1, 100) > 0);
  return socket;
}

TEST(PipeHostility, SocketsThatLingerHoldNobodyUp) {
  const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(listener, 8), 0);
  ASSERT_EQ(::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length), 0);
  const int first = LingeringSocket(address);
  const int last = LingeringSocket(address);
  const int behind = LingeringSocket(address);
  Pair pair("linger");
  const int socket = Native(pair.client);
  EXPECT_EQ(SendRaw(socket, "", {first, listener, listener, last}), 0);
  EXPECT_EQ(SendRaw(socket, "", {behind}), 0);
  for (const int sent : {first, last, behind}) {
    ::close(sent);  // takes no time: on its way each has another owner
  }
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Read(pair.server).code, kInvalidData);
  EXPECT_EQ(DisconnectPipe(pair.server), kSuccess);
  pair.server.Reset();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
  ::close(listener);
}

TEST(PipeHostility, BareSocketSpeaksTheSameLanguage) {
  const Pair pair("bare");
  const int socket = Native(pair.client);
  const int memory = MemoryFile(100000, kAllSeals);
  EXPECT_EQ(SendRaw(socket, "plain", {}), 5);
  EXPECT_EQ(SendRaw(socket, "", {}), 0);
  EXPECT_EQ(SendRaw(socket, "", {memory}), 0);
  EXPECT_EQ(SendRaw(socket, std::string(150000, 'p'), {}), 150000) << "above our own limit of a packet";
  ::close(memory);
  EXPECT_EQ(Read(pair.server).text, "plain");
  const Message empty = Read(pair.server);
  EXPECT_TRUE(empty.code == kSuccess && empty.text.empty()) << empty.code;
  EXPECT_EQ(Read(pair.server).text, std::string(100000, '\0'));
  EXPECT_EQ(Read(pair.server).text, std::string(150000, 'p'));
  ASSERT_EQ(Write(pair.server, "answer"), kSuccess);
  char buffer[16];
  EXPECT_EQ(::recv(socket, buffer, sizeof buffer, 0), 6);
  ASSERT_EQ(Write(pair.server, std::string(100000, 'x')), kSuccess);
  EXPECT_EQ(::recv(socket, buffer, sizeof buffer, 0), 0) << "a memory file comes with an empty packet";
}

// What a peer leaves unread is limited although a packet with a memory file takes hardly any room in the queue.
TEST(PipeHostility, PeerThatNeverReadsCostsLittleMemory) {
  const Pair pair("never-reads");
  const std::string message(1 << 20, 'x');
  std::size_t written = 0;
  Operation write(pair.server);
  while (written < 100 && write->BeginWrite(message.data(), static_cast<std::uint32_t>(message.size())) == kSuccess) {
    ++written;
  }
  EXPECT_TRUE(write->IsPending());
  EXPECT_LE(written, 4u);
  std::thread reader([&pair, written] {
    for (std::size_t i = 0; i < written + 1; ++i) {
      EXPECT_EQ(Read(pair.client, 65536).text.size(), std::size_t{1} << 20);
    }
  });
  std::uint32_t transferred = 0;
  EXPECT_EQ(write.Outcome(kIoPending, transferred), kSuccess);
  reader.join();
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

TEST(Errno, BecomesAWin32Code) {
  const struct {
    int error;
    ErrorCode code;
  } cases[] = {{ENOENT, 2},   {EACCES, 5},  {EPERM, 5}, {EBADF, 6},        {ENOMEM, 8},       {EMFILE, 4}, {EINVAL, 87},
               {EEXIST, 183}, {EPIPE, 233}, {0, 0},     {ETIMEDOUT, 1460}, {ECONNREFUSED, 2}, {EILSEQ, 31}};
  for (const auto& test : cases) {
    errno = test.error;
    EXPECT_EQ(GetLastErrorCode(), test.code) << std::strerror(test.error);
  }
}

}  // namespace
}  // namespace Zelto::Platform::Testing
