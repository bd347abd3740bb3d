// SPDX-License-Identifier: Apache-2.0
#include "AllocationFault.h"

#include <sys/mman.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

namespace oxa::ifc {

namespace {

struct State {
    bool boArmed = false;
    bool boAllLater = false;
    std::size_t iFaulty = 0;
    std::size_t iSeen = 0;
};
constinit thread_local State g_state;
constinit std::atomic<std::ptrdiff_t> g_iAlive{0};

// Of AllocationFaultElsewhere.
struct StateElsewhere {
    std::atomic<bool> boArmed{false};
    bool boAllLater = false;   // this and the next are written before boArmed
    std::size_t iFaulty = 0;
    std::atomic<std::size_t> iSeen{0};
};
constinit StateElsewhere g_elsewhere;
constinit thread_local bool g_boElsewhereIsNotHere = false;

bool boFailsElsewhere() noexcept {
    if (!g_elsewhere.boArmed.load(std::memory_order_acquire) || g_boElsewhereIsNotHere) return false;
    const std::size_t iThis = g_elsewhere.iSeen.fetch_add(1, std::memory_order_relaxed);
    return g_elsewhere.boAllLater ? iThis >= g_elsewhere.iFaulty : iThis == g_elsewhere.iFaulty;
}

// Counts an allocation; true when it has to fail.
bool boFails() noexcept {
    if (!g_state.boArmed) return boFailsElsewhere();
    const std::size_t iThis = g_state.iSeen++;
    return g_state.boAllLater ? iThis >= g_state.iFaulty : iThis == g_state.iFaulty;
}

}   // namespace

AllocationFault::AllocationFault(std::size_t iAllocation, bool boAllLater) {
    g_state.iFaulty = iAllocation;
    g_state.boAllLater = boAllLater;
    g_state.iSeen = 0;
    g_state.boArmed = true;
}

AllocationFault::~AllocationFault() { g_state.boArmed = false; }

std::size_t AllocationFault::iAllocations() noexcept { return g_state.iSeen; }

AllocationFaultElsewhere::AllocationFaultElsewhere(std::size_t iAllocation, bool boAllLater) {
    g_boElsewhereIsNotHere = true;
    g_elsewhere.iFaulty = iAllocation;
    g_elsewhere.boAllLater = boAllLater;
    g_elsewhere.iSeen = 0;
    g_elsewhere.boArmed.store(true, std::memory_order_release);
}

AllocationFaultElsewhere::~AllocationFaultElsewhere() {
    g_elsewhere.boArmed = false;
    g_boElsewhereIsNotHere = false;
}

std::size_t AllocationFaultElsewhere::iAllocations() noexcept { return g_elsewhere.iSeen; }

std::ptrdiff_t AllocationFault::iAlive() noexcept { return g_iAlive.load(std::memory_order_relaxed); }

}   // namespace oxa::ifc

// The linker sends the calls of this program, its libraries included, to the functions named __wrap_; shared
// libraries keep their own.
extern "C" {
void* __real_malloc(std::size_t iBytes);
void* __real_calloc(std::size_t iCount, std::size_t iBytes);
void* __real_mmap(void* pWish, std::size_t iBytes, int iAccess, int iFlags, int iFile, off_t iOffset);

void* __wrap_malloc(std::size_t iBytes) { return oxa::ifc::boFails() ? nullptr : __real_malloc(iBytes); }

void* __wrap_calloc(std::size_t iCount, std::size_t iBytes) {
    return oxa::ifc::boFails() ? nullptr : __real_calloc(iCount, iBytes);
}

void* __wrap_mmap(void* pWish, std::size_t iBytes, int iAccess, int iFlags, int iFile, off_t iOffset) {
    if (!oxa::ifc::boFails()) return __real_mmap(pWish, iBytes, iAccess, iFlags, iFile, iOffset);
    errno = ENOMEM;
    return MAP_FAILED;
}
}

// All forms but the aligned ones, which nothing here uses: a sanitizer brings forms of its own, and they don't mix.

void* operator new(std::size_t iBytes, const std::nothrow_t&) noexcept {
    void* const pBytes = oxa::ifc::boFails() ? nullptr : __real_malloc(iBytes ? iBytes : 1);
    if (pBytes) oxa::ifc::g_iAlive.fetch_add(1, std::memory_order_relaxed);
    return pBytes;
}
void* operator new(std::size_t iBytes) {
    if (void* const pBytes = operator new(iBytes, std::nothrow)) return pBytes;
    throw std::bad_alloc();
}
void* operator new[](std::size_t iBytes) { return operator new(iBytes); }
void* operator new[](std::size_t iBytes, const std::nothrow_t&) noexcept { return operator new(iBytes, std::nothrow); }

void operator delete(void* pBytes) noexcept {
    if (pBytes) oxa::ifc::g_iAlive.fetch_sub(1, std::memory_order_relaxed);
    std::free(pBytes);
}
void operator delete(void* pBytes, std::size_t) noexcept { operator delete(pBytes); }
void operator delete(void* pBytes, const std::nothrow_t&) noexcept { operator delete(pBytes); }
void operator delete[](void* pBytes) noexcept { operator delete(pBytes); }
void operator delete[](void* pBytes, std::size_t) noexcept { operator delete(pBytes); }
void operator delete[](void* pBytes, const std::nothrow_t&) noexcept { operator delete(pBytes); }
