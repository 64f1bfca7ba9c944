#pragma once

#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ziptool {

enum class Method { none, deflate };

struct ListCommand {
  bool json = false;
  std::string archive;
};

struct ExtractCommand {
  bool skipCRC32 = false;
  bool keepSetIDBits = false;
  std::optional<std::string> encoding;
  std::string archive;
  std::string destination;
};

struct CreateCommand {
  bool keepParent = false;
  Method method = Method::deflate;
  std::string archive;
  std::string source;
};

struct AddCommand {
  std::optional<std::string> base;
  Method method = Method::deflate;
  std::string archive;
  std::vector<std::string> paths;
};

struct RemoveCommand {
  std::string archive;
  std::vector<std::string> paths;
};

struct CatCommand {
  std::string archive;
  std::string path;
};

struct TestCommand {
  std::string archive;
};

struct HelpCommand {};

using Command = std::variant<ListCommand, ExtractCommand, CreateCommand, AddCommand, RemoveCommand, CatCommand,
                             TestCommand, HelpCommand>;

/// What the user typed isn't a command of this tool; `what()` says which word.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads the words after the program's name. Options stand before, between or after the operands; "--" ends them.
/// Throws UsageError.
Command parseCommandLine(std::span<const std::string_view> words);

std::string_view usageText();

}  // namespace ziptool
