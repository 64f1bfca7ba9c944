// A bare exchange of signals between two processes with QtDBus, nothing of ours in between.
//   bare-bus echo          answers every "ping" with a "pong" until its standard input ends
//   bare-bus measure N     sends N pings, each after the pong before it, and prints the round trips in nanoseconds

#include <unistd.h>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QSocketNotifier>
#include <QVariantMap>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using Clock = std::chrono::steady_clock;

const QString kPath = QStringLiteral("/bare");
const QString kInterface = QStringLiteral("com.brenholt.BareBus");

class Peer : public QObject {
  Q_OBJECT
 public:
  Peer(bool echoes, int rounds) : echoes_(echoes), left_(rounds) {
    const QString heard = echoes ? QStringLiteral("ping") : QStringLiteral("pong");
    QDBusConnection::sessionBus().connect({}, kPath, kInterface, heard, this,
                                          SLOT(heard(QString, QString, QVariantMap)));
  }
  void send() {
    sent_ = Clock::now();
    auto signal =
        QDBusMessage::createSignal(kPath, kInterface, echoes_ ? QStringLiteral("pong") : QStringLiteral("ping"));
    signal << QStringLiteral("mirelo_parentWindowFrame") << QString()
           << QVariantMap{{QStringLiteral("parentID"), QStringLiteral("main")},
                          {QStringLiteral("parentFrame"), QStringLiteral("{{10, 20}, {300, 400}}")},
                          {QStringLiteral("isResized"), QStringLiteral("false")}};
    QDBusConnection::sessionBus().send(signal);
  }

 private Q_SLOTS:
  void heard(const QString&, const QString&, const QVariantMap&) {
    if (echoes_) return send();
    const auto taken = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - sent_);
    std::printf("%lld\n", static_cast<long long>(taken.count()));
    if (--left_ > 0) return send();
    std::fflush(stdout);
    QCoreApplication::quit();
  }

 private:
  bool echoes_;
  int left_;
  Clock::time_point sent_;
};

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  const bool echoes = argc > 1 && std::strcmp(argv[1], "echo") == 0;
  Peer peer(echoes, argc > 2 ? std::atoi(argv[2]) : 1000);
  if (!echoes) peer.send();
  if (echoes) {
    std::puts("ready");
    std::fflush(stdout);
  }
  QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, &application, [echoes] {
    char byte = 0;
    if (echoes && ::read(STDIN_FILENO, &byte, 1) <= 0) QCoreApplication::quit();
  });
  return QCoreApplication::exec();
}

#include "BareBus.moc"
