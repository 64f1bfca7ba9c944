#include "VeltrikAppKit/SearchField.h"

#include "Platform/AppKit/VisualFormat.h"
#include "VeltrikAppKit/ProcessState.h"

namespace veltrik {

using platform::NSImage;

namespace {

constexpr platform::Color kBackground{0xF1 / 255.0, 0xF3 / 255.0, 0xF3 / 255.0, 1};
constexpr double kCornerRadius = 13;
constexpr const char* kPlaceholder = "검색해보세요";
constexpr const char* kSearchImage = "appKit_search";
constexpr const char* kCancelImage = "appKit_cancelCircle";
constexpr const char* kCancelAction = "searchFieldCancelAction:";

/// Null when the plug-in has no bundle, or the bundle no such picture.
std::shared_ptr<const NSImage> pluginImage(const char* name) {
  const auto bundle = appKitBundle();
  return bundle ? NSImage::forResource(*bundle, name) : nullptr;
}

}  // namespace

/// Tells when it is clicked.
class SearchField::TextField final : public platform::NSTextField {
 public:
  void setFocused(TextCallback callback) { focused_ = std::move(callback); }
  void mouseDown(const platform::EventPointer& event) override {
    const auto keepAlive = shared_from_this();
    NSTextField::mouseDown(event);
    if (const auto focused = focused_) focused(stringValue());
  }

 private:
  TextCallback focused_;
};

SearchField::SearchField()
    : searchIconImageView_(std::make_shared<platform::NSImageView>()),
      textField_(std::make_shared<TextField>()),
      cancelButton_(std::make_shared<platform::NSButton>()) {
  addSubview(searchIconImageView_);
  addSubview(textField_);
  addSubview(cancelButton_);
  setWantsLayer(true);
  *layer() = {.cornerRadius = kCornerRadius, .masksToBounds = true, .backgroundColor = kBackground};
  searchIconImageView_->setTranslatesAutoresizingMaskIntoConstraints(false);
  searchIconImageView_->setImage(pluginImage(kSearchImage));
  styleTextField();
  styleCancelButton();
}

std::shared_ptr<SearchField> SearchField::make() {
  std::shared_ptr<SearchField> made(new SearchField());
  made->configure();
  return made;
}

platform::NSTextField& SearchField::textField() {
  return *textField_;
}

void SearchField::styleTextField() {
  textField_->setTranslatesAutoresizingMaskIntoConstraints(false);
  textField_->setSelectable(true);
  textField_->setPlaceholderString(kPlaceholder);
  textField_->setTag(kTextFieldTag);
}

void SearchField::styleCancelButton() {
  cancelButton_->setTranslatesAutoresizingMaskIntoConstraints(false);
  cancelButton_->setImage(pluginImage(kCancelImage));
  cancelButton_->setHidden(true);
  cancelButton_->setAction(kCancelAction);
}

void SearchField::configure() {
  placeSubviews();
  const auto weak = std::weak_ptr(std::static_pointer_cast<SearchField>(shared_from_this()));
  textField_->setDelegate(std::shared_ptr<NSTextFieldDelegate>(weak.lock(), this));
  textField_->setFocused([weak](const std::string& text) {
    const auto self = weak.lock();
    if (const auto focused = self ? self->focused_ : nullptr) focused(text);
  });
}

void SearchField::placeSubviews() {
  for (const char* const format : {"V:|-(5)-[field(18)]", "V:|-(5)-[searchIcon(16)]", "V:|-(5)-[cancel(16)]",
                                   "H:|-(8)-[searchIcon(16)]-(8)-[field]-(3)-[cancel(16)]-(8)-|"})
    platform::activateConstraints(platform::constraintsWithVisualFormat(
        format, {{"searchIcon", searchIconImageView_}, {"field", textField_}, {"cancel", cancelButton_}}));
}

void SearchField::controlTextDidChange(platform::NSTextField& field) {
  const std::string text = field.stringValue();
  cancelButton_->setHidden(text.empty());
  if (const auto textChanged = textChanged_) textChanged(text);
}

void SearchField::controlTextDidEndEditing(platform::NSTextField& /*field*/) {
  if (const auto didEndEditing = didEndEditing_) didEndEditing();
}

bool SearchField::doCommand(std::string_view selector) {
  if (selector != kCancelAction) return NSView::doCommand(selector);
  clear();
  return true;
}

void SearchField::clear() {
  const auto keepAlive = shared_from_this();
  textField_->setStringValue("");
  if (const auto textChanged = textChanged_) textChanged("");
}

}  // namespace veltrik
