#include "zelto/platform/posix/current_zone.h"

#include "zelto/platform/posix/zone_rule.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace Zelto::Platform {
namespace {

constexpr char kSystemZone[] = "/etc/localtime";
constexpr char kZoneFolder[] = "/usr/share/zoneinfo";
constexpr std::size_t kMaximumNameSize = 255;
constexpr std::size_t kMaximumFileSize = 32'768;  // the largest file in use has less than a ninth of it
constexpr time_t kRecheckSeconds = 1;

// What this thread found last. Trivially destructible: it may be asked while the thread or the process ends.
struct KnownZone {
  bool known = false;
  bool has_name = false;
  std::array<char, kMaximumNameSize + 1> name{};
  time_t checked = 0;
  ZoneRecord zone;
};

thread_local constinit KnownZone known_zone;

class Descriptor {
 public:
  explicit Descriptor(const char* path) noexcept : value_(::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)) {}
  ~Descriptor() {
    if (value_ >= 0) {
      ::close(value_);
    }
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Get() const noexcept { return value_; }

 private:
  int value_;
};

// The name may come from a stranger: only plain files of a sensible size are read, and nothing blocks.
std::optional<ZoneRecord> ReadZoneFile(const char* path) noexcept {
  const Descriptor file(path);
  struct stat status {};
  if (file.Get() < 0 || ::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  std::array<char, kMaximumFileSize> bytes;
  std::size_t size = 0;
  for (;;) {
    const ssize_t count = ::read(file.Get(), bytes.data() + size, bytes.size() - size);
    if (count < 0 || size == bytes.size()) {
      return std::nullopt;
    }
    if (count == 0) {
      break;
    }
    size += static_cast<std::size_t>(count);
  }
  return ParseZoneFile(std::string_view(bytes.data(), size), ::time(nullptr));
}

std::optional<ZoneRecord> ReadNamedZone(const char* name) noexcept {
  if (name[0] == '/') {
    return ReadZoneFile(name);
  }
  if (std::strstr(name, "..") != nullptr) {
    return std::nullopt;
  }
  std::array<char, sizeof kZoneFolder + 1 + kMaximumNameSize> path;
  std::snprintf(path.data(), path.size(), "%s/%s", kZoneFolder, name);
  return ReadZoneFile(path.data());
}

ZoneRecord FindZone(const char* name) noexcept {
  if (name == nullptr) {
    return ReadZoneFile(kSystemZone).value_or(ZoneRecord{});
  }
  if (name[0] == ':') {
    return ReadNamedZone(name + 1).value_or(ZoneRecord{});
  }
  if (name[0] == '\0') {
    return {};
  }
  // "EST5EDT" is a rule and the name of a file; the file knows better.
  std::optional<ZoneRecord> zone = ReadNamedZone(name);
  return zone ? *zone : ParseZoneRule(name).value_or(ZoneRecord{});
}

time_t SteadySeconds() noexcept {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return now.tv_sec;
}

}  // namespace

ZoneRecord CurrentZone() noexcept {
  // A program that runs with rights its caller lacks does not let that caller choose a file to open.
  const char* name = ::secure_getenv("TZ");
  if (name != nullptr && std::strlen(name) > kMaximumNameSize) {
    return {};
  }
  KnownZone& known = known_zone;
  const time_t now = SteadySeconds();
  const bool same_name = known.known && known.has_name == (name != nullptr) &&
                         (name == nullptr || std::strcmp(name, known.name.data()) == 0);
  if (!same_name || now - known.checked > kRecheckSeconds) {
    const int error = errno;
    known.zone = FindZone(name);
    errno = error;
    known.known = true;
    known.has_name = name != nullptr;
    known.checked = now;
    if (name != nullptr) {
      std::memcpy(known.name.data(), name, std::strlen(name) + 1);
    }
  }
  return known.zone;
}

}  // namespace Zelto::Platform
