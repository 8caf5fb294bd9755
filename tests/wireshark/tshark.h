// What the dissector makes of a capture file, asked from tshark.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace k740::test {

/// The fields of one frame by name. A field that comes several times has its values joined by ";".
using Row = std::map<std::string, std::string>;

inline constexpr const char* kInfo = "_ws.col.Info";
inline constexpr const char* kProtocol = "_ws.col.Protocol";
inline constexpr const char* kExpert = "_ws.expert.message";
inline constexpr const char* kFrame = "frame.number";

/// Runs tshark with the dissector and without any settings of the user.
///
/// @param arguments  as in a shell
/// @return           what it wrote to its standard output
/// Fails the test when tshark is missing, ends with an error or says anything of Lua on its standard error.
std::string RunTshark(const std::string& arguments);

/// Dissects a capture file.
/// @param fields   to be told of each frame
/// @param options  further arguments of tshark, such as a filter
/// @return         one row for each frame that the options let pass
std::vector<Row> Dissect(const std::string& capture, const std::vector<std::string>& fields,
                         const std::string& options = {});

/// One field of every row.
std::vector<std::string> Column(const std::vector<Row>& rows, const std::string& field);

/// The whole tree of every frame as text.
std::string DissectAsText(const std::string& capture, const std::string& options = {});

} // namespace k740::test
