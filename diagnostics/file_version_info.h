// Reads a file's version resource: its fixed record and its string values by name.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

namespace NGUtils {

class AFileVersionInfo {
public:
    virtual ~AFileVersionInfo() = default;
    // The value of a version string, from the last translation that has it; null when none has
    // it or the file has no version resource.
    virtual const wchar_t* GetValue(const wchar_t* name) const = 0;
    virtual const wchar_t* CompanyName() const = 0;
    virtual const wchar_t* FileDescription() const = 0;
    virtual const wchar_t* FileVersion() const = 0;
    virtual const wchar_t* ProductName() const = 0;
    virtual const wchar_t* ProductVersion() const = 0;
};

class CFileVersionInfo final : public AFileVersionInfo {
public:
    // An empty path, a file without a version resource or any failure gives an object with no data.
    explicit CFileVersionInfo(const wchar_t* path) noexcept;

    const wchar_t* GetValue(const wchar_t* name) const override;
    const wchar_t* CompanyName() const override { return GetValue(L"CompanyName"); }
    const wchar_t* FileDescription() const override { return GetValue(L"FileDescription"); }
    const wchar_t* FileVersion() const override { return GetValue(L"FileVersion"); }
    const wchar_t* ProductName() const override { return GetValue(L"ProductName"); }
    const wchar_t* ProductVersion() const override { return GetValue(L"ProductVersion"); }

    const VS_FIXEDFILEINFO* Fixed() const noexcept { return m_fixed; }

private:
    struct Translation {
        WORD language;
        WORD codePage;
    };

    const VS_FIXEDFILEINFO* m_fixed = nullptr;
    UINT m_translationCount = 0;
    std::unique_ptr<BYTE[]> m_data;
    const Translation* m_translations = nullptr;
};

}  // namespace NGUtils
