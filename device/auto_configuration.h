// Automatic configuration: the printer's accessory record applied to the core driver's items.
// In the printer property sheet the configuration items of the two-sided unit, the second tray
// and the photo tray follow what the device reports, unless the user set them by hand, and
// "Autoconfig" asks the device again; in the document property sheet the input bins of missing
// trays are hidden, two-sided printing is offered only with a two-sided unit, and a device that
// prints black only loses its colour-only features. Every operation works on the callback
// context of one call; missing items, values and options skip their step.
#pragma once

#include "device/bidi_data.h"
#include "settings/ui_properties.h"

namespace zx {

// The printer's driver-data values that record a manual choice of a configuration item. Written
// as a REG_DWORD 1 when the user changes the item, never cleared.
inline constexpr wchar_t kDuplexUnitManuallyChanged[] = L"DuplexUnitManuallyChanged";
inline constexpr wchar_t kTray2ManuallyChanged[] = L"Tray2ManuallyChanged";
inline constexpr wchar_t kPhotoTrayManuallyChanged[] = L"PhotoTrayManuallyChanged";

// What "Autoconfig" needs of the UI plug-in object: to ask the device again, and the accessory
// record it then holds.
class IDeviceRequery {
public:
    // Clears the stored answers' validity and runs a new accessory query on a new client.
    virtual void RequeryDevice(const wchar_t* printerName) = 0;
    // The record of the current client; null when there is none.
    virtual IBiDiData* CurrentDeviceRecord() = 0;

protected:
    ~IDeviceRequery() = default;
};

// The printer sheet: sets "DuplexUnit", "PhotoTrayUnit" and "Tray2" from the context's record
// (unless changed by hand) and disables "Autoconfig" on a local port. E_FAIL without a record or
// parameter block; S_OK otherwise.
HRESULT AdaptPrinterProperties(VUICallbackContext& context);

// The printer sheet's item callback, reason selection changed: records a manual choice of a
// configuration item, then RunAutoconfig.
HRESULT OnSelectionChanged(VUICallbackContext& context, IDeviceRequery& plugin);

// When the changed item is "Autoconfig": asks the device again, puts "Autoconfig" back to its
// first option and sets "DuplexUnit" and "Tray2" from the new answer. The photo tray and the
// manual-change values stay as they are.
void RunAutoconfig(VUICallbackContext& context, IDeviceRequery& plugin);

// The document sheet: hides the colour-only features of a black-only device and the input bins
// of missing trays, and sets the context's two-sided-available flag. Without a record two-sided
// printing counts as available. Returns the result of reading the "DuplexUnit" option (S_OK
// without a record, parameter block or UI plug-in object).
HRESULT AdaptDocumentProperties(VUICallbackContext& context);

// Hides what the driver's "MonoConfig" feature names: features by keyword, and for "MediaType"
// the media types whose display names its option lists. The result of the last item update;
// S_OK when none ran.
HRESULT HideMonoFeatures(VUICallbackContext& context);

}  // namespace zx
