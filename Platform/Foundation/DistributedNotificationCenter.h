#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Port/Value.h"

namespace platform {

/// Notifications between the processes of one user. Handlers run on the main thread, later than the post, for own posts
/// too, in the order in which posts were made and received.
///
/// A payload holds text, numbers, truth values, arrays and dictionaries of them, nested at most `kDeepestPayload` deep,
/// and at most `kLargestPayload` bytes. A post with another payload, and any post while there is no channel between
/// processes, reaches the observers of this process only; that it went no further is logged. Text that is not UTF-8
/// goes out with U+FFFD in its place. What other processes send is not trusted: anything but such a payload is logged
/// and dropped, and so is what arrives while `kMostPending` received notifications (or `kMostPendingBytes`) still wait
/// for their delivery. Main thread.
class PLATFORM_EXPORT DistributedNotificationCenter {
 public:
  using Handler = std::function<void(const std::string& name, const Dictionary& userInfo)>;
  using PostObserver =
      std::function<void(const std::string& name, const std::string& object, const Dictionary& userInfo)>;
  static constexpr unsigned kDeliverImmediately = 1;
  static constexpr unsigned kSuspensionDeliverImmediately = 4;
  static constexpr std::size_t kLargestPayload = std::size_t{1} << 20;
  static constexpr int kDeepestPayload = 32;
  static constexpr std::size_t kMostPending = 4096;
  static constexpr std::size_t kMostPendingBytes = std::size_t{16} << 20;

  static DistributedNotificationCenter& defaultCenter();
  DistributedNotificationCenter();
  ~DistributedNotificationCenter();

  /// `object` empty: none. Options: `kDeliverImmediately`, which is what this centre always does.
  void post(const std::string& name, const std::string& object, const Dictionary& userInfo, unsigned options);
  /// `object` empty: any sender. `observer` is an identity to remove by. Suspension: `kSuspensionDeliverImmediately`,
  /// which is what this centre always does.
  void addObserver(const void* observer, const std::string& name, const std::string& object, unsigned suspension,
                   Handler handler);
  void removeObserver(const void* observer);

  /// Told of every post that this process makes, before `post` returns; an empty one ends that.
  void setPostObserver(PostObserver observer) { postObserver_ = std::move(observer); }

 private:
  void receive(const std::string& name, const std::string& object, const Dictionary& userInfo);
  void deliver(const std::string& name, const std::string& object, const Dictionary& userInfo);

  struct Entry;
  std::vector<std::shared_ptr<Entry>> entries_;
  PostObserver postObserver_;
  std::size_t pending_ = 0;  ///< received and not delivered yet
  std::size_t pendingBytes_ = 0;
  bool dropping_ = false;
};

}  // namespace platform
