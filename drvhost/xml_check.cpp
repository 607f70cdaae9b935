#include "drvhost/xml_check.h"

#include "drvhost/text.h"

#include <cstdio>
#include <set>
#include <vector>

namespace drvhost {
namespace {

constexpr std::wstring_view kPredefinedEntities[] = {L"lt", L"gt", L"amp", L"apos", L"quot"};

bool IsSpace(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n'; }
bool IsNameStart(wchar_t c) {
    return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || c == L'_' || c == L':' || c >= 0x80;
}
bool IsNameChar(wchar_t c) { return IsNameStart(c) || (c >= L'0' && c <= L'9') || c == L'-' || c == L'.'; }
bool IsForbiddenControl(wchar_t c) { return c < 0x20 && !IsSpace(c); }
bool IsDigit(wchar_t c, bool hex) {
    return (c >= L'0' && c <= L'9') || (hex && ((c >= L'a' && c <= L'f') || (c >= L'A' && c <= L'F')));
}

struct Position {
    int line = 1;
    int column = 1;
};

struct OpenElement {
    std::wstring name;
    Position start;
};

// Thrown inside the checker only: the first problem ends the check.
struct Problem {
    XmlProblem problem;
};

class Checker {
public:
    explicit Checker(std::wstring_view text) : m_text(text) {}

    void Check() {
        if (m_text.empty()) Fail("the file is empty");
        if (AtDeclaration()) Skip(L"?>", "the XML declaration");
        Prolog();
        if (AtEnd()) Fail("the document has no root element");
        if (Peek() != L'<') Fail("text before the root element");
        Element();
        Epilog();
    }

private:
    [[noreturn]] void Fail(const std::string& reason) { FailAt(m_position, reason); }
    [[noreturn]] static void FailAt(Position at, const std::string& reason) {
        throw Problem{{at.line, at.column, reason}};
    }

    bool AtEnd() const { return m_next >= m_text.size(); }
    wchar_t Peek() const { return AtEnd() ? L'\0' : m_text[m_next]; }
    bool Ahead(std::wstring_view what) const { return m_text.substr(m_next, what.size()) == what; }
    bool AtDeclaration() const { return Ahead(L"<?xml") && m_next + 5 < m_text.size() && IsSpace(m_text[m_next + 5]); }

    void Advance() {
        const wchar_t c = m_text[m_next++];
        if (c == L'\n' || (c == L'\r' && Peek() != L'\n')) {
            ++m_position.line;
            m_position.column = 1;
        } else if (c != L'\r') {
            ++m_position.column;
        }
    }
    void Advance(size_t count) {
        while (count-- > 0 && !AtEnd()) Advance();
    }

    void SkipSpace() {
        while (!AtEnd() && IsSpace(Peek())) Advance();
    }

    // Skips past the terminator of a construct that started here.
    void Skip(std::wstring_view terminator, const char* construct) {
        const Position start = m_position;
        const size_t end = m_text.find(terminator, m_next);
        if (end == std::wstring_view::npos) FailAt(start, std::string("the document ends inside ") + construct);
        while (m_next < end + terminator.size()) {
            if (IsForbiddenControl(Peek())) ForbiddenCharacter();
            Advance();
        }
    }

    [[noreturn]] void ForbiddenCharacter() {
        char text[48];
        std::snprintf(text, sizeof(text), "the character U+%04X is not allowed in XML", static_cast<unsigned>(Peek()));
        Fail(text);
    }

    void Comment() {
        const Position start = m_position;
        Advance(4);
        const size_t end = m_text.find(L"--", m_next);
        if (end == std::wstring_view::npos) FailAt(start, "the document ends inside a comment");
        Advance(end - m_next);
        if (!Ahead(L"-->")) Fail("\"--\" inside a comment");
        Advance(3);
    }

    // Comments, processing instructions, a document type and white space.
    void Misc(bool allowDoctype) {
        for (;;) {
            SkipSpace();
            if (Ahead(L"<!--")) {
                Comment();
            } else if (AtDeclaration()) {
                Fail("the XML declaration must come first in the document");
            } else if (Ahead(L"<?")) {
                Skip(L"?>", "a processing instruction");
            } else if (allowDoctype && Ahead(L"<!DOCTYPE")) {
                Skip(L">", "the document type");
            } else {
                return;
            }
        }
    }

    void Prolog() { Misc(true); }

    void Epilog() {
        Misc(false);
        if (AtEnd()) return;
        if (Peek() == L'<' && m_next + 1 < m_text.size() && IsNameStart(m_text[m_next + 1])) {
            Fail("a second root element; a document has one");
        }
        Fail("text after the root element");
    }

    std::wstring Name(const char* what) {
        if (AtEnd() || !IsNameStart(Peek())) Fail(std::string("expected ") + what);
        const size_t start = m_next;
        while (!AtEnd() && IsNameChar(Peek())) Advance();
        return std::wstring(m_text.substr(start, m_next - start));
    }

    // A reference at "&"; a wrong one is reported where it starts.
    void Reference() {
        const Position start = m_position;
        Advance();
        if (Peek() == L'#') {
            Advance();
            const bool hex = Peek() == L'x';
            if (hex) Advance();
            size_t digits = 0;
            while (!AtEnd() && IsDigit(Peek(), hex)) {
                Advance();
                ++digits;
            }
            if (digits == 0 || Peek() != L';') FailAt(start, "a malformed character reference");
            Advance();
            return;
        }
        if (AtEnd() || !IsNameStart(Peek())) FailAt(start, "\"&\" that starts no reference (write &amp;)");
        const std::wstring name = Name("an entity name");
        if (Peek() != L';') FailAt(start, "the reference &" + WideToUtf8(name) + " has no \";\"");
        for (std::wstring_view known : kPredefinedEntities) {
            if (name == known) {
                Advance();
                return;
            }
        }
        FailAt(start, "an unknown entity &" + WideToUtf8(name) + ";");
    }

    void AttributeValue() {
        const wchar_t quote = Peek();
        if (quote != L'"' && quote != L'\'') Fail("an attribute value must be in quotes");
        const Position start = m_position;
        Advance();
        while (Peek() != quote) {
            if (AtEnd()) FailAt(start, "the document ends inside an attribute value");
            if (Peek() == L'<') Fail("\"<\" inside an attribute value");
            if (Peek() == L'&') {
                Reference();
                continue;
            }
            if (IsForbiddenControl(Peek())) ForbiddenCharacter();
            Advance();
        }
        Advance();
    }

    // A start tag; true when it was an empty-element tag.
    bool StartTag(const OpenElement& element) {
        std::set<std::wstring> attributes;
        for (;;) {
            const bool spaced = !AtEnd() && IsSpace(Peek());
            SkipSpace();
            if (AtEnd()) FailAt(element.start, "the document ends inside the tag <" + WideToUtf8(element.name) + ">");
            if (Ahead(L"/>")) {
                Advance(2);
                return true;
            }
            if (Peek() == L'>') {
                Advance();
                return false;
            }
            if (!spaced) Fail("expected white space, \">\" or \"/>\" in the tag <" + WideToUtf8(element.name) + ">");
            const Position at = m_position;
            const std::wstring attribute = Name("an attribute name");
            SkipSpace();
            if (Peek() != L'=') Fail("expected \"=\" after the attribute " + WideToUtf8(attribute));
            Advance();
            SkipSpace();
            AttributeValue();
            if (!attributes.insert(attribute).second)
                FailAt(at, "the attribute " + WideToUtf8(attribute) + " is given twice");
        }
    }

    void EndTag(std::vector<OpenElement>& open) {
        const Position at = m_position;
        Advance(2);
        const std::wstring name = Name("an element name after \"</\"");
        SkipSpace();
        if (Peek() != L'>') Fail("expected \">\" to end </" + WideToUtf8(name) + ">");
        Advance();
        const OpenElement& element = open.back();
        if (name != element.name) {
            FailAt(at, "</" + WideToUtf8(name) + "> does not close <" + WideToUtf8(element.name) + "> (line " +
                           std::to_string(element.start.line) + ", column " + std::to_string(element.start.column) +
                           ")");
        }
        open.pop_back();
    }

    // Opens an element at "<"; false when it was an empty-element tag.
    bool OpenTag(std::vector<OpenElement>& open) {
        OpenElement element{L"", m_position};
        Advance();
        element.name = Name("an element name after \"<\"");
        if (StartTag(element)) return false;
        open.push_back(std::move(element));
        return true;
    }

    [[noreturn]] void Unclosed(const OpenElement& element) {
        Fail("the document ends before <" + WideToUtf8(element.name) + "> (line " + std::to_string(element.start.line) +
             ", column " + std::to_string(element.start.column) + ") is closed");
    }

    // The root element and everything in it, without recursion.
    void Element() {
        std::vector<OpenElement> open;
        if (!OpenTag(open)) return;
        while (!open.empty()) {
            if (AtEnd()) Unclosed(open.back());
            if (Ahead(L"</")) {
                EndTag(open);
            } else if (Ahead(L"<!--")) {
                Comment();
            } else if (Ahead(L"<![CDATA[")) {
                Skip(L"]]>", "a CDATA section");
            } else if (Ahead(L"<?")) {
                Skip(L"?>", "a processing instruction");
            } else if (Peek() == L'<') {
                OpenTag(open);
            } else if (Peek() == L'&') {
                Reference();
            } else if (Ahead(L"]]>")) {
                Fail("\"]]>\" outside a CDATA section");
            } else if (IsForbiddenControl(Peek())) {
                ForbiddenCharacter();
            } else {
                Advance();
            }
        }
    }

    std::wstring_view m_text;
    size_t m_next = 0;
    Position m_position;
};

}  // namespace

std::optional<XmlProblem> FindXmlProblem(std::wstring_view text) {
    try {
        Checker(text).Check();
    } catch (const Problem& found) {
        return found.problem;
    }
    return std::nullopt;
}

}  // namespace drvhost
