#pragma once

namespace desktop {

class SessionBus;

/// To be called before the toolkit makes something that those who read the screen to the user must hear of: it asks the
/// session bus for them then, and waits. A bus that hasn't answered us either is none for the toolkit, for as long as
/// the program runs.
void keepToolkitFromHangingBus(const SessionBus& bus);

}  // namespace desktop
