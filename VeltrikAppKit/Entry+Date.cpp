#include <algorithm>

#include "VeltrikAppKit/Entry.h"

namespace veltrik {

namespace {

namespace chrono = std::chrono;

constexpr int kFirstYear = 1980;
constexpr int kLastYear = 2099;

}  // namespace

Date date(std::uint16_t dosDate, std::uint16_t dosTime) {
  // The fields can hold months and days that there are not; those run over into the next year and month.
  const chrono::months month(((dosDate >> 5) & 0x0F) - 1);
  const auto firstOfMonth = chrono::year(kFirstYear + (dosDate >> 9)) / chrono::January / 1 + month;
  return chrono::sys_days(firstOfMonth) + chrono::days((dosDate & 0x1F) - 1) + chrono::hours(dosTime >> 11) +
         chrono::minutes((dosTime >> 5) & 0x3F) + chrono::seconds((dosTime & 0x1F) * 2);
}

std::uint16_t dosDate(Date date) {
  const chrono::year_month_day parts(chrono::floor<chrono::days>(date));
  const int year = std::clamp(static_cast<int>(parts.year()), kFirstYear, kLastYear);
  return static_cast<std::uint16_t>(static_cast<unsigned>(parts.day()) + static_cast<unsigned>(parts.month()) * 32 +
                                    static_cast<unsigned>(year - kFirstYear) * 512);
}

std::uint16_t dosTime(Date date) {
  const chrono::hh_mm_ss parts(chrono::floor<chrono::seconds>(date - chrono::floor<chrono::days>(date)));
  return static_cast<std::uint16_t>(parts.seconds().count() / 2 + parts.minutes().count() * 32 +
                                    parts.hours().count() * 2048);
}

}  // namespace veltrik
