#include "VeltrikAppKit/WorkAhead.h"

#include <signal.h>

#include <system_error>

namespace veltrik {

std::size_t HelpingThreads::wanted() {
  constexpr std::size_t kMost = 3;
  return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kMost + 1) - 1;
}

HelpingThreads::HelpingThreads(const std::function<void(std::size_t)>& work) {
  // Inherited by the threads: a handler of the program's is to run on threads of its own.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  try {
    threads_.reserve(wanted());
    for (std::size_t number = 1; number <= wanted(); ++number) threads_.emplace_back(work, number);
  } catch (const std::exception&) {
    // With fewer, or none, it takes longer.
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

HelpingThreads::~HelpingThreads() {
  for (std::thread& thread : threads_) thread.join();
}

}  // namespace veltrik
