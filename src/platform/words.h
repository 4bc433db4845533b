// What windows tell, in a form that can be said in other languages.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vantrel::platform {

/// A text and, where windows say it in the operator's language, how it is put together: an English pattern
/// and the parts that stand at its %1 to %9.
///
///     Words::tr("%1: exposing, %2 of %3 s", {plate, "3", "20"})
///
/// A text alone is a name, a figure, or what notes, scripts and manuals refer to: it is the same in every
/// language. Scripts, log and tests read English.
class Words {
  public:
#ifdef FOR_LUPDATE  // it looks behind conditions, and has to know under which heading the patterns stand
    Q_DECLARE_TR_FUNCTIONS(Words)
#endif
    Words() = default;
    Words(std::string text) : english_(std::move(text)) {}  // NOLINT(google-explicit-constructor)
    Words(const char* text) : english_(text) {}             // NOLINT(google-explicit-constructor)

    /// `pattern` is written out there and then, since lupdate takes the patterns from the sources. A place
    /// without a part stays as it is.
    static Words tr(const std::string& pattern, std::vector<Words> parts = {});

    const std::string& english() const { return english_; }
    bool empty() const { return english_.empty(); }

    /// In the language that `translated` translates patterns into.
    std::string in(const std::function<std::string(const std::string& pattern)>& translated) const;

    bool operator==(const Words&) const = default;

  private:
    std::string english_;
    std::string pattern_;  // empty: the same in every language
    std::vector<Words> parts_;
};

}  // namespace vantrel::platform
