// Numbers of the texts that the plug-in loads directly from the string library "mortalures18":
// labels, messages and page texts. Texts that the feature description names go through the
// resource-name table (resources/resource_names.h) instead.
#pragma once

#include <windows.h>

#include <array>

namespace StringId {
// The two-sided control and the shortcut settings' labels.
inline constexpr UINT DuplexLabel = 21;
inline constexpr UINT ManualDuplexLabel = 22;
inline constexpr UINT PagesPerSheetLabel = 26;
inline constexpr UINT MediaTypeLabel = 27;
inline constexpr UINT BorderlessLabel = 28;
inline constexpr UINT PrintQualityLabel = 29;
inline constexpr UINT PaperSizeLabel = 52;

// The Printing Shortcuts page.
inline constexpr UINT ShortcutPageTitle = 780;
inline constexpr UINT ShortcutPageDescription = 23;
inline constexpr UINT SaveAsButton = 24;
inline constexpr UINT DeleteButton = 25;
inline constexpr UINT ShortcutListLabel = 30;
inline constexpr UINT LockedShortcutName = 36;
inline constexpr UINT NewShortcutName = 42;
inline constexpr UINT TooManyShortcutsMessage = 37;
inline constexpr UINT DuplicateNameMessage = 38;
inline constexpr UINT EmptyNameMessage = 39;
inline constexpr UINT NameTooLongMessage = 40;
inline constexpr UINT ShortcutMessageCaption = 41;

// The three quality buttons of the standard sheet; in PCLmS mode the printer platform picks
// its own set among 43 to 47.
inline constexpr UINT QualityButton1 = 940;
inline constexpr UINT QualityButton2 = 43;
inline constexpr UINT QualityButton3 = 941;
inline constexpr UINT PlatformQualityLabel44 = 44;
inline constexpr UINT PlatformQualityLabel45 = 45;
inline constexpr UINT PlatformQualityLabel46 = 46;
inline constexpr UINT PlatformQualityLabel47 = 47;

// The media type chosen when no snapping rule names one.
inline constexpr UINT FallbackMediaType = 501;

inline constexpr std::array kDirectlyLoaded = {DuplexLabel,
                                               ManualDuplexLabel,
                                               PagesPerSheetLabel,
                                               MediaTypeLabel,
                                               BorderlessLabel,
                                               PrintQualityLabel,
                                               PaperSizeLabel,
                                               ShortcutPageTitle,
                                               ShortcutPageDescription,
                                               SaveAsButton,
                                               DeleteButton,
                                               ShortcutListLabel,
                                               LockedShortcutName,
                                               NewShortcutName,
                                               TooManyShortcutsMessage,
                                               DuplicateNameMessage,
                                               EmptyNameMessage,
                                               NameTooLongMessage,
                                               ShortcutMessageCaption,
                                               QualityButton1,
                                               QualityButton2,
                                               QualityButton3,
                                               PlatformQualityLabel44,
                                               PlatformQualityLabel45,
                                               PlatformQualityLabel46,
                                               PlatformQualityLabel47,
                                               FallbackMediaType};
}  // namespace StringId
