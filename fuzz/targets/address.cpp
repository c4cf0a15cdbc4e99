// Addresses of requests: what is taken apart holds nothing that leads elsewhere, and what is put together again is
// taken apart alike. The host is looked for by a second way.
#include "zelto/http/address.h"

#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "zelto/http/ip_address.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Zelto::Fuzz {
namespace {

using Utilities::Address;
using Utilities::SplitAddress;

bool Equal(const Address& left, const Address& right) {
  return left.scheme == right.scheme && left.user_info == right.user_info && left.host == right.host &&
         left.port == right.port && left.path == right.path;
}

bool HoldsOnly(std::string_view text, std::string_view marks) {
  return std::all_of(text.begin(), text.end(), [&](char byte) {
    const bool alphanumeric =
        (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9');
    return alphanumeric || marks.find(byte) != std::string_view::npos;
  });
}

// Every "%" begins an escape.
bool EscapesAreWhole(std::string_view text) {
  for (std::size_t at = text.find('%'); at != std::string_view::npos; at = text.find('%', at + 1)) {
    const std::string_view digits = text.substr(at + 1, 2);
    if (digits.size() < 2 || digits.find_first_not_of("0123456789abcdefABCDEF") != std::string_view::npos) {
      return false;
    }
  }
  return true;
}

void CheckParts(const Address& address) {
  Require(address.scheme == "http" || address.scheme == "https", "two schemes are known");
  Require(address.port != 0, "there is a port");
  const bool ipv6 = address.host.starts_with('[');
  Require(!address.host.empty() && (ipv6 ? address.host.ends_with(']') : HoldsOnly(address.host, "-._~%")),
          "the host's characters");
  if (ipv6) {
    const std::string_view inside = std::string_view(address.host).substr(1, address.host.size() - 2);
    Require(Utilities::ParseIpv6(inside.substr(0, inside.find('%'))).has_value(), "an address stands in the brackets");
  } else {
    Require(EscapesAreWhole(address.host), "the host's escapes are whole");
  }
  Require(HoldsOnly(address.user_info, "-._~!$&'()*+,;=:%") && EscapesAreWhole(address.user_info),
          "the user's characters");
  Require(
      address.path.starts_with('/') && HoldsOnly(address.path, "-._~!$&'()*+,;=:@/?%") && EscapesAreWhole(address.path),
      "the path's characters");
}

// The host's name as a strict reader finds it: behind the only "@", up to the first of ":/?#"; nothing where that
// reader would not be sure.
std::optional<std::string_view> PlainHost(std::string_view url) {
  const std::size_t begin = url.find("://") + 3;
  const std::string_view authority = url.substr(begin, url.find_first_of("/?#\\", begin) - begin);
  const std::size_t at = authority.rfind('@');
  const std::string_view place = at == std::string_view::npos ? authority : authority.substr(at + 1);
  const std::string_view host = place.substr(0, place.find(':'));
  return HoldsOnly(host, "-._~") ? std::optional(host) : std::nullopt;
}

void CheckNumbers(std::string_view text) {
  for (const auto& parsed : {Utilities::ParseIpv4(text), Utilities::ParseIpv6(text)}) {
    Require(!parsed || Utilities::IsInNetwork(*parsed, text), "an address lies in the network of itself");
  }
  const std::size_t slash = text.find('/');
  if (const auto network = Utilities::ParseIpAddress(text.substr(0, slash));
      network && slash != std::string_view::npos) {
    Utilities::IsInNetwork(*network, text);
  }
}

void Run(Bytes bytes) {
  const std::vector<char> memory(bytes.begin(), bytes.end());
  const std::string_view url(memory.data(), memory.size());
  CheckNumbers(url);
  const std::vector<wchar_t> wide = LenientText(bytes);
  try {
    CheckParts(SplitAddress(View(wide)));
  } catch (const Utilities::Win32Exception& error) {
    Require(error.GetErrorCode() == 12005 || error.GetErrorCode() == 12006, "the codes of a refusal");
  }
  try {
    const Address address = SplitAddress(url);
    CheckParts(address);
    Require(Equal(SplitAddress(address.ToText()), address), "the text of an address is taken apart alike");
    const std::optional<std::string_view> host = PlainHost(url);
    Require(!host || *host == address.host, "everyone finds the same host");
  } catch (const Utilities::Win32Exception& error) {
    Require(error.GetErrorCode() == 12005 || error.GetErrorCode() == 12006, "the codes of a refusal");
  }
}

const Target target("address", Run);

}  // namespace
}  // namespace Zelto::Fuzz
