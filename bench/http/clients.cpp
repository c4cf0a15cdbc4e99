#include "clients.h"

#include "zelto/http/curl_wrapper.h"
#include "zelto/text/string_utilities.h"

#include <curl/curl.h>
#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>

namespace {

constexpr long kTimeoutSeconds = 60;

std::size_t Count(char*, std::size_t size, std::size_t count, void* total) {
  *static_cast<std::size_t*>(total) += size * count;
  return size * count;
}

class ZeltoClient : public Client {
 public:
  ZeltoClient(const std::wstring& libraries, bool to_text)
      : wrapper_(libraries, false, L"http_bench", L"", false, kTimeoutSeconds, kTimeoutSeconds), to_text_(to_text) {
    if (!to_text) {
      wrapper_.SetReceiveDataCallback(Count, &total_);
    }
  }

  std::size_t Get(const std::string& url) override {
    total_ = 0;
    wrapper_.ClearHeaders();
    wrapper_.ExecuteGetRequest(Zelto::Utilities::StringUtilities::Utf8ToUtf16(url));
    return to_text_ ? wrapper_.GetHttpResponse().size() : total_;
  }

 private:
  Zelto::Utilities::CurlWrapper wrapper_;
  const bool to_text_;
  std::size_t total_ = 0;
};

class BareClient : public Client {
 public:
  ~BareClient() override {
    curl_slist_free_all(headers_);
    curl_easy_cleanup(session_);
  }

  std::size_t Get(const std::string& url) override {
    std::size_t total = 0;
    curl_slist_free_all(headers_);
    headers_ = curl_slist_append(nullptr, "Content-Length:0");
    curl_easy_setopt(session_, CURLOPT_URL, url.c_str());
    curl_easy_setopt(session_, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(session_, CURLOPT_NOPROGRESS, 1L);
    curl_easy_setopt(session_, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(session_, CURLOPT_FAILONERROR, 0L);
    curl_easy_setopt(session_, CURLOPT_USERAGENT, "http_bench");
    curl_easy_setopt(session_, CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(session_, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(session_, CURLOPT_CONNECTTIMEOUT, kTimeoutSeconds);
    curl_easy_setopt(session_, CURLOPT_TIMEOUT, kTimeoutSeconds);
    curl_easy_setopt(session_, CURLOPT_PROXY, "");
    curl_easy_setopt(session_, CURLOPT_HTTPHEADER, headers_);
    curl_easy_setopt(session_, CURLOPT_HTTPGET, 1L);
    curl_easy_setopt(session_, CURLOPT_WRITEFUNCTION, Count);
    curl_easy_setopt(session_, CURLOPT_WRITEDATA, &total);
    long status = 0;
    if (curl_easy_perform(session_) != CURLE_OK ||
        curl_easy_getinfo(session_, CURLINFO_RESPONSE_CODE, &status) != CURLE_OK || status != 200) {
      throw std::runtime_error("libcurl fails");
    }
    return total;
  }

 private:
  CURL* const session_ = curl_easy_init();
  curl_slist* headers_ = nullptr;
};

}  // namespace

std::unique_ptr<Client> MakeZeltoClient(bool to_text) {
  Dl_info libcurl{};
  ::dladdr(::dlsym(RTLD_DEFAULT, "curl_easy_init"), &libcurl);  // the same file for both
  return std::make_unique<ZeltoClient>(std::filesystem::path(libcurl.dli_fname).parent_path().wstring(), to_text);
}

std::unique_ptr<Client> MakeBareClient() {
  return std::make_unique<BareClient>();
}
