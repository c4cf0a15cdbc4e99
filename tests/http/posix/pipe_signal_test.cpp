// The signal for a write to a connection that is closed, which some libcurls let come.
#include "tests/http/library_folder.h"

#include <csignal>

using namespace Zelto::Testing;

namespace {

TEST_F(StandInSession, SurvivesThePipeSignalOfLibcurlAndLeavesTheThreadsMaskAsItWas) {
  const auto send = [] { ::raise(SIGPIPE); };
  GetAnswers().during_transfer = send;
  GetAnswers().during_cleanup = send;
  sigset_t before;
  ::pthread_sigmask(SIG_SETMASK, nullptr, &before);
  {
    Session session(Directory());
    session.ExecuteGetRequest(L"https://h/");
    session.ExecuteGetRequest(L"http://h/");  // which may close the other connection
    session.AddCertificate("PEM");
    session.ExecuteGetRequest(L"https://h/");  // in a new handle: the old one goes
  }
  sigset_t after;
  ::pthread_sigmask(SIG_SETMASK, nullptr, &after);
  EXPECT_EQ(::sigismember(&after, SIGPIPE), ::sigismember(&before, SIGPIPE));

  // A caller that has the signal blocked gets it.
  sigset_t blocked;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
  Session(Directory()).ExecuteGetRequest(L"https://h/");
  const timespec at_once{};
  EXPECT_EQ(::sigtimedwait(&blocked, nullptr, &at_once), SIGPIPE);
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace
