// The accessory record of a printer: which accessories the device reports, and fixed media
// limits. Its users see it only through IBiDiData; the device-model client owns the VIOData
// behind it and updates it in place.
#pragma once

#include <cstdint>
#include <utility>

// Width then height, in millimetres.
using MediaSize = std::pair<int32_t, int32_t>;

class IBiDiData {
public:
    virtual int32_t GetDuplexUnit() const = 0;
    virtual int32_t GetTrayState2() const = 0;
    virtual int32_t GetPhotoTray() const = 0;
    virtual int32_t GetColorPrinting() const = 0;  // 0: the device prints black only
    virtual int32_t IsModelFamilyA() const = 0;
    virtual int32_t IsReliable() const = 0;  // 0: filled from the defaults after a failed device query
    virtual int32_t GetMaxMediaWidth() const = 0;
    virtual int32_t GetMediaLimitKind() const = 0;
    virtual void GetMinMediaSize(MediaSize* size) const = 0;
    virtual void GetMaxMediaSize(MediaSize* size) const = 0;
    virtual int32_t GetModelFamily() const = 0;

protected:
    // Not deleted through the interface: the client owns the record.
    ~IBiDiData() = default;
};

// Model families, from markers in the device identity.
enum ModelFamily : int32_t { kFamilyTorvell = 0, kFamilyQamA = 1, kFamilyQamB = 2 };

class VIOData final : public IBiDiData {
public:
    // The record of a device that could not be asked: every accessory but the trays.
    VIOData() = default;
    VIOData(int32_t duplexUnit, int32_t tray2, int32_t photoTray, int32_t colorPrinting, int32_t duplex) noexcept
        : m_duplexUnit(duplexUnit),
          m_tray2(tray2),
          m_photoTray(photoTray),
          m_colorPrinting(colorPrinting),
          m_duplex(duplex) {}

    int32_t GetDuplexUnit() const override { return m_duplexUnit; }
    int32_t GetTrayState2() const override { return m_tray2; }
    int32_t GetPhotoTray() const override { return m_photoTray; }
    int32_t GetColorPrinting() const override { return m_colorPrinting; }
    int32_t IsModelFamilyA() const override { return m_familyA; }
    int32_t IsReliable() const override { return m_reliable; }
    int32_t GetMaxMediaWidth() const override { return m_maxMediaWidth; }
    int32_t GetMediaLimitKind() const override { return m_mediaLimitKind; }
    void GetMinMediaSize(MediaSize* size) const override { *size = m_minMediaSize; }
    void GetMaxMediaSize(MediaSize* size) const override { *size = m_maxMediaSize; }
    int32_t GetModelFamily() const override { return m_modelFamily; }
    int32_t GetDuplex() const { return m_duplex; }  // two-sided printing enabled on the device

    void SetDuplexUnit(int32_t value) noexcept { m_duplexUnit = value; }
    void SetTrayState2(int32_t value) noexcept { m_tray2 = value; }
    void SetPhotoTray(int32_t value) noexcept { m_photoTray = value; }
    void SetColorPrinting(int32_t value) noexcept { m_colorPrinting = value; }
    void SetReliable(int32_t value) noexcept { m_reliable = value; }
    void SetDuplex(int32_t value) noexcept { m_duplex = value; }
    void SetModelFamilyA(int32_t value) noexcept { m_familyA = value; }
    void SetModelFamily(int32_t value) noexcept { m_modelFamily = value; }

private:
    int32_t m_duplexUnit = 1;
    int32_t m_tray2 = 0;
    int32_t m_photoTray = 0;
    int32_t m_colorPrinting = 1;
    int32_t m_reliable = 1;
    int32_t m_duplex = 1;
    int32_t m_maxMediaWidth = 216;
    int32_t m_mediaLimitKind = 2;
    MediaSize m_minMediaSize{76, 127};   // 3 x 5 in
    MediaSize m_maxMediaSize{216, 356};  // 8.5 x 14 in
    int32_t m_familyA = 1;
    int32_t m_modelFamily = kFamilyQamA;
};
