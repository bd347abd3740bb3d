// The writing side of the container: the walk over the model, on one thread or up to three.
#include <algorithm>
#include <thread>
#include <vector>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcWriteFile.h"

namespace oxa::ifc {

namespace {

// At most two threads beside the caller's, and none that the machine has no room for; a machine that reports fewer
// than three threads wraps around and gets both.
unsigned iExtraThreads() noexcept {
    return std::min(2U, std::thread::hardware_concurrency() - 3U);
}

}   // namespace

void Data::vWrite(StepWriteInfoCommon& info, std::function<void(unsigned)> progress) const {
    std::vector<std::thread> threads;
    const auto join = [&threads] {
        for (std::thread& thread : threads) thread.join();
    };
    try {
        if (!info.m_boSingleThreaded) {
            for (unsigned i = 0; i < iExtraThreads(); ++i) {
                vSortEntities();   // before any other thread reads the list; none is started: as it was
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

void Data::operator()(StepWriteInfoCommon& info, std::function<void(unsigned)> progress) const {
    StepWriteInfo statement(info, StepWriteInfo::Pass::InBatches);
    if (info.m_boSingleThreaded) {
        while (!info.m_queue.empty()) {
            const Entity* pEntity = info.m_queue.front();
            info.m_queue.pop_front();
            ++info.m_iDequeued;
            if (progress) progress(info.m_iDequeued);
            if (pEntity) pEntity->vWrite(statement);
        }
        info.m_boDone = true;
    } else {
        std::vector<const Entity*> share;
        bool boActive = false;
        while (info.boTake(statement.m_found, share, boActive, progress))
            for (const Entity* pEntity : share)
                if (pEntity) pEntity->vWrite(statement);
    }
    statement.vBlockAdd();
}

bool Data::boWrite(std::ostream& out, io::WriteError& errors, bool boSingleThreaded) const {
    return io::WriteFile::boWrite(*this, out, errors, boSingleThreaded);
}

bool Data::boWrite(const Entity* pEntity, std::ostream& out, io::WriteError& errors, bool boSingleThreaded) const {
    return pEntity && io::WriteFile::boWrite(*this, pEntity, out, errors, boSingleThreaded);
}

bool FileData::boWrite(io::IfcLineWriterInterface& writer, io::WriteError& errors,
                       std::function<void(unsigned)> progress, bool boSingleThreaded) const {
    if (!pProject()) {
        writer.vFinish();
        return false;
    }
    StepWriteInfoCommon info(entityIdMap(false), errors, writer, boSingleThreaded);
    info.iEntityIdGet(pProject());
    vWrite(info, std::move(progress));
    return true;
}

bool File::boWrite(std::ostream& out, io::WriteError& errors, WriteProgress progress, bool boSingleThreaded) const {
    return m_data.pProject() && io::WriteFile::boWrite(*this, out, errors, std::move(progress), boSingleThreaded);
}

bool FileSimple::boWrite(const Entity* pEntity, std::ostream& out, io::WriteError& errors,
                         bool boSingleThreaded) const {
    if (pEntity)
        m_header.exportInfo = static_cast<std::uint64_t>(m_data.iIdFromEntity(*pEntity));
    else
        m_header.exportInfo = FileHeaderSimple::WholeData;
    if (!m_header.boWrite(out, errors)) return false;
    return pEntity ? m_data.boWrite(pEntity, out, errors, boSingleThreaded)
                   : m_data.boWrite(out, errors, boSingleThreaded);
}

}   // namespace oxa::ifc
