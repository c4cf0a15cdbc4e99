#include "zelto/platform/system_proxy.h"

#include "zelto/platform/modules.h"

#include <windows.h>

#include <winhttp.h>

#include <memory>
#include <string>

namespace Zelto::Platform {
namespace {

struct GlobalMemoryDeleter {
  void operator()(wchar_t* text) const noexcept { ::GlobalFree(text); }
};
using GlobalText = std::unique_ptr<wchar_t, GlobalMemoryDeleter>;

std::string ToUtf8(const GlobalText& text) {
  std::string result;
  if (text) {
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, text.get(), -1, nullptr, 0, nullptr, nullptr);
    result.resize(static_cast<std::size_t>(size));
    ::WideCharToMultiByte(CP_UTF8, 0, text.get(), -1, result.data(), size, nullptr, nullptr);
    result.resize(result.empty() ? 0 : result.size() - 1);
  }
  return result;
}

}  // namespace

SystemProxyTexts ReadSystemProxy() {
  SystemProxyTexts texts;
  texts.syntax = SystemProxyTexts::Syntax::UserSetting;
  // From the system's folder only: a file of that name elsewhere is a stranger's.
  const UniqueModule module(::LoadLibraryExW(L"winhttp.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
  if (!module) {
    return texts;
  }
  const auto read = reinterpret_cast<decltype(&::WinHttpGetIEProxyConfigForCurrentUser)>(
      FindFunction(module.get(), "WinHttpGetIEProxyConfigForCurrentUser"));
  WINHTTP_CURRENT_USER_IE_PROXY_CONFIG config{};
  if (read == nullptr || !read(&config)) {
    return texts;
  }
  const GlobalText script(config.lpszAutoConfigUrl);
  const GlobalText proxy(config.lpszProxy);
  const GlobalText exceptions(config.lpszProxyBypass);
  texts.http = ToUtf8(proxy);
  texts.https = texts.http;
  texts.exceptions = ToUtf8(exceptions);
  return texts;
}

}  // namespace Zelto::Platform
