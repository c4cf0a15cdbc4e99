// An agent that sends JSON documents to the service over a named pipe, prints the answers and checks each of them.

#include "arguments.h"
#include "document_checks.h"

#include <zelto/zelto.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

using Zelto::Json::DataObject;
using Zelto::Json::JsonReader;
using Zelto::Json::JsonWriter;
using Zelto::Utilities::AsyncNamedPipeClient;
using Zelto::Utilities::NamedPipeMessageEncoding;
using Zelto::Utilities::PipePeerIdentity;
using Zelto::Utilities::SharedHandle;
using Zelto::Utilities::StringUtilities;

namespace {

struct Options {
  std::string pipe = "zelto-demo";
  unsigned long timeout_ms = 5000;
  unsigned long server_process = 0;  // 0: any
  bool stop = false;
  std::vector<std::filesystem::path> paths;
};

int Usage(int status) {
  std::cout << "usage: zelto_agent [--pipe NAME] [--timeout MS] [--server-process ID] [--stop] [FILE|FOLDER]...\n\n"
               "Sends each JSON document (of a folder: its .json files) to the service on the named pipe NAME\n"
               "(zelto-demo), prints the answers and checks them. Without paths: examples/documents.\n"
               "  --timeout MS         for each read and write, 5000 by default\n"
               "  --server-process ID  refuse a service that is not this process\n"
               "  --stop               ask the service to stop afterwards\n"
               "Exit status: 0 when every answer was right, 1 when one was wrong or missing, 2 for bad options.\n";
  return status;
}

std::vector<std::filesystem::path> Documents(const std::vector<std::filesystem::path>& paths) {
  std::vector<std::filesystem::path> documents;
  for (const auto& path : paths) {
    if (!std::filesystem::is_directory(path)) {
      documents.push_back(path);
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
      if (entry.path().extension() == ".json") {
        documents.push_back(entry.path());
      }
    }
  }
  std::sort(documents.begin(), documents.end());
  return documents;
}

std::wstring ReadDocument(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (!file) {
    throw std::runtime_error("cannot be read");
  }
  std::wstring document = StringUtilities::Utf8ToUtf16(bytes);
  if (document.empty()) {
    throw std::runtime_error("is empty");  // no server of the library answers an empty message
  }
  return document;
}

std::wstring Ask(AsyncNamedPipeClient& client, const std::wstring& message) {
  client.WriteMessage(message, true).get();
  return client.ReadMessage().get();
}

/// A whole argument as a decimal number; false when it is anything else.
bool ReadNumber(const std::string& argument, unsigned long& number) {
  char* end = nullptr;
  number = std::strtoul(argument.c_str(), &end, 10);
  return argument[0] >= '0' && argument[0] <= '9' && *end == '\0';
}

/// An accepted document comes back whole, with two members added; any other comes back as an error with its reason.
bool IsRightAnswer(const std::wstring& sent, const std::wstring& received) {
  const auto answer = JsonReader::Decode(received, false);
  if (!answer) {
    return false;
  }
  const CheckedDocument document = CheckDocument(sent);
  if (!document.object) {
    return answer->GetStringValue(L"status", L"") == L"error" &&
           answer->GetStringValue(L"reason", L"") == StringUtilities::Utf8ToUtf16(document.reason);
  }
  const auto returned = answer->GetDataObject(L"document");
  const auto sequence = returned->GetUint64Value(L"sequence", 0);
  const auto process = returned->GetUint64Value(L"serviceProcess", 0);
  document.object->SetUint64Value(L"sequence", sequence);
  document.object->SetUint64Value(L"serviceProcess", process);
  return answer->GetStringValue(L"status", L"") == L"ok" && sequence != 0 && process != 0 &&
         JsonWriter::Encode(returned, false) == JsonWriter::Encode(document.object, false);
}

int Talk(const Options& options) {
  AsyncNamedPipeClient client(StringUtilities::Utf8ToUtf16(options.pipe), static_cast<unsigned>(options.timeout_ms));
  client.SetAuthenticatePipe([&](const SharedHandle& pipe, bool server_side) {
    const PipePeerIdentity service = PipePeerIdentity::Of(pipe, server_side);
    return options.server_process == 0 || service.process_id == options.server_process;
  });
  client.SetEncoding(NamedPipeMessageEncoding::Utf16);  // as the service
  client.Open(SharedHandle());

  int wrong = 0;
  for (const auto& path : Documents(options.paths)) {
    std::cout << path.filename().string() << std::endl;
    try {
      const std::wstring document = ReadDocument(path);
      const std::wstring answer = Ask(client, document);
      const bool right = IsRightAnswer(document, answer);
      std::cout << "  " << (right ? "" : "WRONG: ") << StringUtilities::Utf16ToUtf8(answer) << std::endl;
      wrong += right ? 0 : 1;
    } catch (const std::exception& failure) {
      std::cout << "  FAILED: " << failure.what() << std::endl;
      ++wrong;
    }
  }
  if (options.stop) {
    const auto answer = JsonReader::Decode(Ask(client, LR"({"command":"stop"})"), false);
    const bool stopping = answer->GetStringValue(L"status", L"") == L"stopping";
    std::cout << (stopping ? "the service stops" : "WRONG: the service does not stop") << std::endl;
    wrong += stopping ? 0 : 1;
  }
  return wrong == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) try {
  Options options;
  const std::vector<std::string> arguments = ReadArguments(argc, argv);
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& option = arguments[i];
    const bool has_value = i + 1 < arguments.size();
    if (option == "--help") {
      return Usage(0);
    }
    if (option == "--pipe" && has_value) {
      options.pipe = arguments[++i];
    } else if (has_value && ((option == "--timeout" && ReadNumber(arguments[i + 1], options.timeout_ms)) ||
                             (option == "--server-process" && ReadNumber(arguments[i + 1], options.server_process)))) {
      ++i;
    } else if (option == "--stop") {
      options.stop = true;
    } else if (option.starts_with("--")) {
      return Usage(2);
    } else {
      options.paths.push_back(PathOf(option));
    }
  }
  if (options.paths.empty()) {
    options.paths.emplace_back("examples/documents");
  }
  return Talk(options);
} catch (const std::exception& failure) {
  std::cerr << "zelto_agent: " << failure.what() << std::endl;
  return 1;
}
