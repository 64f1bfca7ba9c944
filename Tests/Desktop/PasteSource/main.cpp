// Another application, for tests: owns the clipboard, keeps what others leave there, or drags something, in every way
// that applications do.
//
//   PasteSource own whole|pieces|silent|dying TYPE=FILE...
//   PasteSource keep                           a clipboard manager
//   PasteSource drag X Y TYPE=FILE...          a window whose contents can be dragged with the left button
//
// Tells "ready" on standard output, with `keep` each text that it was asked to keep, and with `drag` that what is
// dragged is wanted where it is, and how each drag ended. Ends with its standard input.

#include <poll.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <QtGui/qguiapplication_platform.h>
#include <QAbstractNativeEventFilter>
#include <QClipboard>
#include <QDrag>
#include <QGuiApplication>
#include <QMimeData>
#include <QMouseEvent>
#include <QRasterWindow>
#include <QSocketNotifier>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace {

using Offer = std::vector<std::pair<std::string, std::string>>;

Offer offerFrom(char** first, char** last) {
  Offer offer;
  for (; first != last; ++first) {
    const std::string argument = *first;
    const auto equals = argument.find('=');
    std::ifstream file(argument.substr(equals + 1), std::ios::binary);
    offer.emplace_back(argument.substr(0, equals), std::string{std::istreambuf_iterator<char>(file), {}});
  }
  return offer;
}

void tell(const char* what) {
  std::puts(what);
  std::fflush(stdout);
}

xcb_atom_t atomOf(xcb_connection_t* connection, const std::string& name) {
  const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
  xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(connection, cookie, nullptr);
  const xcb_atom_t result = reply->atom;
  std::free(reply);
  return result;
}

void notify(xcb_connection_t* connection, const xcb_selection_request_event_t& request, xcb_atom_t property) {
  xcb_selection_notify_event_t notice{};
  notice.response_type = XCB_SELECTION_NOTIFY;
  notice.requestor = request.requestor;
  notice.selection = request.selection;
  notice.target = request.target;
  notice.property = property;
  notice.time = request.time;
  xcb_send_event(connection, 0, request.requestor, 0, reinterpret_cast<const char*>(&notice));
  xcb_flush(connection);
}

/// Speaks the selection protocol itself (ICCCM 2), so that it can also speak it badly.
class Owner {
 public:
  Owner(std::string manner, Offer offer) : manner_(std::move(manner)), offer_(std::move(offer)) {
    connection_ = xcb_connect(nullptr, nullptr);
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    window_ = xcb_generate_id(connection_);
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen->root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_set_selection_owner(connection_, window_, atom("CLIPBOARD"), XCB_CURRENT_TIME);
    // The answer comes when the server has dealt with that too, so nobody finds the former owner from here on.
    std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
  }
  ~Owner() { xcb_disconnect(connection_); }
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;

  int run() {
    tell("ready");
    pollfd polled[] = {{xcb_get_file_descriptor(connection_), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
    while (!(polled[1].revents)) {
      while (xcb_generic_event_t* event = xcb_poll_for_event(connection_)) {
        handle(*event);
        std::free(event);
      }
      xcb_flush(connection_);
      poll(polled, 2, -1);
    }
    return 0;
  }

 private:
  struct Transfer {
    xcb_window_t window;
    xcb_atom_t property, type;
    std::string rest;
    bool ended = false;
  };
  static constexpr std::size_t kPiece = 60'000;

  xcb_atom_t atom(const std::string& name) { return atomOf(connection_, name); }

  void handle(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7F) {
      case XCB_SELECTION_REQUEST:
        return answer(reinterpret_cast<const xcb_selection_request_event_t&>(event));
      case XCB_PROPERTY_NOTIFY:
        return goOn(reinterpret_cast<const xcb_property_notify_event_t&>(event));
      case XCB_SELECTION_CLEAR:
        std::exit(0);
    }
  }

  void answer(const xcb_selection_request_event_t& request) {
    if (manner_ == "silent") return;
    xcb_atom_t property = request.property;
    if (request.target == atom("TARGETS")) {
      std::vector<xcb_atom_t> targets{atom("TARGETS")};
      for (const auto& each : offer_) targets.push_back(atom(each.first));
      xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, request.requestor, property, XCB_ATOM_ATOM, 32,
                          static_cast<std::uint32_t>(targets.size()), targets.data());
    } else if (!send(request)) {
      property = XCB_ATOM_NONE;
    }
    notify(connection_, request, property);
  }

  bool send(const xcb_selection_request_event_t& request) {
    const auto found = std::find_if(offer_.begin(), offer_.end(),
                                    [&](const auto& each) { return atom(each.first) == request.target; });
    if (found == offer_.end()) return false;
    if (manner_ == "whole") {
      put(request.requestor, request.property, request.target, found->second);
      return true;
    }
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection_, request.requestor, XCB_CW_EVENT_MASK, &events);
    const auto size = static_cast<std::uint32_t>(found->second.size());
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, request.requestor, request.property, atom("INCR"), 32, 1,
                        &size);
    transfers_.push_back({request.requestor, request.property, request.target, found->second});
    return true;
  }

  void put(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, const std::string& bytes) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<std::uint32_t>(bytes.size()), bytes.data());
  }

  void goOn(const xcb_property_notify_event_t& change) {
    if (change.state != XCB_PROPERTY_DELETE) return;
    for (Transfer& each : transfers_) {
      if (each.window != change.window || each.property != change.atom || each.ended) continue;
      if (manner_ == "dying" && pieces_++ == 2) std::_Exit(0);
      put(each.window, each.property, each.type, each.rest.substr(0, kPiece));
      each.ended = each.rest.empty();
      each.rest.erase(0, kPiece);
    }
  }

  std::string manner_;
  Offer offer_;
  xcb_connection_t* connection_;
  xcb_window_t window_;
  std::vector<Transfer> transfers_;
  int pieces_ = 0;
};

class Draggable final : public QRasterWindow {
 public:
  explicit Draggable(Offer offer) : offer_(std::move(offer)) { setTitle("Draggable"); }

 protected:
  void mouseMoveEvent(QMouseEvent* event) override {
    if (!(event->buttons() & Qt::LeftButton) || dragging_) return;
    dragging_ = true;
    auto* data = new QMimeData;
    for (const auto& [type, bytes] : offer_)
      data->setData(QString::fromStdString(type), QByteArray::fromStdString(bytes));
    auto* drag = new QDrag(this);  // the toolkit deletes it when the target has what it asks for
    drag->setMimeData(data);
    QObject::connect(drag, &QDrag::actionChanged, [](Qt::DropAction action) {
      if (action == Qt::CopyAction) tell("wanted");
    });
    const Qt::DropAction action = drag->exec(Qt::CopyAction);
    tell(action == Qt::CopyAction ? "copied" : "refused");
    dragging_ = false;
  }

 private:
  Offer offer_;
  bool dragging_ = false;
};

/// What the freedesktop.org clipboard manager protocol asks for, with text.
class Keeper final : public QAbstractNativeEventFilter {
 public:
  Keeper() : connection_(qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection()) {
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen->root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_set_selection_owner(connection_, window_, atomOf(connection_, "CLIPBOARD_MANAGER"), XCB_CURRENT_TIME);
    xcb_flush(connection_);
    qGuiApp->installNativeEventFilter(this);
  }
  /// Or the toolkit would ask us to keep what we have, at the end.
  ~Keeper() override {
    xcb_destroy_window(connection_, window_);
    xcb_flush(connection_);
  }

  bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override {
    const auto& request = *static_cast<const xcb_selection_request_event_t*>(message);
    if ((request.response_type & 0x7F) != XCB_SELECTION_REQUEST ||
        request.target != atomOf(connection_, "SAVE_TARGETS"))
      return false;
    QMetaObject::invokeMethod(
        qGuiApp, [this, request] { keep(request); }, Qt::QueuedConnection);
    return true;
  }

 private:
  void keep(const xcb_selection_request_event_t& request) {
    const QString text = QGuiApplication::clipboard()->text();
    QGuiApplication::clipboard()->setText(text);
    notify(connection_, request, request.property);
    tell(text.toUtf8().constData());
  }

  xcb_connection_t* const connection_;
  const xcb_window_t window_ = xcb_generate_id(connection_);
};

int keep(int count, char** arguments) {
  QGuiApplication application(count, arguments);
  Keeper keeper;
  QSocketNotifier end(STDIN_FILENO, QSocketNotifier::Read);
  QObject::connect(&end, &QSocketNotifier::activated, &application, &QGuiApplication::quit);
  tell("ready");
  return application.exec();
}

int drag(int count, char** arguments) {
  QGuiApplication application(count, arguments);
  Draggable window(offerFrom(arguments + 4, arguments + count));
  window.setFlags(Qt::Window | Qt::FramelessWindowHint);
  window.setGeometry(std::atoi(arguments[2]), std::atoi(arguments[3]), 120, 120);
  window.show();
  QSocketNotifier end(STDIN_FILENO, QSocketNotifier::Read);
  QObject::connect(&end, &QSocketNotifier::activated, &application, &QGuiApplication::quit);
  QMetaObject::invokeMethod(
      &window, [] { tell("ready"); }, Qt::QueuedConnection);
  return application.exec();
}

}  // namespace

int main(int count, char** arguments) {
  const std::string what = count > 1 ? arguments[1] : "";
  if (what == "keep") return keep(count, arguments);
  if (what == "own" && count > 2) return Owner(arguments[2], offerFrom(arguments + 3, arguments + count)).run();
  if (what == "drag" && count > 4) return drag(count, arguments);
  std::fputs("usage: PasteSource own MANNER TYPE=FILE... | keep | drag X Y TYPE=FILE...\n", stderr);
  return 2;
}
