#include "diagnostics/external_monitor.h"

#include <objbase.h>

namespace NGLogging {
namespace {

zx::unique_bstr Text(const std::wstring& text) { return zx::MakeBstr(text.empty() ? L"<unknown>" : text.c_str()); }

}  // namespace

CExternalMonitor::~CExternalMonitor() {
    if (!OnMonitorThread()) {
        Abandon();  // its apartment cannot be entered from here
        return;
    }
    if (m_monitor) m_monitor->Detach(Text(m_executable).get());
    m_monitor.Reset();
    if (m_comInitialised) ::CoUninitialize();
}

bool CExternalMonitor::OnMonitorThread() const noexcept { return m_thread == 0 || m_thread == ::GetCurrentThreadId(); }

void CExternalMonitor::Abandon() noexcept {
    m_monitor.Detach();  // deliberately not released: COM may not be called while the loader lock is held
    m_comInitialised = false;
}

void CExternalMonitor::Configure(const std::wstring& classId, DWORD flags, const std::wstring& parameterFile) {
    if (classId.empty() || classId == m_classId || !OnMonitorThread()) return;
    CLSID clsid;
    if (FAILED(::CLSIDFromString(classId.c_str(), &clsid))) return;
    m_thread = ::GetCurrentThreadId();
    if (!m_comInitialised && SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
        m_comInitialised = true;
        ::OutputDebugStringW(L"CoInitialize succeeded...");
    }
    m_flags = flags;
    if (m_monitor) m_monitor->Detach(Text(m_executable).get());
    m_monitor.Reset();
    m_classId = classId;
    if (SUCCEEDED(::CoCreateInstance(clsid, nullptr, CLSCTX_ALL, IID_IExternalLogMonitor,
                                     reinterpret_cast<void**>(m_monitor.GetAddressOf())))) {
        m_monitor->Attach(Text(parameterFile).get(), Text(parameterFile).get());
    }
}

void CExternalMonitor::Entered(const std::wstring& className, const std::wstring& shortName) {
    if (!m_monitor || !OnMonitorThread()) return;
    if ((m_flags & MonitorFlag::ClassChanges) && className != m_lastClass) {
        m_lastClass = className;
        m_monitor->ClassEntered(Text(className).get());
    }
    if (m_flags & MonitorFlag::Entries) m_monitor->FunctionEntered(Text(shortName).get());
}

void CExternalMonitor::Left(const std::wstring& shortName) {
    if (m_monitor && OnMonitorThread() && (m_flags & MonitorFlag::Exits)) m_monitor->FunctionLeft(Text(shortName).get());
}

}  // namespace NGLogging
