// SPDX-License-Identifier: Apache-2.0
// Where statements go: in blocks to the stream, or into a bounded pool for a consumer of the caller's own; and the frame of
// a STEP file around them.
#include "Format/Ifc/IfcWriteFile.h"

#include <exception>
#include <ostream>
#include <utility>

namespace oxa::ifc::io {

IfcLineWriterInterface::~IfcLineWriterInterface() = default;

IfcSingleThreadedLineWriter::IfcSingleThreadedLineWriter(std::ostream& out)
    : m_pState(new State{stream::StreamWriteBuffer(out)}) {}

IfcSingleThreadedLineWriter::~IfcSingleThreadedLineWriter() = default;

std::size_t IfcSingleThreadedLineWriter::iLineAdd(std::string& line, unsigned) {
    m_pState->m_buffer.vWrite(line);
    m_pState->m_buffer.vWrite('\n');
    return ++m_pState->m_iLines;
}

void IfcSingleThreadedLineWriter::vFinish() {}

void IfcSingleThreadedLineWriter::vBufferFlush() { m_pState->m_buffer.vBufferFlush(); }

ThreadStringPool::ThreadStringPool() = default;

ThreadStringPool::~ThreadStringPool() = default;

// The caller gets the string of an earlier record in exchange, whose capacity it can use: the texts of a write
// circulate between composers and consumer. Records are a stack, since their order does not matter.
std::size_t ThreadStringPool::iLineAdd(std::string& line, unsigned id) {
    std::unique_lock lock(m_mutex);
    m_notFull.wait(lock, [this] { return m_iCount < g_iLines; });
    Record& record = m_lines[m_iCount];
    std::swap(record.m_line, line);
    record.m_iId = id;
    m_notEmpty.notify_one();
    return ++m_iCount;
}

void ThreadStringPool::vFinish() {
    const std::lock_guard lock(m_mutex);   // else a consumer could miss it between its look and its wait
    m_boFinished.exchange(true);
    m_notEmpty.notify_all();
}

void ThreadStringPool::vSwapOut(std::string& line) {
    std::swap(line, m_lines[--m_iCount].m_line);
    m_notFull.notify_one();
}

ThreadStringPool::Take ThreadStringPool::take(std::string& line) {
    const std::lock_guard lock(m_mutex);
    if (m_iCount == 0) return m_boFinished ? Take::Finished : Take::Nothing;
    vSwapOut(line);
    return Take::Line;
}

bool ThreadStringPool::boTakeWait(std::string& line) {
    std::unique_lock lock(m_mutex);
    m_notEmpty.wait(lock, [this] { return m_iCount > 0 || m_boFinished; });
    if (m_iCount == 0) return false;
    vSwapOut(line);
    return true;
}

namespace {

// Texts of one thread at a time to the stream, as they come: they are as large as a buffer would be. Several threads leave
// no empty lines, which seeds may hand on.
class BlockLineWriter final : public IfcLineWriterInterface {
public:
    static constexpr std::size_t g_iBlock = stream::StreamWriteBuffer::g_iBufferSize;   // bytes of statements at once

    BlockLineWriter(std::ostream& out, bool boSingleThreaded) : m_out(out), m_boSingleThreaded(boSingleThreaded) {}

    std::size_t iLineAdd(std::string& block, unsigned) override {
        if (block.empty() && !m_boSingleThreaded) return m_iBlocks;
        block.push_back('\n');
        m_out.write(block.data(), static_cast<std::streamsize>(block.size()));
        return ++m_iBlocks;
    }
    void vFinish() override {}

private:
    std::ostream& m_out;
    const bool m_boSingleThreaded;
    std::size_t m_iBlocks = 0;
};

// Data lines without any frame, of what the seed queues.
bool boStatementsWrite(const Data& data, const WriteFile::Seed& seed, std::ostream& out, WriteError& errors,
                       const WriteOptions& options) {
    BlockLineWriter writer(out, options.boSingleThreaded);
    StepWriteInfoCommon info(data.entityIdMap(false), errors, writer, options.boSingleThreaded);
    info.m_iBlockSize = BlockLineWriter::g_iBlock;
    seed(info);
    if (info.boQueueEmpty()) {
        if (!options.boSingleThreaded && options.eOrder == WriteOrder::Any) std::terminate();
        return false;
    }
    data.vWriteWith(info, options);
    return true;
}

WriteFile::Seed seedOf(const Entity* pEntity) {
    return [pEntity](StepWriteInfoCommon& info) { info.iEntityIdGet(pEntity); };
}

WriteFile::Seed seedOfAll(const Data& data) {
    return [&data](StepWriteInfoCommon& info) { data.vQueueAll(info); };
}

// The frame of an exchange structure; lines() writes those of the DATA section.
template <class Lines>
void vFramedWrite(const FileHeader& header, std::ostream& out, WriteError& errors, Lines&& lines) {
    out << "ISO-10303-21;" << std::endl;
    header.boWrite(out, errors);
    out << "DATA;" << std::endl;
    lines();
    out << "ENDSEC;" << std::endl << "END-ISO-10303-21;" << std::endl;
}

}   // namespace

bool WriteFile::boWrite(const File& file, std::ostream& out, WriteError& errors, Progress progress,
                        bool boSingleThreaded) {
    return boWrite(file, out, errors, {.boSingleThreaded = boSingleThreaded, .progress = std::move(progress)});
}

bool WriteFile::boWrite(const File& file, std::ostream& out, WriteError& errors, const WriteOptions& options) {
    vFramedWrite(file.header(), out, errors, [&] {
        if (const Entity* pProject = file.data().pProject())
            boStatementsWrite(file.data(), seedOf(pProject), out, errors, options);
    });
    return true;
}

bool WriteFile::boWrite(const FileHeader& header, const Data& data, const Entity* pEntity, std::ostream& out,
                        WriteError& errors, const WriteOptions& options) {
    vFramedWrite(header, out, errors, [&] { boWrite(data, pEntity, out, errors, options); });
    return true;
}

bool WriteFile::boWrite(const FileHeaderSimple& header, const Data& data, const Entity* pEntity, std::ostream& out,
                        WriteError& errors, const WriteOptions& options) {
    return header.boWrite(out, errors) && boWrite(data, pEntity, out, errors, options);
}

bool WriteFile::boWrite(const Data& data, const Entity* pEntity, std::ostream& out, WriteError& errors,
                        const WriteOptions& options) {
    if (!pEntity && data.entities().empty()) return false;
    return boStatementsWrite(data, pEntity ? seedOf(pEntity) : seedOfAll(data), out, errors, options);
}

bool WriteFile::boWrite(const Data& data, Seed seed, std::ostream& out, WriteError& errors, bool boSingleThreaded) {
    return boStatementsWrite(data, seed, out, errors, {.boSingleThreaded = boSingleThreaded});
}

bool WriteFile::boWrite(const Data& data, std::ostream& out, WriteError& errors, bool boSingleThreaded) {
    return boWrite(data, seedOfAll(data), out, errors, boSingleThreaded);
}

bool WriteFile::boWrite(const Data& data, const Entity* pEntity, std::ostream& out, WriteError& errors,
                        bool boSingleThreaded) {
    return boWrite(data, seedOf(pEntity), out, errors, boSingleThreaded);
}

}   // namespace oxa::ifc::io
