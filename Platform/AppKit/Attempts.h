#pragma once

#include <exception>

namespace platform {

/// Steps that are all taken, whatever one of them throws; `finish` throws the first failure.
class Attempts {
 public:
  template <class Step>
  void operator()(const Step& step) {
    try {
      step();
    } catch (...) {
      if (!failure_) failure_ = std::current_exception();
    }
  }
  void finish() const {
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  std::exception_ptr failure_;
};

}  // namespace platform
