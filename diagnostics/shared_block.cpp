#include "diagnostics/shared_block.h"

#include <cstring>

namespace NGLogging {
namespace {
constexpr DWORD kMutexWaitMilliseconds = 50;

bool Acquire(HANDLE mutex) {
    const DWORD waited = ::WaitForSingleObject(mutex, kMutexWaitMilliseconds);
    return waited == WAIT_OBJECT_0 || waited == WAIT_ABANDONED;
}
}  // namespace

CSharedBlock::CSharedBlock(const std::wstring& base, DWORD size) {
    const std::wstring mutexName = base + L"Lock";
    const std::wstring mappingName = base + L"MappedFile";
    m_mutex.reset(::CreateMutexW(nullptr, FALSE, mutexName.c_str()));
    if (!m_mutex || !Acquire(m_mutex.get())) return;
    m_mapping.reset(::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, mappingName.c_str()));
    const bool created = m_mapping && ::GetLastError() != ERROR_ALREADY_EXISTS;
    if (m_mapping) m_view = ::MapViewOfFile(m_mapping.get(), FILE_MAP_ALL_ACCESS, 0, 0, size);
    if (m_view) {
        if (created) std::memset(m_view, 0, size);
        ++*static_cast<DWORD*>(m_view);
    }
    ::ReleaseMutex(m_mutex.get());
}

CSharedBlock::~CSharedBlock() {
    if (m_view && m_mutex && Acquire(m_mutex.get())) {
        --*static_cast<DWORD*>(m_view);
        ::ReleaseMutex(m_mutex.get());
    }
    if (m_view) ::UnmapViewOfFile(m_view);
}

CSharedBlock::Access::Access(CSharedBlock& block) noexcept
    : m_block(block), m_held(block.m_view != nullptr && Acquire(block.m_mutex.get())) {}

CSharedBlock::Access::~Access() {
    if (m_held) ::ReleaseMutex(m_block.m_mutex.get());
}

}  // namespace NGLogging
