#include "Platform/AppKit/NSLayoutConstraint.h"
#include "Platform/AppKit/NSPasteboard.h"
#include "Platform/AppKit/NSWindow.h"
#include "VeltrikAppKit/CustomViews.h"
#include "VeltrikAppKit/PasteboardFiles.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitWindowHelperDelegateProtocol.h"
#include "VeltrikAppKit/VeltrikAppKitWindowHelper.h"

namespace veltrik {

using platform::LayoutAttribute;
using platform::NSLayoutConstraint;

void VeltrikAppKitWindowHelper::setAsFileDropable() {
  const auto window = nsWindow();
  const auto content = window ? window->contentView() : nullptr;
  if (!content) return;
  const auto view = std::make_shared<FileDroppableNSView>(content->bounds());
  view->setWantsLayer(true);
  view->layer()->backgroundColor = platform::Color{0, 0, 0, 0};
  content->addSubview(view);
  view->setTranslatesAutoresizingMaskIntoConstraints(false);
  for (const auto edge :
       {LayoutAttribute::top, LayoutAttribute::leading, LayoutAttribute::height, LayoutAttribute::width})
    NSLayoutConstraint::make(view, edge, content, edge, 1, 0)->setActive(true);
  view->setFileDropAction([weak = weak_from_this()](const std::vector<platform::URL>& files) {
    const auto self = weak.lock();
    if (const auto delegate = self ? self->delegate_.lock() : nullptr) delegate->didSelectedFilePath(files);
  });
}

std::vector<platform::URL> VeltrikAppKitWindowHelper::readPastedFilePath() {
  return readFiles(platform::NSPasteboard::general(), "ClipBoardImages");
}

}  // namespace veltrik
