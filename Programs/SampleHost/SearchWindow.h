#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Programs/SampleHost/Host.h"
#include "Programs/SampleHost/HostScene.h"

namespace samplehost {

/// Finds people by name: the plug-in's search field over a list that the host draws. The arrows choose in the list.
/// What the field tells is an event from "search:ID". Main thread.
class SearchWindow {
 public:
  /// The host is borrowed and outlives the window.
  SearchWindow(Host& host, std::string identifier);
  ~SearchWindow();
  SearchWindow(const SearchWindow&) = delete;
  SearchWindow& operator=(const SearchWindow&) = delete;

  /// Binds, makes and shows the window; `frame` in screen points.
  void open(const platform::Rect& frame);
  const std::shared_ptr<platform::NSView>& field() const { return field_; }
  /// The names that are listed, the chosen one's place among them.
  std::vector<std::string> found() const;
  std::size_t chosen() const;

 private:
  class People;

  void tell(const char* event, platform::Value::Array arguments) const;

  Host& host_;
  std::string identifier_;
  std::shared_ptr<People> people_;
  std::shared_ptr<platform::NSView> field_;
};

}  // namespace samplehost
