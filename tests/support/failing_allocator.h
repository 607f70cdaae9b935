// Memory that runs out on demand, for the out-of-memory tests. A test executable that links
// failing_allocator.cpp has its global operator new replaced: it allocates as usual until a test
// arms it, then refuses the allocations asked for, made by the arming thread only, by throwing
// std::bad_alloc as the standard one does when memory runs out. Code in the plug-in DLL keeps
// its own allocator; only the product code linked into the test executable is affected.
#pragma once

#include <cstddef>

namespace zxtest {

class RefusedAllocations {
public:
    // Refuses the allocation numbered `index` from now on (0: the next one); the others succeed.
    // When given, *refused tells at the end whether it was refused.
    static RefusedAllocations Nth(long index, bool* refused = nullptr) noexcept {
        return RefusedAllocations(index, 0, refused);
    }
    // Refuses every allocation of at least `bytes`.
    static RefusedAllocations OfAtLeast(size_t bytes) noexcept { return RefusedAllocations(-1, bytes, nullptr); }

    ~RefusedAllocations();  // allocations succeed again
    RefusedAllocations(const RefusedAllocations&) = delete;
    RefusedAllocations& operator=(const RefusedAllocations&) = delete;

    // Whether an allocation has been refused since the arming.
    bool Refused() const noexcept;

private:
    RefusedAllocations(long index, size_t bytes, bool* refused) noexcept;
    bool* m_report;
};

// Refuses the first allocation of a step in the first run, the second in the second, and so on,
// until a run in which the step made no allocation that could be refused:
//     for (zxtest::AllocationSweep sweep; sweep.NextRun();) {
//         ...set up...
//         { const auto refusal = sweep.Refuse(); step(); }
//         ...check...
//     }
class AllocationSweep {
public:
    bool NextRun() noexcept {
        if (m_run >= 0 && !m_refused) return false;
        ++m_run;
        m_refused = false;
        return true;
    }
    RefusedAllocations Refuse() noexcept { return RefusedAllocations::Nth(m_run, &m_refused); }
    // The run under way, from 0; after the sweep, the number of runs that had a refusal.
    long Run() const noexcept { return m_run; }

private:
    long m_run = -1;
    bool m_refused = false;
};

}  // namespace zxtest
