#include "Backends/Desktop/ToolkitBus.h"

#include <QByteArray>
#include <QtDBus/QDBusConnection>

#include "Backends/Desktop/SessionBus.h"

namespace desktop {

void keepToolkitFromHangingBus(const SessionBus& bus) {
  constexpr const char* kAddress = "DBUS_SESSION_BUS_ADDRESS";
  if (bus.connection() && sd_bus_is_ready(bus.connection()) > 0) return;
  // The toolkit looks at the address once and remembers what came of it.
  const bool isSet = qEnvironmentVariableIsSet(kAddress);
  const QByteArray address = qgetenv(kAddress);
  qputenv(kAddress, "disabled:");
  QDBusConnection::sessionBus();
  isSet ? qputenv(kAddress, address) : qunsetenv(kAddress);
}

}  // namespace desktop
