#include "zelto/platform/system_proxy.h"

#include <cstdlib>
#include <initializer_list>

namespace Zelto::Platform {
namespace {

// The first of the variables that is set to something.
std::string ReadVariable(std::initializer_list<const char*> names) {
  for (const char* name : names) {
    const char* const value = ::secure_getenv(name);
    if (value != nullptr && *value != '\0') {
      return value;
    }
  }
  return {};
}

}  // namespace

SystemProxyTexts ReadSystemProxy() {
  SystemProxyTexts texts;
  texts.syntax = SystemProxyTexts::Syntax::Environment;
  texts.http = ReadVariable({"http_proxy", "all_proxy", "ALL_PROXY"});
  texts.https = ReadVariable({"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"});
  texts.exceptions = ReadVariable({"no_proxy", "NO_PROXY"});
  return texts;
}

}  // namespace Zelto::Platform
