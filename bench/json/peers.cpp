#include "bench/json/peers.h"

#include "bench/support/interleaved.h"

#include <boost/json.hpp>
#include <json/json.h>
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <memory>
#include <stdexcept>
#include <utility>

namespace Zelto::Bench {
namespace {

JsonPeer MakeBoost(const Document& document) {
  const auto read = [&document] { return boost::json::parse(document.utf8); };
  const auto write = [value = read()] { return boost::json::serialize(value); };
  return {"Boost.JSON", [read] { Keep(read()); }, [write] { Keep(write()); }, write()};
}

JsonPeer MakeNlohmann(const Document& document) {
  const auto read = [&document] { return nlohmann::json::parse(document.utf8); };
  const auto write = [value = read()] { return value.dump(); };
  return {"nlohmann", [read] { Keep(read()); }, [write] { Keep(write()); }, write()};
}

JsonPeer MakeJsonCpp(const Document& document) {
  const std::shared_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["emitUTF8"] = true;
  const auto read = [&document, reader] {
    Json::Value value;
    if (!reader->parse(document.utf8.data(), document.utf8.data() + document.utf8.size(), &value, nullptr)) {
      throw std::runtime_error("jsoncpp cannot read the document");
    }
    return value;
  };
  const auto write = [value = read(), builder] { return Json::writeString(builder, value); };
  return {"jsoncpp", [read] { Keep(read()); }, [write] { Keep(write()); }, write()};
}

template <typename Unit>
JsonPeer MakeRapidJson(const Document& document, const char* name) {
  using Encoding = rapidjson::UTF16<Unit>;
  using Text = std::basic_string<Unit>;
  const auto text = std::make_shared<const Text>(document.utf16.begin(), document.utf16.end());
  const auto read = [text] {
    auto value = std::make_unique<rapidjson::GenericDocument<Encoding>>();
    if (value->Parse(text->c_str()).HasParseError()) {
      throw std::runtime_error("RapidJSON cannot read the document");
    }
    return value;
  };
  const auto write = [value = std::shared_ptr(read())] {
    rapidjson::GenericStringBuffer<Encoding> buffer;
    rapidjson::Writer<decltype(buffer), Encoding, Encoding> writer(buffer);
    value->Accept(writer);
    return Text(buffer.GetString(), buffer.GetSize() / sizeof(Unit));
  };
  const Text written = write();
  return {name, [read] { Keep(read()); }, [write] { Keep(write()); },
          Utilities::StringUtilities::Utf16ToUtf8(std::wstring(written.begin(), written.end()))};
}

}  // namespace

std::vector<JsonPeer> MakeJsonPeers(const Document& document) {
  return {MakeBoost(document), MakeRapidJson<wchar_t>(document, "RapidJSON wchar_t"),
          MakeRapidJson<char16_t>(document, "RapidJSON char16_t"), MakeNlohmann(document), MakeJsonCpp(document)};
}

}  // namespace Zelto::Bench
