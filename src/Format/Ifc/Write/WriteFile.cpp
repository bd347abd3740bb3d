// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/IfcWriteFile.h"

#include <exception>
#include <ostream>
#include <thread>
#include <utility>

namespace oxa::ifc::io {

IfcLineWriterInterface::~IfcLineWriterInterface() = default;

std::size_t IfcLineWriterInterface::iBlockSize() const noexcept { return 0; }

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

ThreadStringPool::ThreadStringPool(std::size_t iBlockSize) : m_iBlockSize(iBlockSize) {}

ThreadStringPool::~ThreadStringPool() = default;

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

// Statements through a pool to a consumer thread, which starts at once.
class ThreadedWriter {
public:
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
    // Enough that threads meet a few hundred times for a large file, little enough to stay in a core's cache.
    static constexpr std::size_t g_iBlock = 32768;

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
    ThreadStringPool m_pool{g_iBlock};
    std::exception_ptr m_pFault;   // the consumer's, until it is joined
    std::thread m_consumer;
};

// Texts of one thread at a time to the stream, as they come.
class BlockLineWriter final : public IfcLineWriterInterface {
public:
    explicit BlockLineWriter(std::ostream& out) : m_buffer(out) {}

    std::size_t iLineAdd(std::string& block, unsigned) override {
        m_buffer.vWrite(block);
        m_buffer.vWrite('\n');
        return ++m_iBlocks;
    }
    void vFinish() override {}
    [[nodiscard]] std::size_t iBlockSize() const noexcept override { return stream::StreamWriteBuffer::g_iBufferSize; }
    void vBufferFlush() { m_buffer.vBufferFlush(); }

private:
    stream::StreamWriteBuffer m_buffer;
    std::size_t m_iBlocks = 0;
};

// The same interface for all ways, chosen once a write: without a thread of its own.
template <class LineWriter>
class DirectWriter {
public:
    explicit DirectWriter(std::ostream& out) : m_writer(out) {}
    IfcLineWriterInterface& writer() noexcept { return m_writer; }
    void vEnd() { m_writer.vBufferFlush(); }
    void vAbandon() noexcept {}

private:
    LineWriter m_writer;
};

using SingleWriter = DirectWriter<IfcSingleThreadedLineWriter>;
using OrderedWriter = DirectWriter<BlockLineWriter>;

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

struct ProjectWrite {
    const FileData& data;
    std::ostream& out;
    WriteError& errors;
    const WriteOptions& options;

    template <class Writer>
    bool boRun() const {
        Writer writer(out);
        vGuarded(writer, [&] { data.boWrite(writer.writer(), errors, options); });
        writer.vEnd();
        return true;
    }
};

template <class Write>
bool boRun(const Write& write) {
    if (write.options.eOrder != WriteOrder::Any) return write.template boRun<OrderedWriter>();
    return write.options.boSingleThreaded ? write.template boRun<SingleWriter>()
                                          : write.template boRun<ThreadedWriter>();
}

}   // namespace

bool WriteFile::boWrite(const File& file, std::ostream& out, WriteError& errors, Progress progress,
                        bool boSingleThreaded) {
    return boWrite(file, out, errors, {.boSingleThreaded = boSingleThreaded, .progress = std::move(progress)});
}

bool WriteFile::boWrite(const File& file, std::ostream& out, WriteError& errors, const WriteOptions& options) {
    out << "ISO-10303-21;" << std::endl;
    file.header().boWrite(out, errors);
    out << "DATA;" << std::endl;
    boRun(ProjectWrite{file.data(), out, errors, options});
    out << "ENDSEC;" << std::endl << "END-ISO-10303-21;" << std::endl;
    return true;
}

bool WriteFile::boWrite(const Data& data, Seed seed, std::ostream& out, WriteError& errors, bool boSingleThreaded) {
    return boRun(SeededWrite{data, seed, out, errors, {.boSingleThreaded = boSingleThreaded}});
}

bool WriteFile::boWrite(const Data& data, const Entity* pEntity, std::ostream& out, WriteError& errors,
                        const WriteOptions& options) {
    if (!pEntity && data.entities().empty()) return false;
    const Seed seed = [&](StepWriteInfoCommon& info) {
        if (pEntity)
            info.iEntityIdGet(pEntity);
        else
            for (const Entity* pOne : data.entities()) info.iEntityIdGet(pOne);
    };
    return boRun(SeededWrite{data, seed, out, errors, options});
}

bool WriteFile::boWrite(const Data& data, std::ostream& out, WriteError& errors, bool boSingleThreaded) {
    const auto seed = [&data](StepWriteInfoCommon& info) {
        for (const Entity* pEntity : data.entities()) info.iEntityIdGet(pEntity);
    };
    return boWrite(data, seed, out, errors, boSingleThreaded);
}

bool WriteFile::boWrite(const Data& data, const Entity* pEntity, std::ostream& out, WriteError& errors,
                        bool boSingleThreaded) {
    const auto seed = [pEntity](StepWriteInfoCommon& info) { info.iEntityIdGet(pEntity); };
    return boWrite(data, seed, out, errors, boSingleThreaded);
}

}   // namespace oxa::ifc::io
