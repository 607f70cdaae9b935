// An external monitor that a diagnostics session can plug into a running process: a COM object
// named in the registry that is told which function traces are entered and left.
#pragma once

#include "util/scoped.h"

#include <oaidl.h>

#include <string>

namespace NGLogging {

// The monitor's interface, {46C071BD-4AB9-4CED-B72B-9976370F007E}. Texts are never empty: an
// empty one is sent as "<unknown>".
struct IExternalLogMonitor : public IDispatch {
    virtual HRESULT STDMETHODCALLTYPE Attach(BSTR parameterFile, BSTR parameterFileAgain) = 0;
    virtual HRESULT STDMETHODCALLTYPE Detach(BSTR executable) = 0;
    virtual HRESULT STDMETHODCALLTYPE ClassEntered(BSTR className) = 0;
    virtual HRESULT STDMETHODCALLTYPE FunctionEntered(BSTR shortName) = 0;
    virtual HRESULT STDMETHODCALLTYPE FunctionLeft(BSTR shortName) = 0;
};
inline constexpr IID IID_IExternalLogMonitor = {
    0x46c071bd, 0x4ab9, 0x4ced, {0xb7, 0x2b, 0x99, 0x76, 0x37, 0x0f, 0x00, 0x7e}};

// What ExtMonitorFlags asks the monitor to be told.
namespace MonitorFlag {
inline constexpr DWORD ClassChanges = 0x1;
inline constexpr DWORD Entries = 0x2;
inline constexpr DWORD Exits = 0x4;
}  // namespace MonitorFlag

// The monitor is a COM object of the apartment of the thread that first configures it, which
// initialises COM for it when needed. Only that thread uses COM here: it replaces the monitor,
// tells it of its own function traces, says goodbye and uninitialises. Calls from other threads
// are not passed on.
class CExternalMonitor {
public:
    explicit CExternalMonitor(std::wstring executable) : m_executable(std::move(executable)) {}
    // On the monitor's thread, says goodbye; on any other, leaves the monitor as Abandon does.
    ~CExternalMonitor();
    CExternalMonitor(const CExternalMonitor&) = delete;
    CExternalMonitor& operator=(const CExternalMonitor&) = delete;

    // Takes the registry's choice: a class identifier in braces, flags and a parameter file. A new
    // class replaces the monitor in use, which is told goodbye first.
    void Configure(const std::wstring& classId, DWORD flags, const std::wstring& parameterFile);

    void Entered(const std::wstring& className, const std::wstring& shortName);
    void Left(const std::wstring& shortName);

    // Forgets the monitor without calling it: the module is being unloaded under the loader lock.
    void Abandon() noexcept;

private:
    // True on the thread whose apartment holds the monitor, or on any thread before there is one.
    bool OnMonitorThread() const noexcept;

    DWORD m_thread = 0;
    std::wstring m_executable;
    std::wstring m_classId;
    std::wstring m_lastClass;
    DWORD m_flags = 0;
    zx::ComPtr<IExternalLogMonitor> m_monitor;
    bool m_comInitialised = false;
};

}  // namespace NGLogging
