#include "Platform/Foundation/ApplicationProcess.h"

#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileDescriptor.h"
#include "Platform/Foundation/Process.h"

// This C library forgot to say that these are C functions.
extern "C" {
#include <sys/pidfd.h>
}

namespace platform {

namespace {

namespace filesystem = std::filesystem;

constexpr std::size_t kLongestCommandStart = 8192;
constexpr std::string_view kSessionBus = "DBUS_SESSION_BUS_ADDRESS=";
constexpr int kParentField = 4 - 3;  ///< fields of "stat" are counted from 1; those behind the name begin with the 3rd
constexpr int kStartTimeField = 22 - 3;

struct Listed {
  ApplicationProcess process;
  pid_t parent = 0;
};

struct Birth {
  pid_t parent = 0;
  std::uint64_t startTime = 0;
};

template <class Number>
std::optional<Number> numberIn(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::string startOf(const filesystem::path& file, std::size_t most) {
  std::ifstream stream(file, std::ios::binary);
  std::string text(most, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(most));
  text.resize(static_cast<std::size_t>(stream.gcount()));
  return text;
}

/// Nothing for a process that has gone. A program's name may hold anything, so fields are counted from its last ")".
std::optional<Birth> birthOf(const filesystem::path& entry) {
  const std::string text = startOf(entry / "stat", kLongestCommandStart);
  const auto nameEnd = text.rfind(") ");
  if (nameEnd == std::string::npos) return std::nullopt;
  std::string_view rest = std::string_view(text).substr(nameEnd + 2);
  std::vector<std::string_view> fields;
  while (!rest.empty() && fields.size() <= kStartTimeField) {
    const auto end = std::min(rest.find(' '), rest.size());
    fields.push_back(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  if (fields.size() <= kStartTimeField) return std::nullopt;
  const auto parent = numberIn<pid_t>(fields[kParentField]);
  const auto startTime = numberIn<std::uint64_t>(fields[kStartTimeField]);
  if (!parent || !startTime) return std::nullopt;
  return Birth{*parent, *startTime};
}

/// The bundle that holds a program at "X.app/Contents/Linux/name", or nothing.
filesystem::path bundleAround(const filesystem::path& program) {
  const filesystem::path folder = program.parent_path();
  const bool inBundle =
      program.is_absolute() && folder.filename() == "Linux" && folder.parent_path().filename() == "Contents";
  return inBundle ? folder.parent_path().parent_path() : filesystem::path();
}

/// What the process runs: its program, and for an interpreter's its script. An update takes a program's file away while
/// it runs.
std::vector<filesystem::path> programsOf(const filesystem::path& entry) {
  constexpr std::string_view kTakenAway = " (deleted)";
  std::error_code failure;
  std::string program = filesystem::read_symlink(entry / "exe", failure).native();
  if (failure) return {};
  if (program.ends_with(kTakenAway)) program.resize(program.size() - kTakenAway.size());
  std::vector<filesystem::path> programs{program};
  if (!bundleAround(program).empty()) return programs;
  const std::string command = startOf(entry / "cmdline", kLongestCommandStart);
  const auto script = command.find('\0') + 1;
  if (script != 0 && script < command.size()) programs.emplace_back(command.c_str() + script);
  return programs;
}

/// Which desktop a process belongs to: the address of its session bus as it was started with, empty for none.
std::string desktopOf(const filesystem::path& entry) {
  std::ifstream variables(entry / "environ", std::ios::binary);
  for (std::string variable; std::getline(variables, variable, '\0');)
    if (variable.starts_with(kSessionBus)) return variable.substr(kSessionBus.size());
  return {};
}

std::string ownDesktop() {
  const char* const address = std::getenv(std::string(kSessionBus.substr(0, kSessionBus.size() - 1)).c_str());
  return address ? address : "";
}

class Table {
 public:
  explicit Table(filesystem::path path) : path_(std::move(path)) {}

  std::vector<ApplicationProcess> applications() {
    std::vector<Listed> listed;
    std::error_code failure;
    for (filesystem::directory_iterator at(path_, failure), end; !failure && at != end; at.increment(failure))
      if (auto found = application(at->path())) listed.push_back(std::move(*found));
    std::ranges::sort(listed, {}, [](const Listed& each) { return each.process.id; });
    std::vector<ApplicationProcess> result;
    for (const Listed& each : listed)
      if (!isPartOfAnother(each, listed)) result.push_back(each.process);
    return result;
  }

 private:
  std::optional<Listed> application(const filesystem::path& entry) {
    const auto id = numberIn<pid_t>(entry.filename().native());
    struct stat status {};
    if (!id || stat(entry.c_str(), &status) != 0 || status.st_uid != geteuid()) return std::nullopt;
    for (const filesystem::path& program : programsOf(entry)) {
      const Bundle* const bundle = bundleOf(program);
      if (!bundle) continue;
      const auto birth = birthOf(entry);
      if (!birth || desktopOf(entry) != desktop_) return std::nullopt;
      return Listed{{*id, birth->startTime, bundle->path(), bundle->bundleIdentifier()}, birth->parent};
    }
    return std::nullopt;
  }

  /// The bundle whose main executable `program` is, or null.
  const Bundle* bundleOf(const filesystem::path& program) {
    const filesystem::path path = bundleAround(program);
    if (path.empty()) return nullptr;
    auto known = bundles_.find(path);
    if (known == bundles_.end()) known = bundles_.emplace(path, Bundle::read(path)).first;
    const Bundle* const bundle = known->second.get();
    return bundle && bundle->executablePath().filename() == program.filename() ? bundle : nullptr;
  }

  static bool isPartOfAnother(const Listed& each, const std::vector<Listed>& all) {
    return std::ranges::any_of(all, [&](const Listed& other) {
      return other.process.id == each.parent && other.process.bundle == each.process.bundle;
    });
  }

  filesystem::path path_;
  std::string desktop_ = ownDesktop();
  std::map<filesystem::path, std::shared_ptr<const Bundle>> bundles_;
};

/// A handle on exactly this process, or none.
FileDescriptor handleOn(const ApplicationProcess& process) {
  FileDescriptor handle(pidfd_open(process.id, 0));
  const auto birth = birthOf("/proc/" + std::to_string(process.id));
  if (!birth || birth->startTime != process.startTime) return FileDescriptor();
  return handle;
}

}  // namespace

void waitUntilEnded(pid_t process) {
  const FileDescriptor handle(pidfd_open(process, 0));
  pollfd ended{handle.get(), POLLIN, 0};
  while (handle && poll(&ended, 1, -1) < 0 && errno == EINTR) {
  }
}

std::vector<ApplicationProcess> ApplicationProcess::all(const filesystem::path& table) {
  return Table(table).applications();
}

ApplicationProcess ApplicationProcess::launch(const Bundle& bundle, std::vector<std::string> arguments) {
  Process process;
  process.setLaunchPath(bundle.executablePath());
  process.setArguments(std::move(arguments));
  const pid_t id = process.launchDetached();
  const auto birth = birthOf("/proc/" + std::to_string(id));
  return {id, birth ? birth->startTime : 0, bundle.path(), bundle.bundleIdentifier()};
}

ApplicationProcess ApplicationProcess::open(const filesystem::path& path, std::vector<std::string> arguments,
                                            bool anotherInstance) {
  const auto bundle = Bundle::read(path);
  if (!bundle) throw CocoaError(CocoaError::Code::fileReadNoSuchFile, path, "not an application bundle");
  if (!anotherInstance) {
    const auto running = all();
    const auto found = std::ranges::find(running, bundle->path(), &ApplicationProcess::bundle);
    if (found != running.end()) return *found;
  }
  return launch(*bundle, std::move(arguments));
}

bool ApplicationProcess::isRunning() const {
  // An ended one that its parent hasn't waited for still has a number, but runs nothing.
  std::error_code failure;
  const auto program = filesystem::read_symlink("/proc/" + std::to_string(id) + "/exe", failure);
  return !failure && handleOn(*this);
}

bool ApplicationProcess::terminate() const {
  if (!isRunning()) return false;
  const FileDescriptor handle = handleOn(*this);
  return handle && pidfd_send_signal(handle.get(), SIGTERM, nullptr, 0) == 0;
}

}  // namespace platform
