#include <fmt/format.h>

#include "Programs/SampleHost/ConsoleTargets.h"
#include "Programs/SampleHost/PluginBundle.h"

namespace samplehost {

using platform::Rect;
using platform::Value;
using std::optional;
using std::string;

namespace {

constexpr Rect kSearchFrame{620, 160, 300, 300};

void openSearch(ConsoleContext& context, const string& identifier, optional<Rect> frame) {
  context.searches.open(context.host, identifier, frame.value_or(kSearchFrame));
}

Value found(ConsoleContext& context, const string& identifier) {
  const SearchWindow& search = context.searches.at(identifier);
  return platform::Dictionary{{"names", Codec<std::vector<string>>::encode(search.found())},
                              {"chosen", static_cast<std::int64_t>(search.chosen())}};
}

}  // namespace

void addSearchCalls(ConsoleCalls& calls) {
  calls.add("openSearch", openSearch);
  calls.add("found", found);
}

void addPresenceCalls(ConsoleCalls& calls) {
  calls.add("idleTime", [](ConsoleContext&) { return idleTimeInterval(); });
  calls.add("userActsElsewhere", [](ConsoleContext& c) { c.headless().presence()->userActs(); });
  calls.add("setIdleTimeUnreadable",
            [](ConsoleContext& c, bool unreadable) { c.headless().faults().idleTimeUnreadable = unreadable; });
  calls.add("setScreensAsleep",
            [](ConsoleContext& c, bool asleep) { c.headless().presence()->setScreensAsleep(asleep); });
}

}  // namespace samplehost
