#include <fmt/format.h>

#include "Programs/SampleHost/ConsoleTargets.h"

namespace samplehost {

using platform::Rect;
using platform::Value;
using std::optional;
using std::string;

namespace {

constexpr Rect kChatFrame{120, 120, 460, 640};

void answer(ConsoleContext& context, const string& delegate, const string& member, const Value& value) {
  context.host.answers().set(delegate, member, value);
  if (kindOfName(delegate) == "application") context.host.applicationDelegate().remakeClass();
}

void openChat(ConsoleContext& context, const string& identifier, optional<Rect> frame) {
  context.chats.open(context.host, identifier, frame.value_or(kChatFrame));
}

Value messages(ConsoleContext& context, const string& identifier) {
  Value::Array texts;
  for (const ChatMessage& message : context.chats.at(identifier).chat().messages()) texts.push_back(message.text);
  return texts;
}

/// Lets go of the window's helper, as a host does when its window has closed.
void releaseHelper(ConsoleContext& context, const string& identifier) {
  context.chats.close(identifier);
  context.searches.close(identifier);
  context.host.window(identifier).helper.reset();
}

void releaseStatusItem(ConsoleContext& context, std::uint32_t number) {
  context.host.statusItems().erase(std::to_string(number));
}

Value calls(ConsoleContext& /*context*/, const string& kind) {
  return Codec<std::vector<string>>::encode(callsOf(kind).names());
}

}  // namespace

ConsoleCalls hostCalls() {
  ConsoleCalls table;
  table.add("answer", answer);
  table.add("launch", [](ConsoleContext& c) { c.host.launch(); });
  table.add("openChat", openChat);
  table.add("messages", messages);
  table.add("releaseHelper", releaseHelper);
  table.add("releaseStatusItem", releaseStatusItem);
  table.add("calls", calls);
  addSearchCalls(table);
  return table;
}

}  // namespace samplehost
