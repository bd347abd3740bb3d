// SPDX-License-Identifier: Apache-2.0
// InverseChanges: whether a caller has changed an inverse list since a read has ended, of whichever model.
//
// For      Data, which writes a model that is as a read has left it without a walk. An instance does not know its model, and
//          a setter may be told of another one (an instance of that refers to it), so the change is told to all models.
// Cost     a look at a shared number for a change; only the first one behind a read writes.
// Threads  any number.
#pragma once

#include <cstdint>

namespace oxa::ifc {

class InverseChanges {
public:
    // Now. A change that is told from here on makes it another moment.
    [[nodiscard]] static std::uint64_t iMoment() noexcept;
    // Whether nothing was told since.
    [[nodiscard]] static bool boNoneSince(std::uint64_t iMoment) noexcept;
    // An inverse list is changed.
    static void vTell() noexcept;
};

}   // namespace oxa::ifc
