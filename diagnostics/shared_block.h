// A named block of shared memory guarded by a named mutex: the log module keeps its
// configuration cache and its external-monitor state in two of them, one pair per process.
#pragma once

#include "util/scoped.h"

#include <windows.h>

#include <string>

namespace NGLogging {

class CSharedBlock {
public:
    // The mutex base + "Lock" and the mapping base + "MappedFile" of `size` bytes; the first
    // 32-bit word counts the users and goes up with each attach. Throws std::bad_alloc when the
    // names cannot be made, before anything is taken.
    CSharedBlock(const std::wstring& base, DWORD size);
    ~CSharedBlock();
    CSharedBlock(const CSharedBlock&) = delete;
    CSharedBlock& operator=(const CSharedBlock&) = delete;

    bool Valid() const noexcept { return m_view != nullptr; }

    // Holds the block's mutex for a scope, waiting at most 50 ms; false when not obtained.
    class Access {
    public:
        explicit Access(CSharedBlock& block) noexcept;
        ~Access();
        Access(const Access&) = delete;
        Access& operator=(const Access&) = delete;
        explicit operator bool() const noexcept { return m_held; }
        DWORD* Words() const noexcept { return static_cast<DWORD*>(m_block.m_view); }

    private:
        CSharedBlock& m_block;
        bool m_held;
    };

private:
    zx::unique_handle m_mutex;
    zx::unique_handle m_mapping;
    void* m_view = nullptr;
};

// The registry block holds the user count and the tick count of the last registry reading.
inline constexpr DWORD kRegistryBlockSize = 208;
inline constexpr DWORD kMonitorBlockSize = 112;

}  // namespace NGLogging
