#include "drvhost/option_items.h"

#include <string_view>

namespace drvhost {
namespace {

struct ItemPlacement {
    std::string_view feature;
    BYTE dmPubId;
    BYTE dialogPage;  // 0 paper and quality, 1 layout, 2 advanced
};

// Where the standard document sheet shows a feature and which public DEVMODE field it stands for.
constexpr ItemPlacement kPlacements[] = {
    {"Orientation", DMPUB_ORIENTATION, 1},
    {"Collate", DMPUB_COPIES_COLLATE, 2},
    {"InputBin", DMPUB_DEFSOURCE, 0},
    {"Resolution", DMPUB_PRINTQUALITY, 2},
    {"ColorMode", DMPUB_COLOR, 0},
    {"Duplex", DMPUB_DUPLEX, 1},
    {"PaperSize", DMPUB_FORMNAME, 0},
    {"MediaType", DMPUB_MEDIATYPE, 0},
    {"PageOutputQuality", DMPUB_QUALITY, 0},
    {"DocumentNUp", DMPUB_NUP, 1},
    {"PresentationDirection", DMPUB_NUP_DIRECTION, 1},
    {"BorderlessPrint", DMPUB_NONE, 0},
    {"ZXMaxDpi", DMPUB_NONE, 0},
    {"DocumentBinding", DMPUB_NONE, 1},
    {"DocumentMargins", DMPUB_NONE, 1},
    {"DrawBorders", DMPUB_NONE, 1},
};

ItemPlacement PlacementOf(std::string_view feature) {
    for (const ItemPlacement& placement : kPlacements) {
        if (placement.feature == feature) return placement;
    }
    return {feature, DMPUB_NONE, 2};
}

// The quality choice is shown as three buttons; every other feature as a list.
BYTE OptionTypeOf(const FeatureDescription& feature) {
    return feature.keyword == "PageOutputQuality" && feature.options.size() == 3 ? TVOT_3STATES : TVOT_COMBOBOX;
}

}  // namespace

bool IsConstrained(const PrinterDescription& description, size_t feature, size_t option,
                   const SelectionSource& selectionOf) {
    const FeatureDescription& candidate = description.features[feature];
    // Constraints are declared on either side of the pair: check both directions.
    for (const OptionConstraint& constraint : candidate.options[option].constraints) {
        const auto other = description.FindFeature(constraint.feature);
        if (other && description.features[*other].FindOption(constraint.option) == selectionOf(*other)) return true;
    }
    for (size_t other = 0; other < description.features.size(); ++other) {
        if (other == feature) continue;
        const FeatureDescription& otherFeature = description.features[other];
        const DWORD selected = selectionOf(other);
        if (selected >= otherFeature.options.size()) continue;
        for (const OptionConstraint& constraint : otherFeature.options[selected].constraints) {
            if (constraint.feature == candidate.keyword && constraint.option == candidate.options[option].keyword) {
                return true;
            }
        }
    }
    return false;
}

OptionItems::OptionItems(const PrinterDescription& description, FeatureSheet sheet, const SelectionSource& selectionOf)
    : m_description(description) {
    std::vector<size_t> features;
    for (size_t i = 0; i < description.features.size(); ++i) {
        if (description.features[i].sheet == sheet && !description.features[i].concealed) features.push_back(i);
    }
    // Sized once: items point into these vectors.
    m_records.resize(features.size());
    m_types.resize(features.size());
    m_params.resize(features.size());
    m_items.resize(features.size());

    for (size_t position = 0; position < features.size(); ++position) {
        const FeatureDescription& feature = description.features[features[position]];
        m_records[position].keyword = feature.keyword.c_str();
        m_records[position].featureIndex = features[position];

        std::vector<OPTPARAM>& params = m_params[position];
        params.resize(feature.options.size());
        for (size_t option = 0; option < feature.options.size(); ++option) {
            params[option].cbSize = sizeof(OPTPARAM);
            params[option].pData = const_cast<LPWSTR>(feature.options[option].displayName.c_str());
        }

        OPTTYPE& type = m_types[position];
        type.cbSize = sizeof(OPTTYPE);
        type.Type = OptionTypeOf(feature);
        type.Count = static_cast<WORD>(feature.options.size());
        type.BegCtrlID = static_cast<WORD>(kFirstItemControlId + position * kControlIdsPerItem);
        type.pOptParam = params.data();

        const ItemPlacement placement = PlacementOf(feature.keyword);
        OPTITEM& item = m_items[position];
        item.cbSize = sizeof(OPTITEM);
        item.Level = 1;
        item.DlgPageIdx = placement.dialogPage;
        item.Flags = OPTIF_CALLBACK;
        item.UserData = reinterpret_cast<ULONG_PTR>(&m_records[position]);
        item.pName = const_cast<LPWSTR>(feature.displayName.c_str());
        item.Sel = static_cast<LONG>(selectionOf(features[position]));
        item.pOptType = &type;
        item.DMPubID = placement.dmPubId;
    }
    MarkConflicts(selectionOf);
}

std::optional<size_t> OptionItems::FeatureOf(const void* item) const {
    for (size_t position = 0; position < m_items.size(); ++position) {
        if (item == &m_items[position]) return m_records[position].featureIndex;
    }
    return std::nullopt;
}

POPTITEM OptionItems::Find(std::string_view featureKeyword) {
    for (size_t position = 0; position < m_items.size(); ++position) {
        if (featureKeyword == m_records[position].keyword) return &m_items[position];
    }
    return nullptr;
}

void OptionItems::MarkConflicts(const SelectionSource& selectionOf) {
    for (size_t position = 0; position < m_items.size(); ++position) {
        const size_t feature = m_records[position].featureIndex;
        for (size_t option = 0; option < m_params[position].size(); ++option) {
            BYTE& flags = m_params[position][option].Flags;
            if (IsConstrained(m_description, feature, option, selectionOf)) {
                flags |= OPTPF_OVERLAY_WARNING_ICON;
            } else {
                flags &= static_cast<BYTE>(~OPTPF_OVERLAY_WARNING_ICON);
            }
        }
    }
}

}  // namespace drvhost
