#include "source_texts.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string_view>

namespace vantrel::documents::test {
namespace {

constexpr const char* kEllipsis = "…";

struct Token {
    enum class Kind { kText, kWord, kSign };
    Kind kind;
    std::string text;
    int line;
};

bool isWordCharacter(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

/// Cuts a source into tokens. Literals in a row are one token, without their quotes and escapes.
class Tokens {
  public:
    explicit Tokens(const std::string& source) : source_(source) {
        while (at_ < source_.size()) step();
    }
    std::vector<Token> all;

  private:
    bool follows(std::string_view text) const { return source_.compare(at_, text.size(), text) == 0; }

    void step() {
        const char c = source_[at_];
        if (follows("//") || (c == '#' && lineIsEmpty_))
            skipTo("\n");
        else if (follows("/*"))
            skipTo("*/");
        else if (follows("R\""))
            takeRaw();
        else if (c == '"')
            add(Token::Kind::kText, quoted('"'));
        else if (c == '\'')
            quoted('\'');
        else if (isWordCharacter(c))
            takeWord();
        else
            takeSign(c);
    }

    void skipTo(std::string_view end) {
        const std::size_t found = source_.find(end, at_);
        // The end of a line comment stays, to begin a new line.
        const std::size_t next =
            found == std::string::npos ? source_.size() : found + (end == "\n" ? 0 : end.size());
        line_ += static_cast<int>(std::count(source_.begin() + static_cast<std::ptrdiff_t>(at_),
                                             source_.begin() + static_cast<std::ptrdiff_t>(next), '\n'));
        at_ = next;
    }

    void takeRaw() {
        const std::size_t open = source_.find('(', at_);
        std::string close(1, ')');
        close.append(source_, at_ + 2, open - at_ - 2).append(1, '"');
        const std::size_t end = source_.find(close, open);
        const std::string text = source_.substr(open + 1, end - open - 1);
        add(Token::Kind::kText, text);
        line_ += static_cast<int>(std::count(text.begin(), text.end(), '\n'));
        at_ = end + close.size();
    }

    std::string quoted(char quote) {
        std::string text;
        for (++at_; at_ < source_.size() && source_[at_] != quote; ++at_) {
            if (source_[at_] == '%' && source_[at_ + 1] >= '1' && source_[at_ + 1] <= '9') {
                text += kEllipsis;  // of words' pattern
                ++at_;
            } else if (source_[at_] != '\\') {
                text += source_[at_];
            } else {
                const char escaped = source_[++at_];
                text += escaped == 'r' || escaped == 'n' || escaped == 't' ? ' ' : escaped;
            }
        }
        ++at_;
        lineIsEmpty_ = false;
        return text;
    }

    /// Numbers as well; a ' in them parts digits.
    void takeWord() {
        const std::size_t start = at_;
        const bool number = std::isdigit(static_cast<unsigned char>(source_[at_])) != 0;
        while (at_ < source_.size() &&
               (isWordCharacter(source_[at_]) || (number && (source_[at_] == '\'' || source_[at_] == '.'))))
            ++at_;
        add(Token::Kind::kWord, source_.substr(start, at_ - start));
    }

    void takeSign(char c) {
        ++at_;
        if (c == '\n') {
            ++line_;
            lineIsEmpty_ = true;
        } else if (c == ':' && at_ < source_.size() && source_[at_] == ':') {
            ++at_;
            add(Token::Kind::kSign, "::");
        } else if (std::isspace(static_cast<unsigned char>(c)) == 0) {
            add(Token::Kind::kSign, std::string(1, c));
        }
    }

    void add(Token::Kind kind, const std::string& text) {
        lineIsEmpty_ = false;
        if (kind == Token::Kind::kText && !all.empty() && all.back().kind == kind)
            all.back().text += text;
        else
            all.push_back({kind, text, line_});
    }

    const std::string& source_;
    std::size_t at_ = 0;
    int line_ = 1;
    bool lineIsEmpty_ = true;
};

/// Follows the tokens through brackets and puts each sum of literals together.
class Sums {
  public:
    explicit Sums(std::string file) : file_(std::move(file)) {}

    void take(const Token& token) {
        if (token.kind == Token::Kind::kText) {
            Sum& sum = brackets_.back().sum;
            sum.text += token.text;
            if (sum.line == 0) sum.line = token.line;
        } else if (isOneOf(token, "([{")) {
            between();
            brackets_.emplace_back();
            if (token.text == "(" && isName(before_)) brackets_.back().call = before_;
        } else if (isOneOf(token, ")]}")) {
            finish();
            if (brackets_.size() > 1) brackets_.pop_back();
            if (token.text == "}") finish();
        } else if (isOneOf(token, ",;?:=&|!") || token.text == "return") {
            finish();
        } else if (token.text != "+") {
            between();
        }
        before_ = token.kind == Token::Kind::kText ? "" : token.text;
    }

    std::vector<SourceText> texts;

  private:
    struct Sum {
        std::string text;
        int line = 0;  // 0: no literal yet
    };
    struct Bracket {
        Sum sum;
        std::string call;
    };

    static bool isOneOf(const Token& token, std::string_view signs) {
        return token.text.size() == 1 && signs.find(token.text) != std::string_view::npos;
    }
    static bool isName(const std::string& word) {
        return !word.empty() && isWordCharacter(word[0]) &&
               std::isdigit(static_cast<unsigned char>(word[0])) == 0;
    }

    void between() {
        std::string& text = brackets_.back().sum.text;
        if (!text.ends_with(kEllipsis)) text += kEllipsis;
    }

    void finish() {
        Sum& sum = brackets_.back().sum;
        if (sum.line > 0) {
            std::vector<std::string> calls;
            for (const Bracket& bracket : brackets_)
                if (!bracket.call.empty()) calls.push_back(bracket.call);
            texts.push_back({file_, sum.line, sum.text, std::move(calls)});
        }
        sum = {};
    }

    std::string file_;
    std::vector<Bracket> brackets_{1};
    std::string before_;
};

/// Takes std::string("...") for its literal.
std::vector<Token> withoutWrappers(const std::vector<Token>& tokens) {
    std::vector<Token> plain;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        const bool wraps = i + 5 < tokens.size() && tokens[i].text == "std" &&
                           tokens[i + 2].text == "string" && tokens[i + 3].text == "(" &&
                           tokens[i + 4].kind == Token::Kind::kText && tokens[i + 5].text == ")";
        plain.push_back(tokens[wraps ? i + 4 : i]);
        if (wraps) i += 5;
    }
    return plain;
}

}  // namespace

std::vector<SourceText> textsOf(const std::string& source, const std::string& file) {
    Sums sums(file);
    for (const Token& token : withoutWrappers(Tokens(source).all)) sums.take(token);
    return sums.texts;
}

std::vector<std::string> partsOf(const std::string& text) {
    std::vector<std::string> parts(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, std::string_view(kEllipsis).size(), kEllipsis) == 0) {
            parts.emplace_back();
            i += std::string_view(kEllipsis).size() - 1;
        } else if (std::isspace(static_cast<unsigned char>(text[i])) == 0) {
            parts.back() += text[i];
        } else if (!parts.back().empty() && parts.back().back() != ' ') {
            parts.back() += ' ';
        }
    }
    for (std::string& part : parts)
        if (part.ends_with(' ')) part.pop_back();
    std::erase(parts, "");
    return parts;
}

}  // namespace vantrel::documents::test
