#include "Programs/SampleHost/Console.h"

#include <fmt/format.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <system_error>
#include <utility>

#include "Platform/Foundation/DistributedNotificationCenter.h"
#include "Platform/Foundation/JSON.h"
#include "Platform/Foundation/Log.h"

namespace samplehost {

using platform::Dictionary;

namespace {

struct Request {
  std::string on;
  std::string call;
  Value::Array arguments;
};

Request decode(const Dictionary& line) {
  Request request;
  for (const auto& [name, value] : line) {
    if (name == "on") {
      request.on = Codec<std::string>::decode(value);
    } else if (name == "call") {
      request.call = Codec<std::string>::decode(value);
    } else if (name == "args") {
      request.arguments = Codec<Value::Array>::decode(value);
    } else if (name != "id") {
      throw RequestError(fmt::format("a request has no \"{}\"", name));
    }
  }
  if (request.on.empty()) throw RequestError("\"on\" is missing");
  if (request.call.empty()) throw RequestError("\"call\" is missing");
  return request;
}

Value idOf(const Dictionary& line) {
  const auto found = line.find("id");
  return found == line.end() ? Value() : found->second;
}

}  // namespace

Console::Console(Host& host, Machine& machine, int input, std::FILE* output)
    : host_(host),
      machine_(machine),
      output_(output),
      input_(input),
      lineSignal_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (lineSignal_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  formerLogSink_ = platform::setLogSink([this](const std::string& line) { output_.write({{"log", line}}); });
  platform::DistributedNotificationCenter::defaultCenter().setPostObserver(
      [this](const std::string& name, const std::string&, const Dictionary& userInfo) {
        output_.write({{"posted", name}, {"userInfo", userInfo}});
      });
  host_.events().listen([this](const HostEvent& event) {
    output_.write({{"event", event.name}, {"from", event.from}, {"args", event.arguments}});
  });
  auto& loop = machine_.backend->loop();
  inputWatch_ = loop.watch(input_, [this] { inputReady(); });
  lineWatch_ = loop.watch(lineSignal_, [this] { lineReady(); });
}

Console::~Console() {
  auto& loop = machine_.backend->loop();
  if (inputWatch_) loop.unwatch(inputWatch_);
  loop.unwatch(lineWatch_);
  close(lineSignal_);
  platform::DistributedNotificationCenter::defaultCenter().setPostObserver(nullptr);
  platform::setLogSink(std::move(formerLogSink_));
}

void Console::inputReady() {
  readInput();
  // Lines that came together are still handled one in a turn.
  if (!lines_.isEmpty() || ended_) eventfd_write(lineSignal_, 1);
}

void Console::readInput() {
  std::array<char, 65536> bytes;
  const ssize_t count = read(input_, bytes.data(), bytes.size());
  if (count > 0) {
    lines_.append({bytes.data(), static_cast<std::size_t>(count)});
  } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
    lines_.finish();
    ended_ = true;
    machine_.backend->loop().unwatch(std::exchange(inputWatch_, 0));
  }
}

void Console::lineReady() {
  eventfd_t ignored = 0;
  eventfd_read(lineSignal_, &ignored);
  const auto line = lines_.take();
  // Before the line is handled: a loop inside of it takes the following ones.
  if (!lines_.isEmpty() || (ended_ && line)) eventfd_write(lineSignal_, 1);
  if (line) {
    handle(*line);
  } else if (ended_) {
    platform::NSApplication::shared().stop();
  }
}

void Console::handle(const LineBuffer::Line& line) {
  const auto value = line.tooLong ? std::nullopt : platform::valueFromJSON(line.text);
  const Dictionary* request = value ? value->get<Dictionary>() : nullptr;
  if (!request) {
    const char* reason = line.tooLong ? "the line is too long" : "the line is not a JSON object";
    output_.write({{"id", Value()}, {"error", reason}});
    return;
  }
  std::vector<std::function<void()>> after;
  Dictionary answer = perform(*request);
  std::swap(after, afterAnswer_);
  answer["id"] = idOf(*request);
  output_.write(answer);
  for (const auto& action : after) action();
}

Dictionary Console::perform(const Dictionary& line) {
  try {
    const Request request = decode(line);
    ConsoleContext context{host_, machine_, chats_, searches_, identifierOfName(request.on), afterAnswer_};
    return {{"result", callsOf(kindOfName(request.on)).call(request.call, context, request.arguments)}};
  } catch (const std::exception& problem) {
    return {{"error", problem.what()}};
  }
}

}  // namespace samplehost
