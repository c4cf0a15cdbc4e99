#include "echo_process.h"

#include "bench/support/processor.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>

EchoProcess::EchoProcess(unsigned processor, const std::function<void(const std::function<void()>&)>& serve) {
  int ready[2];
  if (::pipe(ready) != 0) {
    std::abort();
  }
  child_ = ::fork();
  if (child_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::close(ready[0]);
    if (!Zelto::Bench::StayOnProcessor(processor)) {
      ::_exit(1);
    }
    try {
      serve([&] { (void)!::write(ready[1], "r", 1); });
    } catch (const std::exception& failure) {
      std::cerr << failure.what() << std::endl;
    }
    ::_exit(0);
  }
  ::close(ready[1]);
  char byte = 0;
  if (::read(ready[0], &byte, 1) != 1) {
    std::cerr << "an echo server did not start" << std::endl;
    std::exit(1);
  }
  ::close(ready[0]);
}

EchoProcess::~EchoProcess() {
  ::kill(child_, SIGKILL);
  ::waitpid(child_, nullptr, 0);
}
