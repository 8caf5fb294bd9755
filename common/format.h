// printf-style formatting into a string of whatever length the result has.
#pragma once

#include <string>

/// Formats like printf(3). The compiler checks the arguments; texts of any length are safe.
std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
