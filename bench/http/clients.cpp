#include "clients.h"

#include "zelto/http/curl_wrapper.h"

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
  ZeltoClient(const std::string& url, const std::wstring& libraries, bool to_text)
      : url_(url.begin(), url.end()),
        wrapper_(libraries, false, L"http_bench", L"", false, kTimeoutSeconds, kTimeoutSeconds),
        to_text_(to_text) {
    if (!to_text) {
      wrapper_.SetReceiveDataCallback(Count, &total_);
    }
  }

  std::size_t Get() override {
    total_ = 0;
    wrapper_.ClearHeaders();
    wrapper_.ExecuteGetRequest(url_);
    return to_text_ ? wrapper_.GetHttpResponse().size() : total_;
  }

 private:
  const std::wstring url_;
  Zelto::Utilities::CurlWrapper wrapper_;
  const bool to_text_;
  std::size_t total_ = 0;
};

class BareClient : public Client {
 public:
  BareClient(const std::string& url, long port) : url_(url), port_(port) {}
  ~BareClient() override {
    curl_slist_free_all(headers_);
    curl_easy_cleanup(session_);
  }

  std::size_t Get() override {
    std::size_t total = 0;
    curl_slist_free_all(headers_);
    headers_ = curl_slist_append(nullptr, "Content-Length:0");
    curl_easy_setopt(session_, CURLOPT_URL, url_.c_str());
    curl_easy_setopt(session_, CURLOPT_PORT, port_);
    curl_easy_setopt(session_, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(session_, CURLOPT_NOPROGRESS, 1L);
    curl_easy_setopt(session_, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(session_, CURLOPT_USERAGENT, "http_bench");
    curl_easy_setopt(session_, CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(session_, CURLOPT_SSL_CTX_DATA, nullptr);
    curl_easy_setopt(session_, CURLOPT_SSL_CTX_FUNCTION, nullptr);
    curl_easy_setopt(session_, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(session_, CURLOPT_CONNECTTIMEOUT, kTimeoutSeconds);
    curl_easy_setopt(session_, CURLOPT_TIMEOUT, kTimeoutSeconds);
    curl_easy_setopt(session_, CURLOPT_PROXY, "");
    curl_easy_setopt(session_, CURLOPT_NOPROXY, "");
    curl_easy_setopt(session_, CURLOPT_PROXYPORT, 0L);
    curl_easy_setopt(session_, CURLOPT_PROXYUSERPWD, nullptr);
    curl_easy_setopt(session_, CURLOPT_HTTPHEADER, headers_);
    curl_easy_setopt(session_, CURLOPT_HTTPGET, 1L);
    curl_easy_setopt(session_, CURLOPT_WRITEFUNCTION, Count);
    curl_easy_setopt(session_, CURLOPT_WRITEDATA, &total);
    long status = 0;
    if (curl_easy_perform(session_) != CURLE_OK ||
        curl_easy_getinfo(session_, CURLINFO_RESPONSE_CODE, &status) != CURLE_OK || status != 200) {
      throw std::runtime_error("libcurl fails");
    }
    for (const CURLoption option : {CURLOPT_POSTFIELDS, CURLOPT_HTTPHEADER, CURLOPT_WRITEDATA, CURLOPT_SSL_CTX_DATA,
                                    CURLOPT_SSL_CTX_FUNCTION, CURLOPT_PROXYUSERPWD}) {
      curl_easy_setopt(session_, option, nullptr);
    }
    return total;
  }

 private:
  const std::string url_;
  const long port_;
  CURL* const session_ = curl_easy_init();
  curl_slist* headers_ = nullptr;
};

}  // namespace

std::unique_ptr<Client> MakeZeltoClient(const std::string& url, bool to_text) {
  Dl_info libcurl{};
  ::dladdr(::dlsym(RTLD_DEFAULT, "curl_easy_init"), &libcurl);  // the same file for both
  return std::make_unique<ZeltoClient>(url, std::filesystem::path(libcurl.dli_fname).parent_path().wstring(), to_text);
}

std::unique_ptr<Client> MakeBareClient(const std::string& url, unsigned int port) {
  return std::make_unique<BareClient>(url, port);
}
