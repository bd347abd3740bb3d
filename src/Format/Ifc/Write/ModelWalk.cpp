// SPDX-License-Identifier: Apache-2.0
// The writing side of the container: the walk over the model, on one thread or up to three.
#include <thread>
#include <vector>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcWriteFile.h"
#include "Format/Ifc/Write/FetchAhead.h"
#include "Format/Ifc/Write/WriteThreads.h"

namespace oxa::ifc {

namespace {

// The walk on one thread. Who refers to an instance is met already where all are.
void vWriteQueued(StepWriteInfoCommon& info, StepWriteInfo& statement, const WriteProgress& progress) {
    const auto vWrite = [&](const Entity* pEntity) {
        ++info.m_iDequeued;
        if (progress) progress(info.m_iDequeued);
        if (pEntity) pEntity->vWrite(statement);
    };
    if (info.boAllMet()) {
        statement.m_boInverses = false;
        vForEachListed<Entity::Wanted::Text>(info, vWrite);
        statement.m_boInverses = true;
    }
    vForEachQueued<Entity::Wanted::Statement>(info, vWrite);
}

// On one thread a fault, of the progress function for instance, takes nothing from the stream that was composed before.
void vComposedKeep(StepWriteInfo& statement) noexcept {
    try {
        statement.vBlockAdd();
    } catch (...) {
        // The first fault is the one to tell.
    }
}

}   // namespace

// The caller's thread walks too, and is the only one that tells progress. When one throws, the others must not wait for
// work that never comes: the walk is stopped before they are joined.
void Data::vWrite(StepWriteInfoCommon& info, std::function<void(unsigned)> progress) const {
    std::vector<std::thread> threads;
    const auto join = [&threads] {
        for (std::thread& thread : threads) thread.join();
    };
    try {
        if (!info.m_boSingleThreaded) {
            for (unsigned i = 0; i < iExtraWriteThreads(); ++i) {
                vSortEntities();   // before any other thread reads the list; without one it stays as it is
                if (m_entities.size() <= std::size_t{10} * i) break;
                threads.emplace_back([this, &info] { (*this)(info, {}); });
            }
        }
        (*this)(info, std::move(progress));
    } catch (...) {
        info.vStop();
        join();
        throw;
    }
    join();
    info.m_pWriter->vFinish();
}

// One composing thread. Alone it takes entities from the queue one by one, and what a statement names goes to the queue
// at once; beside others it works on shares and hands on what it found with the next one (boTake).
void Data::operator()(StepWriteInfoCommon& info, std::function<void(unsigned)> progress) const {
    StepWriteInfo statement(info, StepWriteInfo::Pass::InBatches);
    if (info.m_boSingleThreaded) {
        try {
            vWriteQueued(info, statement, progress);
        } catch (...) {
            vComposedKeep(statement);
            throw;
        }
        info.m_boDone = true;
    } else {
        std::vector<const Entity*> share;
        bool boActive = false;
        while (info.boTake(statement.m_found, share, boActive, progress))
            for (std::size_t i = 0; i < share.size(); ++i) {
                vFetchAhead<Entity::Wanted::Statement>(share, i);
                share[i]->vWrite(statement);
            }
    }
    statement.vBlockAdd();
}

void Data::vQueueAll(WriteInfoCommon& info) const { info.vQueueAll(entities(), boAsRead()); }

bool Data::boWrite(std::ostream& out, io::WriteError& errors, bool boSingleThreaded) const {
    return io::WriteFile::boWrite(*this, out, errors, boSingleThreaded);
}

bool Data::boWrite(const Entity* pEntity, std::ostream& out, io::WriteError& errors, bool boSingleThreaded) const {
    return pEntity && io::WriteFile::boWrite(*this, pEntity, out, errors, boSingleThreaded);
}

}   // namespace oxa::ifc
