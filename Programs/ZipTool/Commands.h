#pragma once

#include "Programs/ZipTool/CommandLine.h"

namespace ziptool {

// Each runs one command to its end and returns when it succeeded. What fails throws one of the library's errors, whose
// `what()` names the case, the entry and the path, or UsageError for a word that makes no sense.

/// Prints the entries in the archive's order, one a line or as JSON.
void run(const ListCommand& command);
/// Unpacks every entry. Checksums are compared unless told otherwise; files that fail stay and are named.
void run(const ExtractCommand& command);
/// Packs a file, a link or the contents of a folder. What fails leaves no archive.
void run(const CreateCommand& command);
/// Adds items, folders with everything in them; all of them or none.
void run(const AddCommand& command);
/// Removes entries; all of them or none.
void run(const RemoveCommand& command);
/// Writes an entry's data, or a link's target, to standard output.
void run(const CatCommand& command);
/// Compares every checksum and prints the entries that are damaged.
void run(const TestCommand& command);
void run(const HelpCommand& command);

}  // namespace ziptool
