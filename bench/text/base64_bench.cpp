// Base64 beside OpenSSL's block functions, with the same conversions around them.
#include "bench/support/interleaved.h"
#include "bench/text/texts.h"
#include "zelto/text/base64.h"
#include "zelto/text/string_utilities.h"

#include <openssl/evp.h>

#include <cstdlib>
#include <string>

namespace Zelto::Bench {
namespace {

using Utilities::Base64;
using Utilities::StringUtilities;

std::wstring OpenSslEncode(const std::wstring& text) {
  const std::string bytes = StringUtilities::Utf16ToUtf8(text);
  std::string base64((bytes.size() + 2) / 3 * 4 + 1, '\0');
  const int length =
      EVP_EncodeBlock(reinterpret_cast<unsigned char*>(base64.data()),
                      reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
  base64.resize(static_cast<std::size_t>(length));
  return StringUtilities::Utf8ToUtf16(base64);
}

std::wstring OpenSslDecode(const std::wstring& base64) {
  const std::string narrow = StringUtilities::Utf16ToUtf8(base64);
  std::string bytes(narrow.size() / 4 * 3, '\0');
  const int length =
      EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                      reinterpret_cast<const unsigned char*>(narrow.data()), static_cast<int>(narrow.size()));
  // The padding counts as zero bytes, where the conversion ends.
  bytes.resize(static_cast<std::size_t>(length));
  return StringUtilities::Utf8ToUtf16(bytes);
}

void Run(std::size_t size) {
  for (const SampleText& sample : SampleTexts(size)) {
    const std::wstring base64 = Base64::Encode(sample.utf16);
    if (OpenSslEncode(sample.utf16) != base64 || OpenSslDecode(base64) != Base64::Decode(base64)) {
      std::fprintf(stderr, "The codecs disagree on %s\n", sample.kind);
      std::exit(EXIT_FAILURE);
    }
    const std::string name = std::string(sample.kind) + ", " + std::to_string(sample.utf8.size()) + " bytes";
    Print("encode " + name, "OpenSSL",
          CompareComputing([&] { Keep(Base64::Encode(sample.utf16)); }, [&] { Keep(OpenSslEncode(sample.utf16)); }));
    Print("decode " + name, "OpenSSL",
          CompareComputing([&] { Keep(Base64::Decode(base64)); }, [&] { Keep(OpenSslDecode(base64)); }));
  }
}

}  // namespace
}  // namespace Zelto::Bench

int main() {
  Zelto::Bench::Run(16);
  Zelto::Bench::Run(200);
  Zelto::Bench::Run(16384);
}
