#include "VeltrikAppKit/Protocols/VeltrikAppKitSearchField.h"

#include "VeltrikAppKit/SearchField.h"

extern "C" __attribute__((visibility("default"))) void VeltrikAppKitMakeSearchField(
    const veltrik::SearchFieldCallbacks& callbacks, std::shared_ptr<platform::NSView>* searchField) {
  const auto made = veltrik::SearchField::make();
  made->setFocused(callbacks.focused);
  made->setArrowKeyDidDown(callbacks.arrowKeyDidDown);
  made->setDidEndEditing(callbacks.didEndEditing);
  made->setTextChanged(callbacks.textChanged);
  *searchField = made;
}
