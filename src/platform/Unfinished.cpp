// SPDX-License-Identifier: Apache-2.0
// A list of slots that only grows. Who takes a path out of its slot owns it: the object, or the handler of a signal.
#include "platform/Unfinished.h"

#include <algorithm>
#include <filesystem>

#include "platform/System.h"

namespace oxa::stream {

using Char = std::filesystem::path::value_type;

struct Unfinished::Slot {
    std::atomic<const Char*> pPath{nullptr};
    std::atomic<const Char*> pRemoved{nullptr};   // the handler's from then on: it may still read it
    std::atomic<bool> boTaken{false};
    Slot* pNext = nullptr;
};

std::atomic<Unfinished::Slot*>& Unfinished::all() noexcept {
    static std::atomic<Slot*> pFirst{nullptr};
    return pFirst;
}

Unfinished::Unfinished(const std::filesystem::path& path) { vNote(path); }

void Unfinished::vNote(const std::filesystem::path& path) {
    vForget();
    const auto& text = path.native();
    Char* const pCopy = new Char[text.size() + 1];
    std::copy_n(text.c_str(), text.size() + 1, pCopy);
    Slot* pSlot = all().load();
    while (pSlot && pSlot->boTaken.exchange(true)) pSlot = pSlot->pNext;
    if (!pSlot) {
        pSlot = new Slot;   // stays for the next that needs one
        pSlot->boTaken = true;
        pSlot->pNext = all().load();
        while (!all().compare_exchange_weak(pSlot->pNext, pSlot)) {}
    }
    m_pSlot = pSlot;
    m_pPath = pCopy;
    pSlot->pPath = pCopy;
}

void Unfinished::vForget() noexcept {
    if (!m_pSlot) return;
    if (m_pSlot->pPath.exchange(nullptr)) {
        delete[] m_pPath;
        m_pSlot->boTaken = false;
    }   // else the process ends, and the slot keeps what the handler took
    m_pSlot = nullptr;
    m_pPath = nullptr;
}

// Files first, then the folders, which are empty by now.
void removeUnfinished() noexcept {
    for (Unfinished::Slot* pSlot = Unfinished::all(); pSlot; pSlot = pSlot->pNext) {
        const Char* const pPath = pSlot->pPath.exchange(nullptr);
        if (!pPath) continue;
        if (platform::boRemove(pPath))
            pSlot->pRemoved = pPath;
        else
            pSlot->pPath = pPath;
    }
    for (Unfinished::Slot* pSlot = Unfinished::all(); pSlot; pSlot = pSlot->pNext) {
        const Char* const pPath = pSlot->pPath.exchange(nullptr);
        if (!pPath) continue;
        static_cast<void>(platform::boRemove(pPath));
        pSlot->pRemoved = pPath;
    }
}

}   // namespace oxa::stream
