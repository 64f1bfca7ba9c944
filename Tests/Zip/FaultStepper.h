#pragma once

#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace fault {

/// What happens at the n-th counted system call of a stepped process, counting from 1.
struct Injection {
  enum class Kind { none, kill, error };

  Kind kind = Kind::none;
  long at = 0;
  int error = 0;                   ///< errno value of an injected error; 0: the call says that it is done, or at an end
  bool fromThenOn = false;         ///< also every later call that counts
  std::vector<long> counted = {};  ///< system call numbers that count; empty: all of them
  bool wholeTree = false;          ///< also what the child starts is stepped, counted and killed
  bool isNamelessUnknown = false;  ///< as on a file system that knows no files without names
};

/// How a stepped process ended.
struct Outcome {
  long calls = 0;                 ///< counted system calls it made or was about to make
  std::optional<int> exitStatus;  ///< absent when it was killed
  std::optional<long> hitCall;    ///< number of the first system call that was hit

  bool succeeded() const { return exitStatus == 0; }
};

/// Runs `body` in a forked child under ptrace and applies the injection. A killed call never takes effect, nor does
/// a failed one. The child ends with the body's result, or with 99 when an exception leaves it. Returns when all that
/// is stepped has ended.
Outcome runStepped(const Injection& injection, const std::function<int()>& body);

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kIsSanitized = true;
#elif defined(__has_feature)
inline constexpr bool kIsSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
inline constexpr bool kIsSanitized = false;
#endif

/// Whether this machine can step and change system calls (x86-64 with ptrace allowed).
bool canStep();

/// Every how many-th point a sweep tries: `usual`, or each one when the environment says ZIP_FAULTS=all.
long stride(long usual);

std::vector<long> readingCalls();
/// The file-system calls a full disk, a quota, a missing right and so on can hit.
std::vector<long> creatingCalls();
std::vector<long> openingCalls();
std::vector<long> changingCalls();
std::vector<long> allFileCalls();

}  // namespace fault
