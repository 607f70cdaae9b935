// The callbacks that the UI plug-in object registers with the core driver's property sheets: the
// common UI calls them when the user acts on the core driver's items or pages.
#pragma once

#include "ddk/printoem.h"

namespace zx {

// The document sheet: dispatches on the callback reason to the dependent-settings rules and the
// label handling. E_FAIL without the parameter block or the UI plug-in object; 0 for reasons the
// plug-in does not handle.
LONG APIENTRY DocumentPropertiesCallback(PCPSUICBPARAM callbackParams, POEMCUIPPARAM params);

// The printer sheet: a changed selection records manual configuration choices and runs
// "Autoconfig"; every other reason answers 0.
LONG APIENTRY PrinterPropertiesCallback(PCPSUICBPARAM callbackParams, POEMCUIPPARAM params);

}  // namespace zx
