#include "Programs/ZipTool/CommandLine.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace ziptool {
namespace {

struct Option {
  std::string_view name;
  bool takesValue = false;
};

/// The words of one command, sorted into options and operands.
class Words {
 public:
  Words(std::span<const std::string_view> words, std::initializer_list<Option> known) {
    bool optionsEnded = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
      const std::string_view word = words[i];
      if (optionsEnded || word.size() < 2 || word[0] != '-') {
        operands_.emplace_back(word);
      } else if (word == "--") {
        optionsEnded = true;
      } else {
        i += takeOption(word, words.subspan(i + 1), known);
      }
    }
  }

  bool has(std::string_view name) const { return value(name).has_value(); }

  std::optional<std::string> value(std::string_view name) const {
    const auto found = std::find_if(options_.rbegin(), options_.rend(), [&](const auto& o) { return o.first == name; });
    if (found == options_.rend()) return std::nullopt;
    return found->second;
  }

  /// The operands, of which there must be `count`, or at least as many when the last may repeat.
  std::vector<std::string> operands(std::size_t count, bool lastRepeats = false) const {
    if (operands_.size() < count) throw UsageError("an operand is missing");
    if (operands_.size() > count && !lastRepeats) throw UsageError("unexpected operand '" + operands_[count] + "'");
    return operands_;
  }

 private:
  /// Returns how many of the following words belong to the option.
  std::size_t takeOption(std::string_view word, std::span<const std::string_view> following,
                         std::initializer_list<Option> known) {
    const std::size_t equals = word.find('=');
    const std::string_view name = word.substr(0, equals);
    const auto* option = std::find_if(known.begin(), known.end(), [&](const Option& o) { return o.name == name; });
    if (option == known.end()) throw UsageError("unknown option '" + std::string(name) + "'");
    if (!option->takesValue) {
      if (equals != std::string_view::npos) throw UsageError("option '" + std::string(name) + "' takes no value");
      options_.emplace_back(name, "");
      return 0;
    }
    if (equals != std::string_view::npos) {
      options_.emplace_back(name, word.substr(equals + 1));
      return 0;
    }
    if (following.empty()) throw UsageError("option '" + std::string(name) + "' needs a value");
    options_.emplace_back(name, following.front());
    return 1;
  }

  std::vector<std::pair<std::string, std::string>> options_;
  std::vector<std::string> operands_;
};

Method methodFrom(const std::optional<std::string>& word) {
  if (!word || *word == "deflate") return Method::deflate;
  if (*word == "none") return Method::none;
  throw UsageError("unknown method '" + *word + "'");
}

using Arguments = std::span<const std::string_view>;

Command parseList(Arguments arguments) {
  const Words words(arguments, {{"--json"}});
  return ListCommand{words.has("--json"), words.operands(1)[0]};
}

Command parseExtract(Arguments arguments) {
  const Words words(arguments, {{"--skip-crc"}, {"--keep-set-id"}, {"--encoding", true}});
  const auto operands = words.operands(2);
  return ExtractCommand{words.has("--skip-crc"), words.has("--keep-set-id"), words.value("--encoding"), operands[0],
                        operands[1]};
}

Command parseCreate(Arguments arguments) {
  const Words words(arguments, {{"--keep-parent"}, {"--method", true}});
  const auto operands = words.operands(2);
  return CreateCommand{words.has("--keep-parent"), methodFrom(words.value("--method")), operands[0], operands[1]};
}

Command parseAdd(Arguments arguments) {
  const Words words(arguments, {{"--relative-to", true}, {"--method", true}});
  auto operands = words.operands(2, true);
  return AddCommand{words.value("--relative-to"),
                    methodFrom(words.value("--method")),
                    operands[0],
                    {operands.begin() + 1, operands.end()}};
}

Command parseRemove(Arguments arguments) {
  const auto operands = Words(arguments, {}).operands(2, true);
  return RemoveCommand{operands[0], {operands.begin() + 1, operands.end()}};
}

Command parseCat(Arguments arguments) {
  const auto operands = Words(arguments, {}).operands(2);
  return CatCommand{operands[0], operands[1]};
}

Command parseTest(Arguments arguments) {
  return TestCommand{Words(arguments, {}).operands(1)[0]};
}

Command parseHelp(Arguments) {
  return HelpCommand{};
}

struct Verb {
  std::string_view name;
  Command (*parse)(Arguments);
};

constexpr Verb kVerbs[] = {{"list", parseList}, {"extract", parseExtract}, {"create", parseCreate},
                           {"add", parseAdd},   {"remove", parseRemove},   {"cat", parseCat},
                           {"test", parseTest}, {"help", parseHelp},       {"--help", parseHelp},
                           {"-h", parseHelp}};

}  // namespace

Command parseCommandLine(std::span<const std::string_view> words) {
  if (words.empty()) throw UsageError("a command is missing");
  const auto* verb =
      std::find_if(std::begin(kVerbs), std::end(kVerbs), [&](const Verb& v) { return v.name == words[0]; });
  if (verb == std::end(kVerbs)) throw UsageError("unknown command '" + std::string(words[0]) + "'");
  return verb->parse(words.subspan(1));
}

std::string_view usageText() {
  return R"(usage: veltrik-zip list [--json] ARCHIVE
       veltrik-zip extract [--skip-crc] [--keep-set-id] [--encoding NAME] ARCHIVE DESTINATION
       veltrik-zip create [--keep-parent] [--method none|deflate] ARCHIVE SOURCE
       veltrik-zip add [--relative-to BASE] [--method none|deflate] ARCHIVE PATH...
       veltrik-zip remove ARCHIVE PATH...
       veltrik-zip cat ARCHIVE PATH
       veltrik-zip test ARCHIVE
)";
}

}  // namespace ziptool
