// The one place a seam keeps its table of platform functions: the table of the real API and the
// table in use, which tests replace to fake or fail the platform before the code under test runs.
// Each seam defines one in its own file and offers Current…, Real… and Replace… over it.
#pragma once

#include <utility>

namespace zx {

template <typename Table>
class PlatformSeam {
public:
    explicit PlatformSeam(const Table& real) noexcept : m_real(real), m_current(real) {}
    PlatformSeam(const PlatformSeam&) = delete;
    PlatformSeam& operator=(const PlatformSeam&) = delete;

    const Table& Current() const noexcept { return m_current; }
    const Table& Real() const noexcept { return m_real; }
    // Puts table in place of the one in use and returns the one it replaced.
    Table Replace(const Table& table) noexcept { return std::exchange(m_current, table); }

private:
    const Table m_real;
    Table m_current;
};

}  // namespace zx
