#include "Programs/Companion/Companion.h"

#include "Platform/AppKit/NSApplication.h"
#include "Platform/Foundation/DistributedNotificationCenter.h"
#include "Platform/Foundation/JSON.h"
#include "VeltrikAppKit/MireloDistributedNotification.h"

namespace companion {

using platform::Dictionary;
using Notification = veltrik::MireloDistributedNotification;

Companion::Companion(const std::string& launchArgument) : window_(CompanionWindow::make([this] { end(); })) {
  observe();
  const auto argument = platform::valueFromJSON(launchArgument);
  const auto* const request = argument ? argument->get<Dictionary>() : nullptr;
  if (request) page_ = Page::from(*request);
  window_->show(page_);
  feedBack("started", page_.url);
}

Companion::~Companion() {
  platform::DistributedNotificationCenter::defaultCenter().removeObserver(this);
}

void Companion::observe() {
  veltrik::addObserver(this, Notification::webViewLoading, [this](const Dictionary& info) { load(info); });
  veltrik::addObserver(this, Notification::parentWindowFrame, [this](const Dictionary& info) {
    const auto frame = rectFrom(textIn(info, "parentFrame"));
    if (!frame || !concerns(info)) return;
    parentFrame_ = frame;
    window_->follow(*frame);
  });
  veltrik::addObserver(this, Notification::parentWindowDidBecomeMain, [this](const Dictionary& info) {
    if (concerns(info)) window_->comeForward();
  });
  veltrik::addObserver(this, Notification::mireloAppBecomeActive,
                       [this](const Dictionary&) { window_->comeForward(); });
  veltrik::addObserver(this, Notification::parentWindowWillClose, [this](const Dictionary& info) {
    if (!concerns(info)) return;
    window_->hide();
    feedBack("hidden", page_.url);
  });
  veltrik::addObserver(this, Notification::mireloAppWillTerminate, [this](const Dictionary&) { end(); });
}

void Companion::load(const Dictionary& parameters) {
  page_ = Page::from(parameters);
  window_->show(page_);
  if (const auto told = rectFrom(textIn(parameters, "parentFrame"))) parentFrame_ = told;
  if (parentFrame_) window_->follow(*parentFrame_);
  feedBack("loaded", page_.url);
}

bool Companion::concerns(const Dictionary& notification) const {
  return page_.parentID.empty() || page_.parentID == textIn(notification, "parentID");
}

void Companion::feedBack(const std::string& event, const std::string& url) {
  veltrik::post({{"event", event}, {"url", url}}, Notification::webViewFeedback);
}

void Companion::end() {
  feedBack("closed", page_.url);
  platform::NSApplication::shared().stop();
}

}  // namespace companion
