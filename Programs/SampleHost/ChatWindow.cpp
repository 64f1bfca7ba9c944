#include "Programs/SampleHost/ChatWindow.h"

#include <utility>

#include "Platform/Foundation/Session.h"
#include "Programs/SampleHost/ChatLayout.h"
#include "VeltrikAppKit/Protocols/VeltrikTextInputView.h"

namespace samplehost {

namespace {

double wallClock() {
  return platform::Session::current().backend().loop().wallClock();
}

/// Without blanks and empty lines around it.
std::string trimmed(const std::string& text) {
  constexpr const char* kBlank = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlank);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

}  // namespace

ChatWindow::ChatWindow(Host& host, std::string identifier)
    : host_(host), identifier_(std::move(identifier)), chat_("데스크톱 팀", "서연, 도윤 외 2명") {
  fillWithSampleConversation(chat_, wallClock());
  view_ = std::make_shared<ChatView>(chat_);
  chat_.setChanged([this] { redraw(); });
}

ChatWindow::~ChatWindow() {
  HostWindow& record = host_.window(identifier_);
  record.delegate->setResized(nullptr);
  record.textDelegate->setSend(nullptr);
  record.textDelegate->setChanged(nullptr);
  if (const auto view = host_.layer().hostView(identifier_)) view->setScene(nullptr);
}

void ChatWindow::open(const platform::Rect& frame) {
  host_.bind(identifier_);
  const auto native = host_.layer().makeWindow(identifier_, frame);
  host_.layer().hostView(identifier_)->setScene(view_);
  native->makeKeyAndOrderFront(nullptr);

  HostWindow& record = host_.window(identifier_);
  record.delegate->setResized([this] { placeDragRegion(); });
  record.textDelegate->setSend([this] { send(); });
  record.textDelegate->setChanged([this](const std::string& text) { composerChanged(text); });
  record.helper->setTitleBarTransparentAndTitleHidden();
  placeDragRegion();
  record.helper->addConversationTextInputViewOn(ChatLayout::of(host_.boundsOf(identifier_)).input, record.textDelegate);
  record.helper->makeTextViewFirstResponder(true);
}

void ChatWindow::placeDragRegion() {
  const HelperPointer helper = host_.helperOf(identifier_);
  helper->resetAllMovableBounds();
  helper->addMovableBounds(ChatLayout::of(host_.boundsOf(identifier_)).dragRegion);
}

void ChatWindow::announce(const std::string& text) {
  chat_.append({.author = "Mirelo", .text = text, .sentAt = wallClock()});
}

void ChatWindow::send() {
  const HelperPointer helper = host_.helperOf(identifier_);
  const auto input = helper ? helper->textInputView() : nullptr;
  if (!input) return;
  // A syllable that is still being composed belongs to the message.
  input->unmark();
  const std::string text = trimmed(draft());
  if (text.empty()) return;
  input->reset();
  view_->list().scrollToEnd();
  chat_.append({.author = {}, .text = text, .sentAt = wallClock(), .own = true});
}

std::string ChatWindow::draft() const {
  const HelperPointer helper = host_.helperOf(identifier_);
  const auto input = helper ? helper->textInputView() : nullptr;
  const auto text = input ? input->attributedText() : std::nullopt;
  return text ? text->utf8String() : std::string();
}

void ChatWindow::composerChanged(const std::string& text) {
  if (view_->setComposerEmpty(text.empty())) redraw();
}

void ChatWindow::redraw() const {
  if (const auto view = host_.layer().hostView(identifier_)) view->setNeedsDisplay();
}

}  // namespace samplehost
