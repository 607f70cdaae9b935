#include "tests/support/failing_allocator.h"

#include <windows.h>

#include <cstdlib>
#include <new>

namespace {

// Plain globals: the allocator may not use thread-local storage, whose first use allocates.
volatile DWORD g_armedThread = 0;
long g_countdown = -1;  // allocations to let through before the one refused; -1: none counted
size_t g_minimumBytes = 0;
bool g_refused = false;

bool RefusesNow(size_t bytes) noexcept {
    if (g_armedThread == 0 || g_armedThread != ::GetCurrentThreadId()) return false;
    const bool refuse = (g_countdown == 0) || (g_minimumBytes != 0 && bytes >= g_minimumBytes);
    if (g_countdown >= 0) --g_countdown;
    g_refused = g_refused || refuse;
    return refuse;
}

void* Allocate(size_t bytes) {
    if (RefusesNow(bytes)) throw std::bad_alloc();
    void* block = std::malloc(bytes != 0 ? bytes : 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

void* operator new(size_t bytes) { return Allocate(bytes); }
void* operator new[](size_t bytes) { return Allocate(bytes); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t) noexcept { std::free(block); }
void operator delete[](void* block, size_t) noexcept { std::free(block); }

namespace zxtest {

RefusedAllocations::RefusedAllocations(long index, size_t bytes, bool* refused) noexcept : m_report(refused) {
    g_countdown = index;
    g_minimumBytes = bytes;
    g_refused = false;
    g_armedThread = ::GetCurrentThreadId();
}

RefusedAllocations::~RefusedAllocations() {
    g_armedThread = 0;
    if (m_report) *m_report = g_refused;
}

bool RefusedAllocations::Refused() const noexcept { return g_refused; }

}  // namespace zxtest
