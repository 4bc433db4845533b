#include "hosts/indi/xml_stream.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "platform/text.h"

namespace vantrel::hosts::indi {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

void appendUtf8(std::string& text, std::uint32_t code) {
    const auto byte = [&](std::uint32_t value) { text += static_cast<char>(value); };
    if (code < 0x80) return byte(code);
    if (code < 0x800) {
        byte(0xC0 | (code >> 6U));
    } else {
        if (code < 0x10000) {
            byte(0xE0 | (code >> 12U));
        } else {
            byte(0xF0 | (code >> 18U));
            byte(0x80 | ((code >> 12U) & 0x3FU));
        }
        byte(0x80 | ((code >> 6U) & 0x3FU));
    }
    byte(0x80 | (code & 0x3FU));
}

/// The character that "&name;" stands for; nothing known stays as it is written.
bool appendReference(std::string& text, std::string_view name) {
    constexpr std::pair<std::string_view, char> kNamed[] = {
        {"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};
    for (const auto& [known, c] : kNamed)
        if (name == known) {
            text += c;
            return true;
        }
    if (!name.starts_with('#')) return false;
    const bool hex = name.starts_with("#x");
    name.remove_prefix(hex ? 2 : 1);
    std::uint32_t code = 0;
    const auto [end, failure] = std::from_chars(name.data(), name.data() + name.size(), code, hex ? 16 : 10);
    const bool character = code >= 0x20 && code < 0x110000 && (code < 0xD800 || code > 0xDFFF);
    if (failure != std::errc() || end != name.data() + name.size() ||
        !(character || code == '\n' || code == '\t'))
        return false;
    appendUtf8(text, code);
    return true;
}

/// The number of bytes that follow the first one of a character in UTF-8; -1 when it can't be a first one.
int followers(unsigned char first) {
    if (first < 0x80) return 0;
    if (first >= 0xC2 && first < 0xE0) return 1;
    if (first >= 0xE0 && first < 0xF0) return 2;
    if (first >= 0xF0 && first < 0xF5) return 3;
    return -1;
}

bool isUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const int more = followers(static_cast<unsigned char>(text[i++]));
        if (more < 0) return false;
        for (int k = 0; k < more; ++k, ++i)
            if (i == text.size() || (static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80) return false;
    }
    return true;
}

/// Drivers write what they like; what isn't UTF-8 is taken for Latin-1.
std::string asUtf8(std::string text) {
    if (isUtf8(text)) return text;
    std::string better;
    for (const char c : text) appendUtf8(better, static_cast<unsigned char>(c));
    return better;
}

std::string unescaped(std::string_view raw) {
    constexpr std::size_t kLongestReference = 10;
    std::string text;
    for (std::size_t i = 0; i < raw.size();) {
        const auto next = std::min(raw.find('&', i), raw.size());
        text += raw.substr(i, next - i);
        if ((i = next) == raw.size()) break;
        const auto end = raw.substr(i, kLongestReference).find(';');
        if (end != std::string_view::npos && appendReference(text, raw.substr(i + 1, end - 1)))
            i += end + 1;
        else
            text += raw[i++];
    }
    return asUtf8(std::move(text));
}

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-' || c == ':' || c == '.';
}

std::string_view takeName(std::string_view& tag) {
    const auto* const end = std::find_if_not(tag.begin(), tag.end(), isNameCharacter);
    const auto name = tag.substr(0, static_cast<std::size_t>(end - tag.begin()));
    if (name.empty()) throw StreamError("it sends something else than XML");
    tag.remove_prefix(name.size());
    return name;
}

void skipBlanks(std::string_view& tag) {
    tag.remove_prefix(std::min(tag.find_first_not_of(kBlanks), tag.size()));
}

std::pair<std::string, std::string> takeAttribute(std::string_view& tag) {
    std::string name(takeName(tag));
    skipBlanks(tag);
    if (!tag.starts_with('=')) throw StreamError("it sends an attribute without a value");
    tag.remove_prefix(1);
    skipBlanks(tag);
    const auto end = tag.empty() || (tag[0] != '"' && tag[0] != '\'') ? tag.npos : tag.find(tag[0], 1);
    if (end == tag.npos) throw StreamError("it sends an attribute without a value");
    std::string value = unescaped(tag.substr(1, end - 1));
    tag.remove_prefix(end + 1);
    return {std::move(name), std::move(value)};
}

}  // namespace

const std::string& XmlElement::attribute(std::string_view wanted) const {
    static const std::string kNone;
    for (const auto& [attribute, value] : attributes)
        if (attribute == wanted) return value;
    return kNone;
}

void XmlStream::feed(std::string_view bytes) {
    while (!bytes.empty()) {
        if (inMarkup_) {
            const bool complete = takeMarkup(bytes.front());
            bytes.remove_prefix(1);
            if (complete) readMarkup();
            continue;
        }
        const auto end = std::min(bytes.find('<'), bytes.size());
        takeText(bytes.substr(0, end));
        inMarkup_ = end < bytes.size();
        bytes.remove_prefix(std::min(end + 1, bytes.size()));
    }
}

void XmlStream::takeText(std::string_view text) {
    if (open_.empty() || text.empty()) return;
    if (inBlob()) {
        if (blobs_ != nullptr) blobs_->text(text);
        return;
    }
    count(text.size());
    open_.back().text += text;
}

bool XmlStream::takeMarkup(char c) {
    count(1);
    const bool special = markup_.starts_with('!') || markup_.starts_with('?');
    if (c != '>' || quote_ != 0) {
        if (c == quote_)
            quote_ = 0;
        else if (quote_ == 0 && !special && (c == '"' || c == '\''))
            quote_ = c;
        markup_ += c;
        return false;
    }
    const bool unfinished = markup_.starts_with("!--") && (markup_.size() < 5 || !markup_.ends_with("--"));
    if (unfinished) markup_ += c;
    return !unfinished;
}

void XmlStream::readMarkup() {
    const std::string markup = std::exchange(markup_, std::string());
    inMarkup_ = false;
    const std::string_view tag = markup;
    if (tag.starts_with("!--") || tag.starts_with('?')) {
        if (open_.empty()) bytes_ = 0;
        return;
    }
    if (tag.starts_with('!')) throw StreamError("it sends XML that this program doesn't take");
    if (tag.starts_with('/')) return closeElement(platform::withoutBlanks(tag.substr(1)));
    const bool empty = tag.ends_with('/');
    openElement(tag.substr(0, tag.size() - (empty ? 1 : 0)));
    if (empty) closeElement(open_.back().name);
}

void XmlStream::openElement(std::string_view tag) {
    if (open_.size() == kDeepest) throw StreamError("it sends elements that are nested too deep");
    XmlElement element;
    element.name = takeName(tag);
    for (skipBlanks(tag); !tag.empty(); skipBlanks(tag)) element.attributes.push_back(takeAttribute(tag));
    open_.push_back(std::move(element));
    if (inBlob() && blobs_ != nullptr) blobs_->begin(open_[open_.size() - 2], open_.back());
}

void XmlStream::closeElement(std::string_view name) {
    if (open_.empty() || open_.back().name != name) throw StreamError("it sends elements that don't end");
    if (inBlob() && blobs_ != nullptr) blobs_->end();
    XmlElement element = std::move(open_.back());
    open_.pop_back();
    element.text = unescaped(platform::withoutBlanks(element.text));
    if (!open_.empty()) {
        open_.back().children.push_back(std::move(element));
        return;
    }
    bytes_ = 0;
    onElement_(std::move(element));
}

void XmlStream::count(std::size_t bytes) {
    bytes_ += bytes;
    if (bytes_ > kLargestElement) throw StreamError("it sends an element that is too large");
}

bool XmlStream::inBlob() const { return open_.size() == 2 && open_.back().name == "oneBLOB"; }

}  // namespace vantrel::hosts::indi
