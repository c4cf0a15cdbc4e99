/// @file
/// The libraries beside which documents are read and written.
#pragma once

#include "bench/json/documents.h"

#include <functional>
#include <string>
#include <vector>

namespace Zelto::Bench {

/// One library with one document, which outlives it.
struct JsonPeer {
  const char* name;
  std::function<void()> decode;  ///< reads the document and destroys what was read
  std::function<void()> encode;  ///< writes the document, read before, into a new text
  std::string written;           ///< what `encode` writes, as UTF-8
};

/// The peers take the document as UTF-8, but for RapidJSON: that has UTF-16, once in `wchar_t` as we have, and once in
/// `char16_t`, which on Linux is half as much text.
std::vector<JsonPeer> MakeJsonPeers(const Document& document);

}  // namespace Zelto::Bench
