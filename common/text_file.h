// Appending to a text file whose size is bounded by deleting it.
#pragma once

#include <string>

/// A file that is larger than this after an append is deleted, in bytes.
inline constexpr long kLogFileLimit = 52'428'800;

/// Appends text to the file, which is made when it is missing. Calls are serialised over the whole process.
/// @return 1 when the file had grown beyond kLogFileLimit and was deleted, with the text just written; else 0,
///         also when the file could not be opened and the text is lost
int WriteLog(const std::string& path, const std::string& text);
