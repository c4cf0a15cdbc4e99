// Gets an address, or posts a body to it, and writes what comes back.

#include "arguments.h"

#include <zelto/zelto.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using Zelto::Utilities::CurlWrapper;
using Zelto::Utilities::StringUtilities;

namespace {

constexpr int kOk = 0;
constexpr int kTransferFailed = 1;
constexpr int kBadOptions = 2;
constexpr int kErrorStatus = 3;

constexpr const char* kUsage =
    "usage: zelto_fetch [OPTION]... URL\n\n"
    "Gets an http or https address and writes the response's body to standard output.\n"
    "  --body TEXT           post this text\n"
    "  --body-file FILE      post this file, which holds UTF-8 text\n"
    "  --type TYPE           the body's content type, application/json by default\n"
    "  --header NAME:VALUE   send a header; may be repeated\n"
    "  --ca FILE             trust the authorities in this PEM file\n"
    "  --pin FILE            trust the certificate in this PEM file and no other; may be repeated\n"
    "  --insecure            talk to an https server that is not verified\n"
    "  --proxy HOST:PORT     use this proxy; without it, the system's\n"
    "  --proxy-user NAME:PASSWORD\n"
    "  --no-proxy            use no proxy\n"
    "  --connect-timeout S   seconds until the connection must stand, 10 by default\n"
    "  --timeout S           seconds for everything, 60 by default\n"
    "  --output FILE         write the body to this file\n"
    "  --library-dir DIR     where libcurl and OpenSSL are\n"
    "  --help                this text\n\n"
    "An https address needs --ca, --pin or --insecure.\n"
    "Exit status: 0, 1 when the transfer failed, 2 for bad options, 3 for a status of 400 and above.\n";

/// What the user got wrong.
struct OptionError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

std::wstring Wide(const std::string& text) {
  return StringUtilities::Utf8ToUtf16(text);
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(PathOf(path), std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (!file) {
    throw OptionError(path + " cannot be read");
  }
  return bytes;
}

/// The two sides of a sign; the second is empty without it.
std::pair<std::string, std::string> SplitAt(const std::string& text, std::size_t sign) {
  return {text.substr(0, sign), sign < text.size() ? text.substr(sign + 1) : std::string()};
}

unsigned ReadNumber(const std::string& text, unsigned maximum) {
  const bool digits = !text.empty() && text.size() <= 9 && text.find_first_not_of("0123456789") == std::string::npos;
  const unsigned long number = digits ? std::stoul(text) : maximum + 1UL;
  if (number > maximum) {
    throw OptionError("'" + text + "' is no number up to " + std::to_string(maximum));
  }
  return static_cast<unsigned>(number);
}

/// The options by name, each with its values in order. The address has the name "".
class Options {
 public:
  explicit Options(const std::vector<std::string>& arguments) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      const std::string& argument = arguments[i];
      if (argument == "--help" || argument == "--insecure" || argument == "--no-proxy") {
        values_[argument].emplace_back();
      } else if (!argument.starts_with("--")) {
        values_[""].push_back(argument);
      } else if (std::string(kUsage).find("  " + argument + " ") == std::string::npos) {
        throw OptionError("unknown option " + argument);
      } else if (i + 1 == arguments.size()) {
        throw OptionError(argument + " lacks its value");
      } else {
        values_[argument].push_back(arguments[++i]);
      }
    }
  }

  /// Whether they make sense together.
  void Check() const {
    std::wstring scheme = Wide(Get("").substr(0, 6));
    StringUtilities::ToLower(scheme);
    if (All("").size() != 1) {
      throw OptionError("give one address");
    }
    if (scheme == L"https:" && !Has("--ca") && !Has("--pin") && !Has("--insecure")) {
      throw OptionError("an https address needs --ca, --pin or --insecure");
    }
    for (const auto& [one, other] :
         {std::pair("--ca", "--pin"), std::pair("--ca", "--insecure"), std::pair("--pin", "--insecure"),
          std::pair("--body", "--body-file"), std::pair("--proxy", "--no-proxy")}) {
      if (Has(one) && Has(other)) {
        throw OptionError(std::string(one) + " and " + other + " exclude each other");
      }
    }
    const std::size_t colon = Get("--proxy", "HOST:PORT").rfind(':');
    if (colon == 0 || colon == std::string::npos) {
      throw OptionError("--proxy needs a host and a port");
    }
    for (const std::string& header : All("--header")) {
      if (header.find(':') == std::string::npos) {
        throw OptionError("--header needs a name and a value");
      }
    }
    if (Has("--proxy-user") && !Has("--proxy")) {
      throw OptionError("--proxy-user needs --proxy");
    }
  }

  bool Has(const std::string& name) const { return values_.count(name) != 0; }
  std::vector<std::string> All(const std::string& name) const {
    const auto found = values_.find(name);
    return found == values_.end() ? std::vector<std::string>() : found->second;
  }
  std::string Get(const std::string& name, const std::string& otherwise = {}) const {
    return Has(name) ? values_.at(name).back() : otherwise;
  }

 private:
  std::map<std::string, std::vector<std::string>> values_;
};

std::unique_ptr<CurlWrapper> MakeSession(const Options& options) {
  const std::wstring libraries = Wide(options.Get("--library-dir", ZELTO_FETCH_LIBRARY_DIR));
  const std::wstring ca_file = Wide(options.Get("--ca"));
  const unsigned connect_timeout = ReadNumber(options.Get("--connect-timeout", "10"), 86400);
  const unsigned timeout = ReadNumber(options.Get("--timeout", "60"), 86400);
  if (!options.Has("--proxy")) {
    return std::make_unique<CurlWrapper>(libraries, !options.Has("--no-proxy"), L"zelto_fetch", ca_file, false,
                                         connect_timeout, timeout);
  }
  const std::string proxy = options.Get("--proxy");
  const auto [host, port] = SplitAt(proxy, proxy.rfind(':'));
  const std::string user_and_password = options.Get("--proxy-user");
  const auto [user, password] = SplitAt(user_and_password, user_and_password.find(':'));
  return std::make_unique<CurlWrapper>(libraries, Wide(host), ReadNumber(port, 65535), Wide(user), Wide(password),
                                       L"zelto_fetch", ca_file, false, connect_timeout, timeout);
}

void Prepare(CurlWrapper& session, const Options& options) {
  for (const std::string& header : options.All("--header")) {
    const auto [name, value] = SplitAt(header, header.find(':'));
    session.AddHeader(Wide(name), Wide(value));
  }
  for (const std::string& path : options.All("--pin")) {
    const std::string pem = ReadFile(path);
    if (pem.find("-----BEGIN CERTIFICATE-----") == std::string::npos) {
      throw OptionError(path + " holds no PEM certificate");
    }
    session.AddCertificate(pem);
  }
  if (options.Has("--insecure")) {
    session.DisableHostVerification();
  }
}

std::size_t WriteBytes(const char* bytes, std::size_t size, std::size_t count, void* stream) {
  auto& output = *static_cast<std::ostream*>(stream);
  return output.write(bytes, static_cast<std::streamsize>(size * count)) ? size * count : 0;
}

int Execute(CurlWrapper& session, const Options& options, std::ostream& output) {
  const std::wstring url = Wide(options.Get(""));
  session.SetReceiveDataCallback(WriteBytes, &output);
  if (options.Has("--body") || options.Has("--body-file")) {
    session.SetContentType(Wide(options.Get("--type", "application/json")));
    session.SetCommandBody(Wide(options.Has("--body") ? options.Get("--body") : ReadFile(options.Get("--body-file"))));
    session.ExecutePostRequest(url);
  } else {
    session.ExecuteGetRequest(url);
  }
  if (!output.flush()) {
    throw std::runtime_error("the body cannot be written");
  }
  if (session.GetHttpStatusCode() >= 300) {
    std::cerr << "zelto_fetch: status " << session.GetHttpStatusCode() << '\n';
  }
  return session.GetHttpStatusCode() >= 400 ? kErrorStatus : kOk;
}

int Fetch(const Options& options) {
  options.Check();
  const auto session = MakeSession(options);
  Prepare(*session, options);
  if (!options.Has("--output")) {
    WriteBytesToStandardOutput();
    return Execute(*session, options, std::cout);
  }
  const std::string path = options.Get("--output");
  std::ofstream file(PathOf(path), std::ios::binary);
  if (!file) {
    throw OptionError(path + " cannot be written");
  }
  return Execute(*session, options, file);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Options options(ReadArguments(argc, argv));
    if (options.Has("--help")) {
      std::cout << kUsage;
      return kOk;
    }
    return Fetch(options);
  } catch (const OptionError& error) {
    std::cerr << "zelto_fetch: " << error.what() << "; --help tells the options\n";
    return kBadOptions;
  } catch (const std::exception& failure) {
    std::cerr << "zelto_fetch: " << failure.what() << '\n';
    return kTransferFailed;
  }
}
