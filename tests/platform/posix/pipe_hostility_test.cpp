// What a program that is not ours can send through a message pipe on Linux, and what that costs.
#include "tests/platform/pipe_support.h"
#include "tests/support/process_resources.h"
#include "zelto/platform/posix/descriptor.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <set>

namespace Zelto::Platform::Testing {
namespace {

using Zelto::Testing::CountProcessResources;

int Native(const SharedHandle& handle) {
  return DescriptorFromHandle(handle.Get());
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
  const int good = MemoryFile(10, kAllSeals);
  struct Case {
    const char* what;
    std::string payload;
    std::vector<int> descriptors;
  };
  const Case cases[] = {
      {"payload and descriptor", "payload", {good}},
      {"payload and many descriptors", "payload", std::vector<int>(20, good)},
      {"two descriptors", "", {good, good}},
      {"three descriptors", "", {good, good, good}},
      {"as many as may be", "", std::vector<int>(253, good)},
      {"empty file", "", {MemoryFile(0, kAllSeals)}},
      {"file that may grow", "", {MemoryFile(10, kAllSeals & ~F_SEAL_GROW & ~F_SEAL_SEAL)}},
      {"file that may be written", "", {MemoryFile(10, F_SEAL_SHRINK | F_SEAL_GROW)}},
      {"file that may change", "", {MemoryFile(10, 0)}},
      {"file that no message can be", "", {MemoryFile(off_t{1} << 32, kAllSeals)}},
      {"device", "", {::open("/dev/zero", O_RDONLY | O_CLOEXEC)}},
      {"plain file", "", {::open("/proc/self/exe", O_RDONLY | O_CLOEXEC)}},
      {"directory", "", {::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC)}},
      {"huge packet", std::string(600000, 'x'), {}},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.what);
    const std::size_t before = CountProcessResources().handles;
    {
      const Pair pair("hostile");
      const int size = 4 << 20;
      if (::setsockopt(Native(pair.client), SOL_SOCKET, SO_SNDBUFFORCE, &size, sizeof size) != 0) {
        ::setsockopt(Native(pair.client), SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
      }
      EXPECT_EQ(SendRaw(Native(pair.client), test.payload, test.descriptors),
                static_cast<ssize_t>(test.payload.size()));
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
    EXPECT_EQ(CountProcessResources().handles, before);
  }
  std::set<int> files;
  for (const Case& test : cases) {
    files.insert(test.descriptors.begin(), test.descriptors.end());
  }
  std::for_each(files.begin(), files.end(), ::close);
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
  const int queued = LingeringSocket(address);
  Pair pair("linger");
  const int socket = Native(pair.client);
  EXPECT_EQ(SendRaw(socket, "", {first, listener, listener, last}), 0);
  EXPECT_EQ(SendRaw(socket, "", {behind}), 0);
  SharedHandle waiting;
  ASSERT_EQ(OpenPipe(pair.name, waiting), kSuccess);
  EXPECT_EQ(SendRaw(Native(waiting), "", {queued}), 0);
  for (const int sent : {first, last, behind, queued}) {
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
  std::deque<Operation> writes = FillUp(pair.server, message);
  EXPECT_LE(writes.size(), 5u);
  std::thread reader([&pair, written = writes.size()] {
    for (std::size_t i = 0; i < written; ++i) {
      EXPECT_EQ(Read(pair.client, 65536).text.size(), std::size_t{1} << 20);
    }
  });
  EXPECT_EQ(writes.back().Outcome(), kSuccess);
  reader.join();
}

}  // namespace
}  // namespace Zelto::Platform::Testing
