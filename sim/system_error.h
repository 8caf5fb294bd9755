// Turns a failed system call into an exception that names it.
#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace k740::sim {

/// @param result  what the system call returned
/// @param what    the call, for the exception's text
/// @return        result, when it is not negative
/// @throws std::system_error with errno otherwise
template <typename Result> Result Checked(Result result, const std::string& what) {
    if (result < 0) { throw std::system_error(errno, std::generic_category(), what); }
    return result;
}

} // namespace k740::sim
