#include "core/sheet_callbacks.h"

#include "core/ui_interface.h"
#include "device/auto_configuration.h"
#include "util/result.h"

namespace zx {

LONG APIENTRY DocumentPropertiesCallback(PCPSUICBPARAM callbackParams, POEMCUIPPARAM params) {
    VUIInterfaceImpl* plugin = VUIInterfaceImpl::FromUiPlugin(UiPluginOf(params));
    if (params == nullptr || plugin == nullptr) return E_FAIL;
    if (callbackParams == nullptr) return 0;
    return 0;
}

LONG APIENTRY PrinterPropertiesCallback(PCPSUICBPARAM callbackParams, POEMCUIPPARAM params) {
    if (callbackParams == nullptr || callbackParams->Reason != CPSUICB_REASON_SEL_CHANGED) return 0;
    VUIInterfaceImpl* plugin = VUIInterfaceImpl::FromUiPlugin(UiPluginOf(params));
    if (plugin == nullptr) return 0;
    return CatchAll([&] {
        VUICallbackContext context(params, callbackParams);
        return OnSelectionChanged(context, plugin->AsDeviceRequery());
    });
}

}  // namespace zx
