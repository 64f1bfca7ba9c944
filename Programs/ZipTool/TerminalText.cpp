#include "Programs/ZipTool/TerminalText.h"

#include <fmt/format.h>

namespace ziptool {
namespace {

constexpr unsigned char kDelete = 0x7f;
// The C1 controls U+0080 to U+009F are C2 80 to C2 9F in UTF-8.
constexpr unsigned char kC1Lead = 0xc2;
constexpr unsigned char kC1Last = 0x9f;

std::string escaped(unsigned char byte) {
  switch (byte) {
    case '\n':
      return "\\n";
    case '\t':
      return "\\t";
    case '\r':
      return "\\r";
    case '\\':
      return "\\\\";
    default:
      return fmt::format("\\x{:02x}", byte);
  }
}

}  // namespace

std::string escapedControls(std::string_view name) {
  std::string out;
  out.reserve(name.size());
  for (std::size_t i = 0; i < name.size(); ++i) {
    const auto byte = static_cast<unsigned char>(name[i]);
    const auto next = static_cast<unsigned char>(i + 1 < name.size() ? name[i + 1] : '\0');
    if (byte == kC1Lead && next >= 0x80 && next <= kC1Last) {
      out += escaped(next);
      ++i;
    } else if (byte < ' ' || byte == kDelete || byte == '\\') {
      out += escaped(byte);
    } else {
      out += name[i];
    }
  }
  return out;
}

}  // namespace ziptool
