// Checks on accessory records shared by the device tests.
#pragma once

#include "device/udm_client.h"

#include <ostream>

namespace zxtest {

struct Accessories {
    int32_t duplexUnit, tray2, photoTray, colour, duplex, reliable;
    bool operator==(const Accessories&) const = default;
};

inline Accessories AccessoriesOf(const IBiDiData* data) {
    const auto& record = static_cast<const VIOData&>(*data);
    return {record.GetDuplexUnit(),    record.GetTrayState2(), record.GetPhotoTray(),
            record.GetColorPrinting(), record.GetDuplex(),     record.IsReliable()};
}

inline std::ostream& operator<<(std::ostream& out, const Accessories& a) {
    return out << "{unit " << a.duplexUnit << ", tray2 " << a.tray2 << ", photo " << a.photoTray << ", colour "
               << a.colour << ", duplex " << a.duplex << ", reliable " << a.reliable << "}";
}

inline constexpr Accessories kColourDevice{1, 1, 1, 1, 1, 1};
inline constexpr Accessories kMonoDevice{0, 0, 0, 0, 0, 1};
inline constexpr Accessories kSampleDefaults{1, 0, 0, 1, 1, 0};  // the sample's BidiDefaults, unreliable

class Holder : public IDeviceClientHolder {
public:
    void ReplaceDeviceClient(std::shared_ptr<VUDMClient> replacement) override { client = std::move(replacement); }
    std::shared_ptr<VUDMClient> client;
};

}  // namespace zxtest
