// The property page description as Windows Vista and later declare it (PROPSHEETPAGEW_V4, 104
// bytes on x64): mingw-w64 declares only version 3, without the header bitmap of wizard pages
// that follows the activation context. The sheet reads as many bytes as dwSize says.
#pragma once

#include <windows.h>
#include <prsht.h>

#include <cstddef>

struct PROPSHEETPAGEW_V4 {
    DWORD dwSize;
    DWORD dwFlags;
    HINSTANCE hInstance;
    union {
        LPCWSTR pszTemplate;
        LPCDLGTEMPLATE pResource;
    };
    union {
        HICON hIcon;
        LPCWSTR pszIcon;
    };
    LPCWSTR pszTitle;
    DLGPROC pfnDlgProc;
    LPARAM lParam;
    LPFNPSPCALLBACKW pfnCallback;
    UINT* pcRefParent;
    LPCWSTR pszHeaderTitle;
    LPCWSTR pszHeaderSubTitle;
    HANDLE hActCtx;
    union {
        HBITMAP hbmHeader;
        LPCWSTR pszbmHeader;
    };
};
static_assert(sizeof(PROPSHEETPAGEW_V4) == 104);
static_assert(offsetof(PROPSHEETPAGEW_V4, hActCtx) == offsetof(PROPSHEETPAGEW_V3, hActCtx));
static_assert(offsetof(PROPSHEETPAGEW_V4, lParam) == offsetof(PROPSHEETPAGEW_V3, lParam));
