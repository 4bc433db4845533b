#include "platform/settings_file.h"

#include <array>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/durable_file.h"
#include "platform/paths.h"
#include "platform/whole_file.h"

namespace vantrel::platform {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kMostBytes = 4'000'000;  // a hundred times what there is to store
constexpr std::array<std::pair<char, char>, 5> kEscapes{
    {{'\\', '\\'}, {'\t', 't'}, {'\n', 'n'}, {'\r', 'r'}, {'\0', '0'}}};

std::string escaped(std::string_view text) {
    std::string result;
    for (char c : text) {
        char code = 0;
        for (const auto& [plain, letter] : kEscapes)
            if (plain == c) code = letter;
        if (code != 0)
            (result += '\\') += code;
        else
            result += c;
    }
    return result;
}

std::optional<std::string> unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            result += text[i];
            continue;
        }
        if (++i == text.size()) return std::nullopt;
        bool known = false;
        for (const auto& [plain, letter] : kEscapes) {
            if (letter != text[i]) continue;
            result += plain;
            known = true;
        }
        if (!known) return std::nullopt;
    }
    return result;
}

std::optional<MemorySettings::Entry> parseLine(std::string_view line) {
    const auto first = line.find('\t');
    const auto second = first == std::string_view::npos ? first : line.find('\t', first + 1);
    if (second == std::string_view::npos) return std::nullopt;
    const auto section = unescaped(line.substr(0, first));
    const auto key = unescaped(line.substr(first + 1, second - first - 1));
    const auto value = unescaped(line.substr(second + 1));
    if (!section || !key || !value) return std::nullopt;
    return MemorySettings::Entry{*section, *key, *value};
}

}  // namespace

const MemorySettings& SettingsFile::settings() const {
    if (!settings_) settings_ = loaded();
    return *settings_;
}

void SettingsFile::open() {
    settings();
    std::error_code ignored;
    std::filesystem::remove(freshFile(), ignored);
}

std::filesystem::path SettingsFile::freshFile() const { return withEnding(file_, ".new"); }

void SettingsFile::write(const std::string& section, const std::string& key, const std::string& value) {
    if (settings().read(section, key) == value) return;
    MemorySettings changed = settings();
    changed.write(section, key, value);
    replaceBy(std::move(changed));
}

void SettingsFile::remove(const std::string& section, const std::string& key) {
    if (!settings().read(section, key)) return;
    MemorySettings changed = settings();
    changed.remove(section, key);
    replaceBy(std::move(changed));
}

MemorySettings SettingsFile::loaded() const {
    MemorySettings settings;
    if (file_.has_parent_path()) std::filesystem::create_directories(file_.parent_path());
    if (!std::filesystem::exists(file_)) return settings;
    const std::string text = contentsOf(file_, kMostBytes);

    bool damaged = !text.empty() && text.back() != '\n';
    std::string_view rest = text;
    while (!rest.empty()) {
        const auto end = rest.find('\n');
        if (const auto entry = parseLine(rest.substr(0, end)))
            settings.write(entry->section, entry->key, entry->value);
        else
            damaged = true;
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    if (damaged) {
        std::error_code ignored;
        std::filesystem::copy_file(file_, withEnding(file_, ".damaged"),
                                   std::filesystem::copy_options::overwrite_existing, ignored);
    }
    return settings;
}

/// Writes the settings to the disk; only then are they the ones in force.
void SettingsFile::replaceBy(MemorySettings settings) {
    std::string text;
    for (const auto& [name, entry] : settings.entries())
        text += escaped(entry.section) + '\t' + escaped(entry.key) + '\t' + escaped(entry.value) + '\n';

    writeDurably(freshFile(), text);
    std::error_code error;
    takePlace(freshFile(), file_, error);
    if (error) throw std::filesystem::filesystem_error("cannot rename", freshFile(), file_, error);
    settings_ = std::move(settings);
}

}  // namespace vantrel::platform
