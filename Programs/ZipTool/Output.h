#pragma once

#include <string_view>

namespace ziptool {

/// Buffered standard output. Throws `DataError` `unwritableFile` when it can't take what is written.
void print(std::string_view text);
void flushOutput();
bool outputIsTerminal();

}  // namespace ziptool
