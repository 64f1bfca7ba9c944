#include <algorithm>
#include <ctime>

#include "VeltrikAppKit/Entry.h"

namespace veltrik {

namespace {

constexpr int kFirstYear = 1980;
constexpr int kLastYear = 2099;

/// The date's parts in UTC, or nothing when they don't fit.
std::optional<std::tm> brokenDown(Date date) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(date.time_since_epoch()).count();
  const auto time = static_cast<std::time_t>(seconds);
  std::tm parts{};
  return gmtime_r(&time, &parts) != nullptr ? std::optional(parts) : std::nullopt;
}

}  // namespace

Date date(std::uint16_t dosDate, std::uint16_t dosTime) {
  std::tm parts{};
  parts.tm_sec = (dosTime & 0x1F) * 2;
  parts.tm_min = (dosTime >> 5) & 0x3F;
  parts.tm_hour = dosTime >> 11;
  parts.tm_mday = dosDate & 0x1F;
  parts.tm_mon = ((dosDate >> 5) & 0x0F) - 1;
  parts.tm_year = kFirstYear + (dosDate >> 9) - 1900;
  return std::chrono::system_clock::from_time_t(timegm(&parts));
}

std::uint16_t dosDate(Date date) {
  const auto parts = brokenDown(date);
  if (!parts) return 0;
  const int year = std::clamp(parts->tm_year + 1900, kFirstYear, kLastYear);
  return static_cast<std::uint16_t>(parts->tm_mday + (parts->tm_mon + 1) * 32 + (year - kFirstYear) * 512);
}

std::uint16_t dosTime(Date date) {
  const auto parts = brokenDown(date);
  if (!parts) return 0;
  return static_cast<std::uint16_t>(parts->tm_sec / 2 + parts->tm_min * 32 + parts->tm_hour * 2048);
}

}  // namespace veltrik
