#include "drvhost/job_devmode.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <string_view>

namespace drvhost {
namespace {

DWORD CoreAreaSize(size_t featureCount) {
    return static_cast<DWORD>(sizeof(CoreDriverArea) + featureCount * sizeof(DWORD));
}

struct PaperDimensions {
    std::string_view keyword;
    short dmPaperSize;
    short widthTenthsMm;
    short lengthTenthsMm;
};

// Paper sizes whose public DEVMODE fields the core driver fills; others keep the last values.
constexpr PaperDimensions kPapers[] = {
    {"LETTER", DMPAPER_LETTER, 2159, 2794},
    {"LEGAL", DMPAPER_LEGAL, 2159, 3556},
    {"A4", DMPAPER_A4, 2100, 2970},
    {"A5", DMPAPER_A5, 1480, 2100},
    {"A6", DMPAPER_A6, 1050, 1480},
    {"A3", DMPAPER_A3, 2970, 4200},
    {"B5", DMPAPER_B5, 1820, 2570},
    {"EXECUTIVE", DMPAPER_EXECUTIVE, 1841, 2667},
    {"STATEMENT", DMPAPER_STATEMENT, 1397, 2159},
    {"TABLOID", DMPAPER_TABLOID, 2794, 4318},
    {"ENV_10", DMPAPER_ENV_10, 1048, 2413},
    {"ENV_DL", DMPAPER_ENV_DL, 1100, 2200},
    {"ENV_C5", DMPAPER_ENV_C5, 1620, 2290},
    {"ENV_C6", DMPAPER_ENV_C6, 1140, 1620},
    {"ENV_MONARCH", DMPAPER_ENV_MONARCH, 984, 1905},
    {"ZX_EDGETOEDGE_A4", DMPAPER_A4, 2100, 2970},
    {"ZX_EDGETOEDGE_LETTER", DMPAPER_LETTER, 2159, 2794},
    {"Edge_to_Edge_A3", DMPAPER_A3, 2970, 4200},
    {"Edge_to_Edge_Tabloid", DMPAPER_TABLOID, 2794, 4318},
    {"ZX_4X6_IN", DMPAPER_USER, 1016, 1524},
    {"ZX_5X7_IN", DMPAPER_USER, 1270, 1778},
    {"ZX_10X15_CM", DMPAPER_USER, 1000, 1500},
    {"ZX_8X10_IN", DMPAPER_USER, 2032, 2540},
};

struct PublicValue {
    std::string_view option;
    short value;
};

constexpr PublicValue kDuplexValues[] = {
    {"NONE", DMDUP_SIMPLEX}, {"VERTICAL", DMDUP_VERTICAL}, {"HORIZONTAL", DMDUP_HORIZONTAL}};
constexpr PublicValue kOrientationValues[] = {
    {"PORTRAIT", DMORIENT_PORTRAIT}, {"LANDSCAPE_CC90", DMORIENT_LANDSCAPE}, {"LANDSCAPE_CC270", DMORIENT_LANDSCAPE}};
constexpr PublicValue kColorValues[] = {{"Color", DMCOLOR_COLOR}, {"Mono", DMCOLOR_MONOCHROME}};
constexpr PublicValue kCollateValues[] = {{"OFF", DMCOLLATE_FALSE}, {"ON", DMCOLLATE_TRUE}};
constexpr PublicValue kQualityValues[] = {{"Draft", 300}, {"Normal", 600}, {"High", 1200}};

template <size_t N>
bool Lookup(const PublicValue (&table)[N], std::string_view option, short& value) {
    for (const PublicValue& row : table) {
        if (row.option == option) {
            value = row.value;
            return true;
        }
    }
    return false;
}

}  // namespace

void SyncPublicField(DEVMODEW& devMode, const FeatureDescription& feature, size_t option) {
    if (option >= feature.options.size()) return;
    const std::string_view keyword = feature.options[option].keyword;
    short value = 0;
    if (feature.keyword == "Duplex" && Lookup(kDuplexValues, keyword, value)) {
        devMode.dmDuplex = value;
        devMode.dmFields |= DM_DUPLEX;
    } else if (feature.keyword == "Orientation" && Lookup(kOrientationValues, keyword, value)) {
        devMode.dmOrientation = value;
        devMode.dmFields |= DM_ORIENTATION;
    } else if (feature.keyword == "ColorMode" && Lookup(kColorValues, keyword, value)) {
        devMode.dmColor = value;
        devMode.dmFields |= DM_COLOR;
    } else if (feature.keyword == "Collate" && Lookup(kCollateValues, keyword, value)) {
        devMode.dmCollate = value;
        devMode.dmFields |= DM_COLLATE;
    } else if (feature.keyword == "PageOutputQuality" && Lookup(kQualityValues, keyword, value)) {
        devMode.dmPrintQuality = value;
        devMode.dmFields |= DM_PRINTQUALITY;
    } else if (feature.keyword == "PaperSize") {
        for (const PaperDimensions& paper : kPapers) {
            if (paper.keyword != keyword) continue;
            devMode.dmPaperSize = paper.dmPaperSize;
            devMode.dmPaperWidth = paper.widthTenthsMm;
            devMode.dmPaperLength = paper.lengthTenthsMm;
            devMode.dmFields |= DM_PAPERSIZE | DM_PAPERWIDTH | DM_PAPERLENGTH;
        }
    }
}

DWORD* FindSelections(const DEVMODEW* devMode, DWORD cbSize, size_t featureCount) {
    if (devMode == nullptr || cbSize < sizeof(DEVMODEW) || devMode->dmSize != sizeof(DEVMODEW)) return nullptr;
    const DWORD areaSize = CoreAreaSize(featureCount);
    if (devMode->dmDriverExtra < areaSize || cbSize < sizeof(DEVMODEW) + areaSize) return nullptr;
    auto* area =
        reinterpret_cast<CoreDriverArea*>(reinterpret_cast<BYTE*>(const_cast<DEVMODEW*>(devMode)) + sizeof(DEVMODEW));
    if (area->signature != kCoreDriverSignature || area->size != areaSize || area->featureCount != featureCount) {
        return nullptr;
    }
    return reinterpret_cast<DWORD*>(area + 1);
}

JobDevMode::JobDevMode(const PrinterDescription& description, DWORD pluginBlockSize, const std::wstring& deviceName)
    : m_description(description), m_pluginBlockSize(pluginBlockSize) {
    const DWORD areaSize = CoreAreaSize(description.features.size());
    m_bytes.assign(sizeof(DEVMODEW) + areaSize + pluginBlockSize, 0);

    DEVMODEW* dm = Public();
    const size_t nameLength = std::min(deviceName.size(), size_t{CCHDEVICENAME - 1});
    std::wmemcpy(dm->dmDeviceName, deviceName.data(), nameLength);
    dm->dmSpecVersion = DM_SPECVERSION;
    dm->dmDriverVersion = 0x0600;
    dm->dmSize = sizeof(DEVMODEW);
    dm->dmDriverExtra = static_cast<WORD>(areaSize + pluginBlockSize);
    dm->dmFields = DM_COPIES;
    dm->dmCopies = 1;
    dm->dmScale = 100;

    auto* area = reinterpret_cast<CoreDriverArea*>(m_bytes.data() + sizeof(DEVMODEW));
    area->size = areaSize;
    area->signature = kCoreDriverSignature;
    area->featureCount = static_cast<DWORD>(description.features.size());
    for (size_t i = 0; i < description.features.size(); ++i)
        SetSelection(i, static_cast<DWORD>(description.features[i].defaultOption));
}

DWORD JobDevMode::Selection(size_t feature) const {
    const DWORD* selections = FindSelections(Public(), TotalSize(), m_description.features.size());
    return selections[feature];
}

void JobDevMode::SetSelection(size_t feature, DWORD option) {
    DWORD* selections = FindSelections(Public(), TotalSize(), m_description.features.size());
    selections[feature] = option;
    SyncPublicField(*Public(), m_description.features[feature], option);
}

bool JobDevMode::TakeSelectionsFrom(const DEVMODEW* other, DWORD otherSize) {
    const DWORD* theirs = FindSelections(other, otherSize, m_description.features.size());
    if (theirs == nullptr) return false;
    for (size_t i = 0; i < m_description.features.size(); ++i) {
        if (theirs[i] < m_description.features[i].options.size()) SetSelection(i, theirs[i]);
    }
    return true;
}

}  // namespace drvhost
