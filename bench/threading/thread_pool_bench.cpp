// The thread pool beside Boost.Asio's, each task with a future.
#include "bench/support/interleaved.h"
#include "bench/support/processor.h"
#include "zelto/threading/thread_pool.h"

#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>

#include <functional>
#include <future>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Zelto::Bench {
namespace {

constexpr unsigned int kBurst = 1000;

/// Both pools behind the same two operations.
class OurPool {
 public:
  explicit OurPool(unsigned int workers) : pool_(workers) { pool_.Start(); }
  std::future<int> Schedule(std::function<void()> task) { return pool_.ScheduleTask(std::move(task)); }
  void Signal() { pool_.Start(); }

 private:
  Utilities::ThreadPool pool_;
};

class AsioPool {
 public:
  explicit AsioPool(unsigned int workers) : pool_(workers) {}
  std::future<int> Schedule(std::function<void()> task) {
    std::packaged_task<int()> packaged([task = std::move(task)] {
      task();
      return 0;
    });
    std::future<int> result = packaged.get_future();
    boost::asio::post(pool_, std::move(packaged));
    return result;
  }
  void Signal() {}

 private:
  boost::asio::thread_pool pool_;
};

/// From the first task scheduled to the last one finished. Each task signals the pool for the next one.
template <typename Pool>
void RunBurst(Pool& pool, unsigned int producers) {
  std::vector<std::thread> threads;
  for (unsigned int producer = 0; producer < producers; ++producer) {
    threads.emplace_back([&] {
      std::vector<std::future<int>> futures;
      futures.reserve(kBurst / producers);
      for (unsigned int i = 0; i < kBurst / producers; ++i) {
        futures.push_back(pool.Schedule([&pool] { pool.Signal(); }));
      }
      for (std::future<int>& future : futures) {
        future.get();
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

/// The caller and the workers on one processor.
void CompareOneTask(unsigned int workers) {
  std::thread([workers] {
    StayOnProcessor(0);
    OurPool ours(workers);
    AsioPool asio(workers);
    Print("one task to its end, " + std::to_string(workers) + " workers, one processor", "asio::thread_pool",
          Compare([&] { ours.Schedule([] {}).get(); }, [&] { asio.Schedule([] {}).get(); }, 101));
  }).join();
}

void CompareBursts(unsigned int workers) {
  OurPool ours(workers);
  AsioPool asio(workers);
  for (const unsigned int producers : {1u, 4u}) {
    const Comparison comparison = Compare([&] { RunBurst(ours, producers); }, [&] { RunBurst(asio, producers); }, 201);
    const std::string what = std::to_string(kBurst) + " tasks, " + std::to_string(producers) + " producers, " +
                             std::to_string(workers) + " workers";
    Print(what, "asio::thread_pool", comparison);
  }
}

}  // namespace
}  // namespace Zelto::Bench

int main() {
  for (const unsigned int workers : {1u, 4u}) {
    Zelto::Bench::CompareOneTask(workers);
    Zelto::Bench::CompareBursts(workers);
  }
}
