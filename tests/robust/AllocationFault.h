// SPDX-License-Identifier: Apache-2.0
// AllocationFault: makes allocations fail, one after the other.
//
// For      FaultInjectionTest, which replaces operator new and wraps malloc(), calloc() and mmap() for its program
//          alone (AllocationFault.cpp and the options of the linker in CMakeLists.txt).
// Usage    { const AllocationFault fault(3, false); ... } the fourth allocation in the scope fails
// Threads  counts and breaks those of its own thread only; AllocationFaultElsewhere those of all others.
#pragma once

#include <cstddef>

namespace oxa::ifc {

class AllocationFault {
public:
    static constexpr std::size_t g_iNever = static_cast<std::size_t>(-1);

    // The allocation with the number iAllocation, from 0, fails; with boAllLater every further one too. One scope at a
    // time.
    AllocationFault(std::size_t iAllocation, bool boAllLater);
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;

    // In this scope so far.
    [[nodiscard]] static std::size_t iAllocations() noexcept;
    // Allocations of operator new that are alive, on all threads.
    [[nodiscard]] static std::ptrdiff_t iAlive() noexcept;
};

// The same for the allocations of all threads but the one that makes it, counted together.
class AllocationFaultElsewhere {
public:
    AllocationFaultElsewhere(std::size_t iAllocation, bool boAllLater);
    ~AllocationFaultElsewhere();
    AllocationFaultElsewhere(const AllocationFaultElsewhere&) = delete;
    AllocationFaultElsewhere& operator=(const AllocationFaultElsewhere&) = delete;

    // In the last scope.
    [[nodiscard]] static std::size_t iAllocations() noexcept;
};

}   // namespace oxa::ifc
