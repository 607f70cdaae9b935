// The exception types that the plug-in's code throws internally. Every COM method catches them
// (see util/result.h) and returns the HRESULT they carry; none of them crosses a COM boundary.
#pragma once

#include <windows.h>

// Thrown by utility code: one HRESULT, no virtual functions, caught by reference.
class VUtilException {
public:
    explicit VUtilException(HRESULT hr) noexcept : m_hr(hr) {}
    HRESULT Result() const noexcept { return m_hr; }

private:
    HRESULT m_hr;
};

// Thrown by the Print Schema code: one HRESULT.
class CXDException {
public:
    explicit CXDException(HRESULT hr) noexcept : m_hr(hr) {}
    HRESULT Result() const noexcept { return m_hr; }

private:
    HRESULT m_hr;
};

// Stands for ATL's exception type, which the Print Schema code throws when a BSTR cannot be
// allocated. This toolchain has no ATL, so the type is ours.
namespace ATL {
class CAtlException {
public:
    explicit CAtlException(HRESULT hr) noexcept : m_hr(hr) {}
    operator HRESULT() const noexcept { return m_hr; }

private:
    HRESULT m_hr;
};
}  // namespace ATL
