// The user's proxy setting, as a session takes it.
#include "tests/http/library_folder.h"

#include <windows.h>

using namespace Zelto::Testing;
using testing::HasSubstr;

namespace {

constexpr wchar_t kKey[] = L"Software\\ZeltoProxyTest";
constexpr wchar_t kSettings[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\Connections";

// A user's registry of this process alone: the real one's settings stay as they are.
class UserSettingProxy : public StandInSession {
 protected:
  UserSettingProxy() {
    EXPECT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key_, nullptr), 0);
    EXPECT_EQ(::RegOverridePredefKey(HKEY_CURRENT_USER, key_), 0);
  }
  ~UserSettingProxy() override {
    ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    ::RegCloseKey(key_);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
  }

  // The record of the settings: a version, a count of changes, flags, and texts behind their lengths.
  static void Set(const std::string& proxy, const std::string& exceptions) {
    std::string record;
    const auto append_number = [&](std::size_t number) {
      for (int shift = 0; shift < 32; shift += 8) {
        record += static_cast<char>(number >> shift & 0xFF);
      }
    };
    for (const std::size_t number : {0x46, 1, 3}) {  // 3: direct, or by the proxy that is named
      append_number(number);
    }
    for (const std::string& text : {proxy, exceptions, std::string()}) {
      append_number(text.size());
      record += text;
    }
    record.append(32, '\0');
    EXPECT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, kSettings, L"DefaultConnectionSettings", REG_BINARY, record.data(),
                                static_cast<DWORD>(record.size())),
              0);
  }

 private:
  HKEY key_ = nullptr;
};

TEST_F(UserSettingProxy, IsTakenWithItsExceptionsWhenAskedForAndNeverOtherwise) {
  Set("http=plain:3128;https=secure:8443", "*.direct.example;<local>");
  Session session(Directory(), true);
  Session other(Directory(), false);
  const std::string none = "NOPROXY ''; PROXY ''; curl_slist_append";
  EXPECT_THAT(CallsOfGet(session, L"http://h.example/"), HasSubstr("PROXY 'plain'; PROXYPORT 3128; "));
  EXPECT_THAT(CallsOfGet(session, L"https://h.example/"), HasSubstr("PROXY 'secure'; PROXYPORT 8443; "));
  EXPECT_THAT(CallsOfGet(session, L"https://www.direct.example/"), HasSubstr(none));
  EXPECT_THAT(CallsOfGet(session, L"http://intranet/"), HasSubstr(none));
  EXPECT_THAT(CallsOfGet(other, L"http://h.example/"), HasSubstr(none));
}

}  // namespace
