#include "sim/yaml_reader.h"

#include "sim/arguments.h"
#include "sim/sim_options.h"

#include <filesystem>
#include <set>
#include <system_error>

namespace k740::sim {
namespace {

constexpr double kLongestTime = 1e9; // s

std::string At(const std::string& file, const YAML::Mark& mark) {
    return mark.is_null() ? file : file + ':' + std::to_string(mark.line + 1);
}

} // namespace

YAML::Node YamlReader::Load() const {
    std::error_code ignored; // the loader tells what else is wrong
    if (std::filesystem::is_directory(m_file, ignored)) { throw UsageError(m_file + ": it is a directory"); }
    try {
        const std::vector<YAML::Node> documents = YAML::LoadAllFromFile(m_file);
        if (documents.size() > 1) { Fail(documents[1], "there is a second document"); }
        return documents.empty() ? YAML::Node() : documents.front();
    } catch (const YAML::BadFile&) {
        throw UsageError(m_file + ": the file cannot be read");
    } catch (const YAML::Exception& error) { throw UsageError(At(m_file, error.mark) + ": " + error.msg); }
}

std::string YamlReader::Place(const YAML::Node& node) const {
    return At(m_file, node.Mark());
}

void YamlReader::Fail(const YAML::Node& node, const std::string& sentence) const {
    throw UsageError(Place(node) + ": " + sentence);
}

void YamlReader::ForEachKey(const YAML::Node& map, const std::map<std::string, Handler>& handlers,
                            const std::function<void(const YAML::Node& key, const YAML::Node& value)>& other) const {
    if (!map.IsMap()) { Fail(map, "keys with values are expected here"); }
    std::set<std::string> seen;
    for (const auto& entry : map) {
        const std::string key = Text(entry.first);
        if (!seen.insert(key).second) { Fail(entry.first, "\"" + key + "\" is there twice"); }
        const auto found = handlers.find(key);
        if (found != handlers.end()) {
            found->second(entry.second);
        } else if (other) {
            other(entry.first, entry.second);
        } else {
            Fail(entry.first, "\"" + key + "\" is not known here");
        }
    }
}

void YamlReader::ForEach(const YAML::Node& list, const Handler& handler) const {
    if (!list.IsSequence()) { Fail(list, "a list is expected here"); }
    for (const auto& entry : list) { handler(entry); }
}

std::string YamlReader::Text(const YAML::Node& node) const {
    if (!node.IsScalar()) { Fail(node, "a single value is expected here"); }
    return node.Scalar();
}

std::uint32_t YamlReader::Whole(const YAML::Node& node, std::uint32_t least, std::uint32_t most) const {
    const auto number = node.IsScalar() ? ReadNumber(node.Scalar()) : std::nullopt; // 033 is 33, as in commands
    if (number && *number >= least && *number <= most) { return *number; }
    Fail(node, "a whole number in " + std::to_string(least) + ".." + std::to_string(most) + " is expected here");
}

double YamlReader::Time(const YAML::Node& node) const {
    double seconds = 0;
    if (node.IsScalar() && YAML::convert<double>::decode(node, seconds) && seconds >= 0 && seconds <= kLongestTime) {
        return seconds;
    }
    Fail(node, "a time in seconds is expected here");
}

} // namespace k740::sim
