// A job's DEVMODE laid out as the core driver lays it out:
//
//   [ public DEVMODEW, 220 bytes ][ core driver's private area ][ plug-in's private block ]
//                                  '-------------- dmDriverExtra covers both --------------'
//
// The core driver's private area holds one selection (an option index) per feature of the
// printer description. The plug-in's block is sized, defaulted, converted and merged by the
// plug-in itself through IPrintOemCommon::DevMode.
#pragma once

#include "drvhost/printer_description.h"

#include <windows.h>

#include <cstdint>
#include <vector>

namespace drvhost {

// Header of the core driver's private area.
struct CoreDriverArea {
    DWORD size;          // of the whole area, selections included
    DWORD signature;     // kCoreDriverSignature
    DWORD featureCount;  // selections that follow
};

inline constexpr DWORD kCoreDriverSignature = 0x54534844;  // "DHST"

// The selections inside any DEVMODE that carries a valid core driver area for a description with
// `featureCount` features, or null. cbSize is the size the caller claims for the whole DEVMODE.
DWORD* FindSelections(const DEVMODEW* devMode, DWORD cbSize, size_t featureCount);

class JobDevMode {
public:
    // A DEVMODE with the description's default selections and a zeroed plug-in block.
    JobDevMode(const PrinterDescription& description, DWORD pluginBlockSize, const std::wstring& deviceName);

    DEVMODEW* Public() noexcept { return reinterpret_cast<DEVMODEW*>(m_bytes.data()); }
    const DEVMODEW* Public() const noexcept { return reinterpret_cast<const DEVMODEW*>(m_bytes.data()); }
    DWORD TotalSize() const noexcept { return static_cast<DWORD>(m_bytes.size()); }
    void* PluginBlock() noexcept { return m_bytes.data() + PluginBlockOffset(); }
    DWORD PluginBlockSize() const noexcept { return m_pluginBlockSize; }

    DWORD Selection(size_t feature) const;
    // Sets a selection and keeps the public fields that mirror the feature in step.
    void SetSelection(size_t feature, DWORD option);

    // Takes the selections of another DEVMODE of the same printer; false when it carries none.
    bool TakeSelectionsFrom(const DEVMODEW* other, DWORD otherSize);

    const std::vector<BYTE>& Bytes() const noexcept { return m_bytes; }
    // Takes everything of a DEVMODE of the same printer and layout: public part, selections and
    // the plug-in's block.
    void TakeAllFrom(const JobDevMode& other) { m_bytes = other.m_bytes; }

private:
    size_t PluginBlockOffset() const noexcept { return m_bytes.size() - m_pluginBlockSize; }

    const PrinterDescription& m_description;
    DWORD m_pluginBlockSize;
    std::vector<BYTE> m_bytes;
};

// Keeps the public DEVMODE fields that mirror a feature's selection in step with it.
void SyncPublicField(DEVMODEW& devMode, const FeatureDescription& feature, size_t option);

}  // namespace drvhost
