// Asks a server one thing over a bare packet socket: foreign_client <pipe name> <message>. Prints the answer.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

int main(int count, char** arguments) {
  if (count != 3) {
    return 2;
  }
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  const std::string directories[] = {"/run/zelto", std::string(runtime != nullptr ? runtime : "") + "/zelto",
                                     "/tmp/zelto-" + std::to_string(::geteuid())};
  for (const std::string& directory : directories) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = directory + "/" + arguments[1] + ".pipe";
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    const int end = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (::connect(end, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
      char answer[4096] = {};
      ::send(end, arguments[2], std::strlen(arguments[2]), 0);
      const ssize_t size = ::recv(end, answer, sizeof answer - 1, 0);
      std::printf("%s\n", answer);
      return size > 0 ? 0 : 1;
    }
    ::close(end);
  }
  std::perror("connect");
  return 1;
}
