#include "core/sheet_callbacks.h"

#include "core/ui_interface.h"
#include "device/auto_configuration.h"
#include "util/result.h"

#include <iterator>

namespace zx {
namespace {

using DocumentHandler = HRESULT (VUIInterfaceImpl::*)(const VUICallbackContext&);

struct DocumentReason {
    LONG reason;
    DocumentHandler handler;
};
constexpr DocumentReason kDocumentReasons[] = {
    {CPSUICB_REASON_SEL_CHANGED, &VUIInterfaceImpl::OnDocumentSelectionChanged},
    {CPSUICB_REASON_APPLYNOW, &VUIInterfaceImpl::OnDocumentApply},
    {CPSUICB_REASON_OPTITEM_SETFOCUS, &VUIInterfaceImpl::OnDocumentItemFocus},
    {CPSUICB_REASON_ITEMS_REVERTED, &VUIInterfaceImpl::OnDocumentItemsReverted},
    {CPSUICB_REASON_SETACTIVE, &VUIInterfaceImpl::OnDocumentPageActive},
    {CPSUICB_REASON_KILLACTIVE, &VUIInterfaceImpl::OnDocumentPageLeft},
};

}  // namespace

LONG APIENTRY DocumentPropertiesCallback(PCPSUICBPARAM callbackParams, POEMCUIPPARAM params) {
    VUIInterfaceImpl* plugin = VUIInterfaceImpl::FromUiPlugin(UiPluginOf(params));
    if (params == nullptr || plugin == nullptr) return E_FAIL;
    if (callbackParams == nullptr) return 0;
    for (const DocumentReason& entry : kDocumentReasons) {
        if (entry.reason != callbackParams->Reason) continue;
        return CatchAll([&] {
            const VUICallbackContext context(params, callbackParams);
            return (plugin->*entry.handler)(context);
        });
    }
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
