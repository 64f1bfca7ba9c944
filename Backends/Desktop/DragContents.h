#pragma once

#include <xcb/xproto.h>

#include <QAbstractNativeEventFilter>

#include "Backends/Desktop/SelectionReader.h"
#include "Platform/Port/Clipboard.h"

class QMimeData;

namespace desktop {

/// Knows when the drag over our windows last moved or was dropped (XDND 5): sources find what they drag by that time.
class DragClock final : public QAbstractNativeEventFilter {
 public:
  DragClock();
  ~DragClock() override;
  DragClock(const DragClock&) = delete;
  DragClock& operator=(const DragClock&) = delete;

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;
  xcb_timestamp_t time() const { return time_; }

 private:
  xcb_atom_t position_;
  xcb_atom_t drop_;
  xcb_timestamp_t time_ = XCB_CURRENT_TIME;
};

/// What is dragged over one of our windows; for the length of the toolkit's event that tells of it.
class DragContents final : public platform::port::Contents {
 public:
  DragContents(const QMimeData& data, SelectionReader& reader, xcb_timestamp_t time)
      : data_(data), reader_(reader), time_(time) {}

  std::vector<std::string> types() const override;
  std::optional<std::string> read(const std::string& type) const override;

 private:
  std::vector<std::string> offered() const;

  const QMimeData& data_;
  SelectionReader& reader_;
  xcb_timestamp_t time_;
};

}  // namespace desktop
