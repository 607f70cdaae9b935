#include "printschema/string_buffer.h"

#include "util/result.h"

#include <climits>
#include <cstdarg>
#include <cwchar>
#include <new>
#include <stdexcept>
#include <strsafe.h>

namespace {

// Runs a step that may grow the text, reporting an allocation failure the buffer's way.
template <typename Step>
void Growing(Step&& step) {
    try {
        step();
    } catch (const std::bad_alloc&) {
        throw VUtilException(E_OUTOFMEMORY);
    } catch (const std::length_error&) {
        throw VUtilException(E_OUTOFMEMORY);
    }
}

}  // namespace

void VStringBuffer::Append(const wchar_t* text) {
    if (text != nullptr) Append(text, std::wcslen(text));
}

void VStringBuffer::Append(const wchar_t* text, size_t count) {
    if (text == nullptr || count == 0) return;
    Growing([&] { m_text.append(text, count); });
}

void VStringBuffer::AppendFormat(const wchar_t* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const HRESULT hr = zx::CatchAll([&] {
        AppendFormatList(format, arguments);
        return S_OK;
    });
    va_end(arguments);
    if (FAILED(hr)) throw VUtilException(hr);
}

void VStringBuffer::AppendFormatList(const wchar_t* format, va_list arguments) {
    va_list counting;
    va_copy(counting, arguments);
    const int length = _vscwprintf(format, counting);
    va_end(counting);
    if (length < 0) throw VUtilException(E_INVALIDARG);
    const size_t start = m_text.length();
    Growing([&] { m_text.resize(start + static_cast<size_t>(length)); });
    // The formatter's terminator lands in the string's own terminator slot.
    const HRESULT hr = ::StringCchVPrintfW(m_text.data() + start, static_cast<size_t>(length) + 1, format, arguments);
    if (FAILED(hr)) {
        m_text.resize(start);
        throw VUtilException(hr);
    }
}

void VStringBuffer::Erase(size_t position, size_t count) {
    if (position > m_text.length()) throw VUtilException(E_INVALIDARG);
    m_text.erase(position, count);
}

void VStringBuffer::Replace(wchar_t from, wchar_t to) noexcept {
    for (wchar_t& character : m_text) {
        if (character == from) character = to;
    }
}

size_t VStringBuffer::Find(const wchar_t* text) const noexcept {
    if (text == nullptr || *text == L'\0') return npos;
    return m_text.find(text);
}

void VStringBuffer::CopyTo(wchar_t* destination, size_t capacity) const {
    if (destination == nullptr) throw VUtilException(E_INVALIDARG);
    if (m_text.length() >= capacity) throw VUtilException(HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER));
    std::wmemcpy(destination, m_text.c_str(), m_text.length() + 1);
}

zx::unique_bstr VStringBuffer::ToBstr() const {
    if (m_text.length() > UINT_MAX / sizeof(wchar_t))
        throw VUtilException(HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER));
    return zx::MakeBstr(m_text.c_str(), static_cast<UINT>(m_text.length()));
}
