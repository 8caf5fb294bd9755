// Reading YAML with errors that name file and line.
#pragma once

#include <yaml-cpp/yaml.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace k740::sim {

/// Every function throws UsageError with file, line and what is wrong.
class YamlReader {
public:
    using Handler = std::function<void(const YAML::Node& value)>;

    explicit YamlReader(std::string file) : m_file(std::move(file)) {}

    [[nodiscard]] YAML::Node Load() const;
    [[nodiscard]] std::string Place(const YAML::Node& node) const;
    [[noreturn]] void Fail(const YAML::Node& node, const std::string& sentence) const;

    /// Calls the handler of each key; others are for `other`, and without it wrong.
    /// @param other  is given the key and its value
    void ForEachKey(const YAML::Node& map, const std::map<std::string, Handler>& handlers,
                    const std::function<void(const YAML::Node& key, const YAML::Node& value)>& other = {}) const;
    void ForEach(const YAML::Node& list, const Handler& handler) const;

    [[nodiscard]] std::string Text(const YAML::Node& node) const;
    [[nodiscard]] std::uint32_t Whole(const YAML::Node& node, std::uint32_t least, std::uint32_t most) const;
    /// A time of 0 s or more.
    [[nodiscard]] double Time(const YAML::Node& node) const;

private:
    const std::string m_file;
};

} // namespace k740::sim
