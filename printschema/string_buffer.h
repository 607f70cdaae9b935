// The growable wide string in which the Print Schema code formats queries and names. Every
// failure throws VUtilException: E_INVALIDARG for a position outside the text,
// HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER) when a copy does not fit its destination, and
// E_OUTOFMEMORY when the text cannot grow.
#pragma once

#include "util/scoped.h"

#include <cstdarg>
#include <cstddef>
#include <string>

class VStringBuffer {
public:
    static constexpr size_t npos = std::wstring::npos;

    VStringBuffer() = default;
    explicit VStringBuffer(const wchar_t* text) { Append(text); }

    // A null text appends nothing.
    void Append(const wchar_t* text);
    void Append(const wchar_t* text, size_t count);
    // printf-style formatting with the platform's wide conventions: %s takes a wide string.
    void AppendFormat(const wchar_t* format, ...);
    void Erase(size_t position, size_t count);
    void Clear() noexcept { m_text.clear(); }
    void Replace(wchar_t from, wchar_t to) noexcept;

    // The position of the first occurrence of text, or npos; an empty text is never found.
    size_t Find(const wchar_t* text) const noexcept;
    bool Contains(const wchar_t* text) const noexcept { return Find(text) != npos; }

    // Copies the text and its terminator into a buffer of capacity characters.
    void CopyTo(wchar_t* destination, size_t capacity) const;
    zx::unique_bstr ToBstr() const;

    const wchar_t* c_str() const noexcept { return m_text.c_str(); }
    size_t Length() const noexcept { return m_text.length(); }
    bool Empty() const noexcept { return m_text.empty(); }

private:
    void AppendFormatList(const wchar_t* format, va_list arguments);

    std::wstring m_text;
};
