#include "Format/Ifc/IfcWriteFile.h"

#include <exception>
#include <ostream>
#include <thread>
#include <utility>

namespace oxa::ifc::io {

IfcLineWriterInterface::~IfcLineWriterInterface() = default;

std::size_t IfcLineWriterInterface::iBlockSize() const noexcept {
    return 0;
}

IfcSingleThreadedLineWriter::IfcSingleThreadedLineWriter(std::ostream& out)
    : m_pState(new State{stream::StreamWriteBuffer(out)}) {}

IfcSingleThreadedLineWriter::~IfcSingleThreadedLineWriter() = default;

std::size_t IfcSingleThreadedLineWriter::iLineAdd(std::string& line, unsigned) {
    m_pState->m_buffer.vWrite(line);
    m_pState->m_buffer.vWrite('\n');
    return ++m_pState->m_iLines;
}

void IfcSingleThreadedLineWriter::vFinish() {}

void IfcSingleThreadedLineWriter::vBufferFlush() {
    m_pState->m_buffer.vBufferFlush();
}

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

// The same interface for both ways, chosen once a write.
class SingleWriter {
public:
    explicit SingleWriter(std::ostream& out) : m_writer(out) {}
    IfcLineWriterInterface& writer() noexcept { return m_writer; }
    void vEnd() { m_writer.vBufferFlush(); }
    void vAbandon() noexcept {}

private:
    IfcSingleThreadedLineWriter m_writer;
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

template <class Writer>
bool boWriteSeeded(const Data& data, const WriteFile::Seed& seed, std::ostream& out, WriteError& errors,
                   bool boSingleThreaded) {
    Writer writer(out);
    std::unique_ptr<StepWriteInfoCommon> pInfo;
    vGuarded(writer, [&] {
        pInfo = std::make_unique<StepWriteInfoCommon>(data.entityIdMap(false), errors, writer.writer(),
                                                      boSingleThreaded);
        seed(*pInfo);
    });
    {
        const std::lock_guard lock(pInfo->m_mutex);
        if (pInfo->m_queue.empty()) return false;
    }
    vGuarded(writer, [&] { data.vWrite(*pInfo, {}); });
    writer.vEnd();
    return true;
}

template <class Writer>
void vWriteProject(const FileData& data, std::ostream& out, WriteError& errors, WriteFile::Progress progress,
                   bool boSingleThreaded) {
    Writer writer(out);
    vGuarded(writer, [&] { data.boWrite(writer.writer(), errors, std::move(progress), boSingleThreaded); });
    writer.vEnd();
}

}   // namespace

bool WriteFile::boWrite(const File& file, std::ostream& out, WriteError& errors, Progress progress,
                        bool boSingleThreaded) {
    out << "ISO-10303-21;" << std::endl;
    file.header().boWrite(out, errors);
    out << "DATA;" << std::endl;
    if (boSingleThreaded)
        vWriteProject<SingleWriter>(file.data(), out, errors, std::move(progress), true);
    else
        vWriteProject<ThreadedWriter>(file.data(), out, errors, std::move(progress), false);
    out << "ENDSEC;" << std::endl << "END-ISO-10303-21;" << std::endl;
    return true;
}

bool WriteFile::boWrite(const Data& data, Seed seed, std::ostream& out, WriteError& errors, bool boSingleThreaded) {
    return boSingleThreaded ? boWriteSeeded<SingleWriter>(data, seed, out, errors, true)
                            : boWriteSeeded<ThreadedWriter>(data, seed, out, errors, false);
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
