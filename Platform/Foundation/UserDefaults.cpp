#include "Platform/Foundation/UserDefaults.h"

#include <errno.h>

#include <system_error>

#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/JSON.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Foundation/Session.h"

namespace platform {

namespace {

/// The settings stay the application's when its program gets another name.
std::string domain() {
  const auto main = Bundle::main();
  const std::string identifier = main ? main->bundleIdentifier() : "";
  return identifier.empty() ? program_invocation_short_name : identifier;
}

}  // namespace

UserDefaults& UserDefaults::standard() {
  return Session::current().service<UserDefaults>();
}

UserDefaults::UserDefaults() : file_(Session::current().backend().folders().config / domain() / "defaults.json") {
  load();
}

Value UserDefaults::get(const std::string& key) const {
  requireMainThread("UserDefaults::get");
  const auto found = values_.find(key);
  return found == values_.end() ? Value() : found->second;
}

bool UserDefaults::boolForKey(const std::string& key) const {
  const Value value = get(key);
  const bool* const flag = value.get<bool>();
  return flag && *flag;
}

void UserDefaults::set(const std::string& key, Value value) {
  requireMainThread("UserDefaults::set");
  if (get(key) == value) return;
  if (value.isNull())
    values_.erase(key);
  else
    values_.insert_or_assign(key, std::move(value));
  save();
}

void UserDefaults::load() {
  std::error_code failure;
  if (!std::filesystem::exists(file_, failure)) return;
  try {
    const Data contents = FileManager().contents(URL::fileURL(file_.native()));
    if (const auto read = valueFromJSON(textOf(contents)); read && read->get<Dictionary>()) {
      values_ = *read->get<Dictionary>();
      return;
    }
  } catch (const CocoaError& error) {
    NSLog(std::string("The settings can't be read: ") + error.what());
  }
  // Kept for whoever wants to see what became of the settings.
  std::filesystem::rename(file_, file_.native() + ".broken", failure);
  NSLog("The settings in " + file_.native() + " are unreadable and were put aside");
}

void UserDefaults::save() const {
  try {
    const URL url = URL::fileURL(file_.native());
    FileManager().createParentDirectories(url);
    FileManager().writeAtomically(bytesOf(jsonText(values_, true)), url);
  } catch (const CocoaError& error) {
    NSLog(std::string("The settings can't be saved: ") + error.what());
  }
}

}  // namespace platform
