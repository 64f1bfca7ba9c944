#include "Platform/AppKit/NSDockTile.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

#include "Platform/Foundation/Session.h"

namespace platform {

namespace {

std::string_view withoutBlanks(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::optional<std::int64_t> countOf(std::string_view label) {
  if (label.ends_with('+')) label.remove_suffix(1);
  if (label.empty() || label.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
  std::int64_t count = 0;
  const auto [end, failure] = std::from_chars(label.data(), label.data() + label.size(), count);
  return failure == std::errc() ? count : std::numeric_limits<std::int64_t>::max();
}

port::DockBadge badgeFor(const std::optional<std::string>& label) {
  const std::string_view text = withoutBlanks(label ? std::string_view(*label) : std::string_view());
  if (text.empty()) return {};
  if (const auto count = countOf(text)) return {count, false};
  return {std::nullopt, true};
}

}  // namespace

NSDockTile& NSDockTile::shared() {
  return Session::current().service<NSDockTile>();
}

void NSDockTile::setBadgeLabel(std::optional<std::string> label) {
  requireMainThread("NSDockTile::setBadgeLabel");
  badgeLabel_ = std::move(label);
  if (port::Dock* dock = Session::current().backend().dock()) dock->showBadge(badgeFor(badgeLabel_));
}

}  // namespace platform
