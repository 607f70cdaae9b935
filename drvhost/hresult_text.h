// HRESULTs as drvhost prints them: the number, its name, and, for a plug-in method's result that
// the core driver takes in its stride, what the core driver does with it.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace drvhost {

// The name of a result the host meets ("E_NOTIMPL"), "HRESULT_FROM_WIN32(n)" for other Windows
// errors, or empty.
std::string HresultName(HRESULT hr);

// "0x80004001 E_NOTIMPL"; a result without a name keeps only the number.
std::string HresultText(HRESULT hr);

// The plug-in methods whose failures the core driver treats as normal answers.
enum class PluginCall {
    UiMethod,                // an IPrintOemUI method that the plug-in may leave to the core driver
    PublishDriverInterface,  // the core driver offers a helper object; refusing it is allowed
    Other,
};

// HresultText, followed by what the core driver makes of the result when it is normal:
// "0x80004001 E_NOTIMPL: left to the core driver".
std::string PluginResultText(PluginCall call, HRESULT hr);

// The text of a Windows error code, without the trailing period and line end.
std::string Win32ErrorText(DWORD error);

}  // namespace drvhost
