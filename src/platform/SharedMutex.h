// SPDX-License-Identifier: Apache-2.0
/// @file
/// SharedMutex: a std::shared_mutex that is ready before threads meet at it.
///
/// For      whatever several threads may lock first.
/// Why      MinGW's makes itself with its first lock, and refuses the locks that come meanwhile; the standard class drops
///          that refusal, and two threads are where one should be.
/// Threads  as std::shared_mutex.
#pragma once

#include <shared_mutex>

namespace oxa::platform {

/// Locked once by the thread that makes it.
class SharedMutex : public std::shared_mutex {
public:
    SharedMutex() {
        lock();
        unlock();
    }
};

}   // namespace oxa::platform
