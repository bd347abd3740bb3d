// SPDX-License-Identifier: Apache-2.0
// Where statements go: in blocks to the stream, or through a bounded pool to a consumer thread; and the frame of a STEP
// file around them.
#include "Format/Ifc/IfcWriteFile.h"

#include <exception>
#include <ostream>
#include <thread>
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

// Two ways to a stream of one shape, chosen once a write. g_iBlock is how many bytes of statements the way's line writer
// takes at once; see StepWriteInfoCommon::m_iBlockSize.

// Statements through a pool to a consumer thread, which starts at once. Composers never touch the stream: they leave
// blocks in the pool and go on. An exception of the stream is kept and thrown on the caller's thread once all have
// ended; until then the consumer goes on taking blocks and drops them, for a composer that waits for room in the pool
// would wait for ever.
class ThreadedWriter {
public:
    // Large enough that the lock is taken a few hundred times for a large file, small enough to stay in the L2 cache.
    static constexpr std::size_t g_iBlock = 32768;

    explicit ThreadedWriter(std::ostream& out) : m_buffer(out), m_consumer([this] { vConsume(); }) {}

    IfcLineWriterInterface& writer() noexcept { return m_pool; }

    // After vFinish: waits for the consumer, then writes the rest out. What the stream threw on the way comes out
    // here, on the caller's thread.
    void vEnd() {
        m_consumer.join();
        if (m_pFault) std::rethrow_exception(m_pFault);
        m_buffer.vBufferFlush();
    }

    // The same after a fault elsewhere, which goes on from here: the consumer is let go, nothing more is written.
    void vAbandon() noexcept {
        m_pool.vFinish();
        m_consumer.join();
    }

private:
    void vConsume() {
        std::string block;
        while (m_pool.boTakeWait(block)) {
            if (block.empty() || m_pFault) continue;   // after a fault the producers still have to be served
            try {
                m_buffer.vWrite(block);
                m_buffer.vWrite('\n');
            } catch (...) {
                m_pFault = std::current_exception();
            }
        }
    }

    stream::StreamWriteBuffer m_buffer;
    ThreadStringPool m_pool;
    std::exception_ptr m_pFault;   // the consumer's, until it is joined
    std::thread m_consumer;
};

// Texts of one thread at a time to the stream, as they come: they are as large as a buffer would be.
class BlockLineWriter final : public IfcLineWriterInterface {
public:
    explicit BlockLineWriter(std::ostream& out) : m_out(out) {}

    std::size_t iLineAdd(std::string& block, unsigned) override {
        block.push_back('\n');
        m_out.write(block.data(), static_cast<std::streamsize>(block.size()));
        return ++m_iBlocks;
    }
    void vFinish() override {}

private:
    std::ostream& m_out;
    std::size_t m_iBlocks = 0;
};

// Without a thread of its own.
class DirectWriter {
public:
    static constexpr std::size_t g_iBlock = stream::StreamWriteBuffer::g_iBufferSize;

    explicit DirectWriter(std::ostream& out) : m_writer(out) {}
    IfcLineWriterInterface& writer() noexcept { return m_writer; }
    void vEnd() {}
    void vAbandon() noexcept {}

private:
    BlockLineWriter m_writer;
};

// Runs one step of a write. Its exceptions go on, once no thread is left that they would take down.
template <class Writer, class Step>
void vGuarded(Writer& writer, Step&& step) {
    try {
        step();
    } catch (...) {
        writer.vAbandon();
        throw;
    }
}

struct SeededWrite {
    const Data& data;
    const WriteFile::Seed& seed;
    std::ostream& out;
    WriteError& errors;
    const WriteOptions& options;

    template <class Writer>
    bool boRun() const {
        Writer writer(out);
        std::unique_ptr<StepWriteInfoCommon> pInfo;
        vGuarded(writer, [&] {
            pInfo = std::make_unique<StepWriteInfoCommon>(data.entityIdMap(false), errors, writer.writer(),
                                                          options.boSingleThreaded);
            pInfo->m_iBlockSize = Writer::g_iBlock;
            seed(*pInfo);
        });
        {
            const std::lock_guard lock(pInfo->m_mutex);
            if (pInfo->m_queue.empty()) return false;
        }
        vGuarded(writer, [&] { data.vWriteWith(*pInfo, options); });
        writer.vEnd();
        return true;
    }
};

// Data lines without any frame, of what the seed queues.
bool boStatementsWrite(const Data& data, const WriteFile::Seed& seed, std::ostream& out, WriteError& errors,
                       const WriteOptions& options) {
    const SeededWrite write{data, seed, out, errors, options};
    const bool boDirect = options.boSingleThreaded || options.eOrder != WriteOrder::Any;
    return boDirect ? write.boRun<DirectWriter>() : write.boRun<ThreadedWriter>();
}

WriteFile::Seed seedOf(const Entity* pEntity) {
    return [pEntity](StepWriteInfoCommon& info) { info.iEntityIdGet(pEntity); };
}

WriteFile::Seed seedOfAll(const Data& data) {
    return [&data](StepWriteInfoCommon& info) {
        // No other thread walks yet.
        for (const Entity* pEntity : data.entities()) info.iEntityIdQueue(pEntity);
    };
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
