#include "diagnostics/file_version_info.h"

#include <cstdio>
#include <new>

namespace NGUtils {

CFileVersionInfo::CFileVersionInfo(const wchar_t* path) noexcept {
    if (path == nullptr || *path == L'\0') return;
    DWORD ignored = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(path, &ignored);
    if (size == 0) return;
    std::unique_ptr<BYTE[]> data(new (std::nothrow) BYTE[size]());
    if (!data || !::GetFileVersionInfoW(path, 0, size, data.get())) return;

    void* translations = nullptr;
    UINT bytes = 0;
    if (::VerQueryValueW(data.get(), L"\\VarFileInfo\\Translation", &translations, &bytes) && translations) {
        m_translations = static_cast<const Translation*>(translations);
        m_translationCount = bytes / sizeof(Translation);
    }
    void* fixed = nullptr;
    if (::VerQueryValueW(data.get(), L"\\", &fixed, &bytes) && bytes >= sizeof(VS_FIXEDFILEINFO)) {
        m_fixed = static_cast<const VS_FIXEDFILEINFO*>(fixed);
    }
    m_data = std::move(data);
}

const wchar_t* CFileVersionInfo::GetValue(const wchar_t* name) const {
    if (!m_data || name == nullptr) return nullptr;
    const wchar_t* found = nullptr;
    for (UINT i = 0; i < m_translationCount; ++i) {
        wchar_t query[MAX_PATH];
        if (std::swprintf(query, MAX_PATH, L"\\StringFileInfo\\%04x%04x\\%ls", m_translations[i].language,
                          m_translations[i].codePage, name) < 0) {
            continue;  // a name too long for any version string
        }
        void* value = nullptr;
        UINT length = 0;
        if (::VerQueryValueW(m_data.get(), query, &value, &length) && value) found = static_cast<const wchar_t*>(value);
    }
    return found;
}

}  // namespace NGUtils
