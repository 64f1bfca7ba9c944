#pragma once

#include <string>
#include <string_view>

#include "Programs/SampleHost/ConsoleOutput.h"
#include "Programs/SampleHost/ConsoleTargets.h"
#include "Programs/SampleHost/LineBuffer.h"

namespace samplehost {

/// Drives the host by JSON lines: one request a line, one answer a request, and what happens as it happens. Lines are
/// read by the run loop, one in a turn, so what a request leads to comes before the next one. Main thread.
class Console {
 public:
  /// All are borrowed and outlive the console. From its making to its end the log and the posted notifications are
  /// written too.
  Console(Host& host, Machine& machine, int input, std::FILE* output);
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

 private:
  void inputReady();
  void lineReady();
  void readInput();
  void handle(const LineBuffer::Line& line);
  /// The answer to a line, without the request's number.
  platform::Dictionary perform(const platform::Dictionary& request);

  Host& host_;
  Machine& machine_;
  ConsoleOutput output_;
  int input_;
  int lineSignal_;
  LineBuffer lines_;
  bool ended_ = false;
  std::uint64_t inputWatch_ = 0;
  std::uint64_t lineWatch_ = 0;
  OpenWindows<ChatWindow> chats_{"chat"};
  OpenWindows<SearchWindow> searches_{"search"};
  std::vector<std::function<void()>> afterAnswer_;
  std::function<void(const std::string&)> formerLogSink_;
};

}  // namespace samplehost
