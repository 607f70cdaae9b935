#include "ui/standard_page_labels.h"

#include "resources/resource_libraries.h"
#include "resources/string_ids.h"

#include <array>
#include <cwchar>

namespace zx {
namespace {

constexpr int kWidening = 74;
constexpr std::array<WORD, 3> kQualityButtonOffsets = {2, 4, 6};
constexpr std::array<UINT, 3> kQualityLabels = {StringId::QualityButton1, StringId::QualityButton2,
                                                StringId::QualityButton3};

// The texts the common UI gives the quality buttons in the simple device language: each names
// the button whose procedure the dropped change goes back to.
constexpr const wchar_t* kDraftText = L"D&raft";
constexpr const wchar_t* kBetterText = L"Be&tter";
constexpr const wchar_t* kBestText = L"&Best";

struct LabelState {
    std::array<HWND, 3> qualityButtons{};
    std::array<WNDPROC, 3> qualityProcedures{};
    bool simpleLanguageLabels = false;
    WNDPROC twoSidedProcedure = nullptr;
    UINT twoSidedLabel = kTwoSidedLabel;
};
LabelState g_labels;

void Restore(HWND window, WNDPROC procedure) {
    if (procedure != nullptr) ::SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
}

// Drops one text change of a quality button: the button gets its saved procedure back and keeps
// its text. Every other message is answered with 0 until then.
LRESULT CALLBACK QualityLabelProcedure(HWND window, UINT message, WPARAM, LPARAM lParam) {
    if (message != WM_SETTEXT) return 0;
    if (!g_labels.simpleLanguageLabels) {
        Restore(window, g_labels.qualityProcedures[1]);
        return 0;
    }
    const auto* text = reinterpret_cast<const wchar_t*>(lParam);
    UiString second{};
    LoadUiString(StringId::QualityButton2, second);
    if (text == nullptr) return 0;
    if (std::wcscmp(text, kDraftText) == 0) {
        Restore(window, g_labels.qualityProcedures[0]);
    } else if (std::wcscmp(text, kBetterText) == 0 || std::wcscmp(text, second) == 0) {
        Restore(window, g_labels.qualityProcedures[1]);
    } else if (std::wcscmp(text, kBestText) == 0) {
        Restore(window, g_labels.qualityProcedures[2]);
    }
    return 0;
}

// Puts the label in force on the two-sided control at its next text change or paint.
LRESULT CALLBACK TwoSidedLabelProcedure(HWND window, UINT message, WPARAM, LPARAM) {
    if (message != WM_SETTEXT && message != WM_PAINT) return 0;
    Restore(window, g_labels.twoSidedProcedure);
    SetUiText(window, g_labels.twoSidedLabel);
    return 0;
}

}  // namespace

void SetUpQualityLabels(HWND standardPage, WORD firstControlId, bool simpleLanguage) {
    for (size_t button = 0; button < kQualityButtonOffsets.size(); ++button) {
        HWND window = ::GetDlgItem(standardPage, firstControlId + kQualityButtonOffsets[button]);
        g_labels.qualityButtons[button] = window;
        if (window != nullptr && g_labels.qualityProcedures[button] == nullptr) {
            g_labels.qualityProcedures[button] = reinterpret_cast<WNDPROC>(::GetWindowLongPtrW(window, GWLP_WNDPROC));
        }
    }
    if (simpleLanguage) {
        g_labels.simpleLanguageLabels = true;
    } else {
        SetQualityLabelTexts();
    }
}

void GuardQualityLabels() {
    for (HWND window : g_labels.qualityButtons) {
        if (window != nullptr && ::IsWindow(window)) {
            ::SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&QualityLabelProcedure));
        }
    }
}

void SetQualityLabelTexts() {
    for (size_t button = 0; button < g_labels.qualityButtons.size(); ++button) {
        HWND window = g_labels.qualityButtons[button];
        if (window != nullptr && ::IsWindow(window)) SetUiText(window, kQualityLabels[button]);
    }
}

HWND SetUpTwoSidedControl(HWND standardPage, WORD firstControlId, bool widen) {
    HWND control = ::GetDlgItem(standardPage, firstControlId);
    if (control == nullptr) return nullptr;
    if (g_labels.twoSidedProcedure == nullptr) {
        g_labels.twoSidedProcedure = reinterpret_cast<WNDPROC>(::GetWindowLongPtrW(control, GWLP_WNDPROC));
    }
    if (widen) {
        RECT bounds{};
        ::GetWindowRect(control, &bounds);
        ::SetWindowPos(control, nullptr, 0, 0, bounds.right - bounds.left + kWidening, bounds.bottom - bounds.top,
                       SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    return control;
}

void ShowTwoSidedLabel(HWND control, UINT labelId) {
    g_labels.twoSidedLabel = labelId;
    if (control != nullptr && ::IsWindow(control)) {
        UnguardTwoSidedLabel(control);
        SetUiText(control, labelId);
    }
}

void SetTwoSidedLabelInForce(UINT labelId) { g_labels.twoSidedLabel = labelId; }

void GuardTwoSidedLabel(HWND control) {
    if (control == nullptr || !::IsWindow(control) || g_labels.twoSidedProcedure == nullptr) return;
    ::SetWindowLongPtrW(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&TwoSidedLabelProcedure));
}

void UnguardTwoSidedLabel(HWND control) {
    if (control != nullptr && ::IsWindow(control)) Restore(control, g_labels.twoSidedProcedure);
}

}  // namespace zx
