#include "drvhost/printer_description.h"

#include "drvhost/text.h"

#include <windows.h>

#include <cctype>
#include <fstream>
#include <sstream>

namespace drvhost {
namespace {

struct Token {
    enum Kind { Attribute, Open, Close, End } kind;
    int line;
    std::string name;   // attribute name without '*' and ':'
    std::string value;  // attribute value, quotes removed
};

// Splits the text into attributes and braces. Values run to the end of the line, or to a brace
// that follows them; a quoted value must close on its own line.
class Scanner {
public:
    Scanner(std::string_view text, const std::string& fileName) : m_text(text), m_file(fileName) {}

    Token Next() {
        SkipBlanksAndComments();
        if (m_pos >= m_text.size()) return {Token::End, m_line, {}, {}};
        const char c = m_text[m_pos];
        if (c == '{' || c == '}') {
            ++m_pos;
            return {c == '{' ? Token::Open : Token::Close, m_line, {}, {}};
        }
        if (c != '*') Fail("expected an attribute starting with '*', found '" + std::string(1, c) + "'");
        return ReadAttribute();
    }

    [[noreturn]] void Fail(const std::string& message) const { throw DescriptionError(m_file, m_line, message); }

private:
    void SkipBlanksAndComments() {
        while (m_pos < m_text.size()) {
            const char c = m_text[m_pos];
            if (c == '\n') {
                ++m_line;
                ++m_pos;
            } else if (c == ' ' || c == '\t' || c == '\r') {
                ++m_pos;
            } else if (m_text.compare(m_pos, 2, "*%") == 0) {
                SkipToEndOfLine();
            } else {
                return;
            }
        }
    }

    void SkipToEndOfLine() {
        while (m_pos < m_text.size() && m_text[m_pos] != '\n') ++m_pos;
    }

    bool StartsAttribute(size_t pos) const {
        return pos > 0 && m_text[pos] == '*' && (m_text[pos - 1] == ' ' || m_text[pos - 1] == '\t');
    }

    static bool IsNameChar(char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '?' || c == '-';
    }

    Token ReadAttribute() {
        const int line = m_line;
        ++m_pos;  // '*'
        const size_t nameStart = m_pos;
        while (m_pos < m_text.size() && IsNameChar(m_text[m_pos])) ++m_pos;
        std::string name(m_text.substr(nameStart, m_pos - nameStart));
        if (name.empty()) Fail("expected an attribute name after '*'");
        while (m_pos < m_text.size() && (m_text[m_pos] == ' ' || m_text[m_pos] == '\t')) ++m_pos;
        if (m_pos >= m_text.size() || m_text[m_pos] != ':') Fail("expected ':' after *" + name);
        ++m_pos;
        while (m_pos < m_text.size() && (m_text[m_pos] == ' ' || m_text[m_pos] == '\t')) ++m_pos;
        return {Token::Attribute, line, std::move(name), ReadValue()};
    }

    std::string ReadValue() {
        if (m_pos < m_text.size() && m_text[m_pos] == '"') {
            const size_t close = m_text.find_first_of("\"\n", m_pos + 1);
            if (close == std::string_view::npos || m_text[close] != '"') Fail("unterminated quoted value");
            std::string value(m_text.substr(m_pos + 1, close - m_pos - 1));
            m_pos = close + 1;
            return value;
        }
        // A bare value ends with its line, at a brace, or where the next attribute starts.
        const size_t start = m_pos;
        while (m_pos < m_text.size() && m_text[m_pos] != '\n' && m_text[m_pos] != '{' && m_text[m_pos] != '}' &&
               m_text.compare(m_pos, 2, "*%") != 0 && !StartsAttribute(m_pos)) {
            ++m_pos;
        }
        std::string value(m_text.substr(start, m_pos - start));
        while (!value.empty() && std::isspace(static_cast<unsigned char>(value.back()))) value.pop_back();
        return value;
    }

    std::string_view m_text;
    std::string m_file;
    size_t m_pos = 0;
    int m_line = 1;
};

class Parser {
public:
    Parser(std::string_view text, const std::string& fileName) : m_file(fileName), m_scanner(text, fileName) {
        Advance();
    }

    PrinterDescription Parse() {
        PrinterDescription description;
        while (m_token.kind != Token::End) {
            if (m_token.kind == Token::Close) m_scanner.Fail("'}' without a matching '{'");
            if (m_token.kind == Token::Open) m_scanner.Fail("'{' without an attribute before it");
            if (m_token.name == "Option") m_scanner.Fail("*Option outside a *Feature");
            if (m_token.name == "Feature") {
                AddFeature(description, ParseFeature());
            } else {
                SkipAttribute();
            }
        }
        return description;
    }

private:
    void Advance() { m_token = m_scanner.Next(); }

    void ExpectOpen(const std::string& what) {
        if (m_token.kind != Token::Open) m_scanner.Fail("expected '{' after " + what);
        Advance();
    }

    // An attribute that the simulated core driver does not use, with its block if it has one.
    void SkipAttribute() {
        Advance();
        if (m_token.kind != Token::Open) return;
        const int openLine = m_token.line;
        int depth = 0;
        do {
            if (m_token.kind == Token::End) FailAt(openLine, "block is never closed");
            if (m_token.kind == Token::Open) ++depth;
            if (m_token.kind == Token::Close) --depth;
            Advance();
        } while (depth > 0);
    }

    [[noreturn]] void FailAt(int line, const std::string& message) const {
        throw DescriptionError(m_file, line, message);
    }

    FeatureDescription ParseFeature() {
        FeatureDescription feature;
        feature.keyword = RequireName("*Feature");
        const int featureLine = m_token.line;
        Advance();
        ExpectOpen("*Feature: " + feature.keyword);
        std::string defaultKeyword;
        int defaultLine = featureLine;
        while (m_token.kind != Token::Close) {
            if (m_token.kind == Token::End) {
                FailAt(featureLine, "*Feature: " + feature.keyword + " is never closed");
            }
            if (m_token.kind == Token::Open) m_scanner.Fail("'{' without an attribute before it");
            const std::string& name = m_token.name;
            if (name == "Feature") m_scanner.Fail("*Feature inside *Feature: " + feature.keyword);
            if (name == "Option") {
                AddOption(feature, ParseOption());
                continue;
            }
            if (name == "Name") {
                feature.displayName = Widen(m_token.value);
            } else if (name == "DefaultOption") {
                defaultKeyword = m_token.value;
                defaultLine = m_token.line;
            } else if (name == "PrintSchemaKeywordMap") {
                feature.schemaName = m_token.value;
            } else if (name == "ConcealFromUI?") {
                feature.concealed = m_token.value == "TRUE";
            } else if (name == "FeatureType") {
                feature.sheet = m_token.value == "PRINTER_PROPERTY" ? FeatureSheet::Printer : FeatureSheet::Document;
            }
            SkipAttribute();
        }
        Advance();
        if (feature.options.empty()) {
            FailAt(featureLine, "*Feature: " + feature.keyword + " has no options");
        }
        if (!defaultKeyword.empty()) {
            const auto index = feature.FindOption(defaultKeyword);
            if (!index) {
                FailAt(defaultLine, "*DefaultOption: " + defaultKeyword + " is not an option of " + feature.keyword);
            }
            feature.defaultOption = *index;
        }
        return feature;
    }

    OptionDescription ParseOption() {
        OptionDescription option;
        option.keyword = RequireName("*Option");
        const int optionLine = m_token.line;
        Advance();
        ExpectOpen("*Option: " + option.keyword);
        while (m_token.kind != Token::Close) {
            if (m_token.kind == Token::End) {
                FailAt(optionLine, "*Option: " + option.keyword + " is never closed");
            }
            if (m_token.kind == Token::Open) m_scanner.Fail("'{' without an attribute before it");
            const std::string& name = m_token.name;
            if (name == "Feature" || name == "Option")
                m_scanner.Fail("*" + name + " inside *Option: " + option.keyword);
            if (name == "Name") {
                option.displayName = Widen(m_token.value);
            } else if (name == "PrintSchemaKeywordMap") {
                option.schemaName = m_token.value;
            } else if (name == "Constraints") {
                option.constraints.push_back(ParseConstraint(m_token.value));
            }
            SkipAttribute();
        }
        Advance();
        return option;
    }

    OptionConstraint ParseConstraint(const std::string& value) {
        const size_t dot = value.find('.');
        if (dot == std::string::npos || dot == 0 || dot + 1 == value.size()) {
            m_scanner.Fail("*Constraints expects Feature.Option, found '" + value + "'");
        }
        return {value.substr(0, dot), value.substr(dot + 1)};
    }

    std::string RequireName(const std::string& attribute) {
        const std::string& value = m_token.value;
        if (value.empty() || value.find_first_of(" \t") != std::string::npos) {
            m_scanner.Fail(attribute + " needs one keyword, found '" + value + "'");
        }
        return value;
    }

    void AddFeature(PrinterDescription& description, FeatureDescription feature) {
        if (description.FindFeature(feature.keyword))
            m_scanner.Fail("*Feature: " + feature.keyword + " declared twice");
        description.features.push_back(std::move(feature));
    }

    void AddOption(FeatureDescription& feature, OptionDescription option) {
        if (feature.FindOption(option.keyword)) {
            m_scanner.Fail("*Option: " + option.keyword + " declared twice in " + feature.keyword);
        }
        feature.options.push_back(std::move(option));
    }

    std::wstring Widen(const std::string& text) {
        std::wstring wide;
        if (!Utf8ToWide(text, wide)) m_scanner.Fail("display name is not valid UTF-8");
        return wide;
    }

    std::string m_file;
    Scanner m_scanner;
    Token m_token{};
};

}  // namespace

std::optional<size_t> FeatureDescription::FindOption(std::string_view optionKeyword) const {
    for (size_t i = 0; i < options.size(); ++i) {
        if (options[i].keyword == optionKeyword) return i;
    }
    return std::nullopt;
}

std::optional<size_t> PrinterDescription::FindFeature(std::string_view featureKeyword) const {
    for (size_t i = 0; i < features.size(); ++i) {
        if (features[i].keyword == featureKeyword) return i;
    }
    return std::nullopt;
}

PrinterDescription ParsePrinterDescription(std::string_view text, const std::string& fileName) {
    return Parser(text, fileName).Parse();
}

PrinterDescription LoadPrinterDescription(const std::wstring& path) {
    std::ifstream file(path.c_str(), std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + WideToUtf8(path));
    std::ostringstream text;
    text << file.rdbuf();
    return ParsePrinterDescription(text.str(), WideToUtf8(path));
}

}  // namespace drvhost
