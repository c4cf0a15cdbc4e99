// Sessions on many threads. Run under ThreadSanitizer, too.
#include "tests/http/library_folder.h"

#include <atomic>
#include <thread>

using namespace Zelto::Testing;

namespace {

using HttpThreads = StandInSession;

TEST_F(HttpThreads, SessionsComeAndGoWhileOthersTransfer) {
  // What OpenSSL's locks guard: libcurl's stand-in takes them while it transfers, as the real one does.
  int guarded = 0;
  GetAnswers().body = {"text"};
  GetAnswers().during_transfer = [&guarded] {
    const auto lock = GetLockingCallbacks().lock.load();
    lock(1, 1, "", 0);
    ++guarded;
    lock(2, 1, "", 0);
  };
  CloseNotes(true);
  std::atomic<int> right{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 6; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 10; ++round) {
        Session session(Directory());
        session.AddCertificate("PEM");
        for (int request = 0; request < 3; ++request) {
          session.ResetSession();
          session.ExecuteGetRequest(L"https://h/");
          right += session.GetHttpResponse() == L"text" && session.GetHttpStatusCode() == 200;
        }
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  CloseNotes(false);
  EXPECT_EQ(right, 180);
  EXPECT_EQ(guarded, 180);
  EXPECT_EQ(GetLockingCallbacks().lock, nullptr) << "the last one took the process-wide state with it";
}

}  // namespace
