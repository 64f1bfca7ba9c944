#pragma once

namespace headless {

/// What this machine refuses or does badly; a test turns it on and off at any time.
struct Faults {
  bool broadcastDown = false;        ///< posts fail, nothing is received
  bool clipboardFailing = false;     ///< reads give nothing, writes are lost
  bool activationRefused = false;    ///< the window manager ignores requests for the focus
  bool moveUnsupported = false;      ///< `Surface::beginMove` answers false
  bool moveReportedAtEnd = false;    ///< a move by the machine reports one frame, when it ends
  bool minimiseUnsupported = false;  ///< requests to minimise are ignored
  bool zoomUnsupported = false;      ///< requests to zoom are ignored
  bool openingFails = false;         ///< no file can be opened or shown
  bool idleTimeUnreadable = false;   ///< nobody tells how long the user was away
};

}  // namespace headless
