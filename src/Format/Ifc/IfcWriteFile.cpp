#include "Format/Ifc/IfcWriteFile.h"

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

void IfcSingleThreadedLineWriter::vBufferFlush() {
    m_pState->m_buffer.vBufferFlush();
}

ThreadStringPool::ThreadStringPool() = default;

ThreadStringPool::~ThreadStringPool() = default;

std::size_t ThreadStringPool::iLineAdd(std::string& line, unsigned id) {
    std::unique_lock lock(m_mutex);
    while (m_iCount == g_iLines) {
        lock.unlock();
        std::this_thread::yield();
        lock.lock();
    }
    Record& record = m_lines[m_iCount];
    std::swap(record.m_line, line);
    record.m_iId = id;
    return ++m_iCount;
}

void ThreadStringPool::vFinish() {
    m_boFinished.exchange(true);
}

ThreadStringPool::Take ThreadStringPool::take(std::string& line) {
    const std::lock_guard lock(m_mutex);
    if (m_iCount == 0) return m_boFinished ? Take::Finished : Take::Nothing;
    std::swap(line, m_lines[--m_iCount].m_line);
    return Take::Line;
}

namespace {

// Statements through a pool to a consumer thread, which starts at once.
class ThreadedWriter {
public:
    explicit ThreadedWriter(std::ostream& out) : m_buffer(out), m_consumer([this] { vConsume(); }) {}

    IfcLineWriterInterface& writer() noexcept { return m_pool; }

    // After vFinish: waits for the consumer, then writes the rest out.
    void vEnd() {
        m_consumer.join();
        m_buffer.vBufferFlush();
    }

private:
    void vConsume() {
        std::string line;
        for (;;) {
            switch (m_pool.take(line)) {
            case ThreadStringPool::Take::Finished: return;
            case ThreadStringPool::Take::Nothing: std::this_thread::yield(); break;
            case ThreadStringPool::Take::Line:
                if (line.empty()) break;
                m_buffer.vWrite(line);
                m_buffer.vWrite('\n');
            }
        }
    }

    stream::StreamWriteBuffer m_buffer;
    ThreadStringPool m_pool;
    std::thread m_consumer;
};

// The same interface for both ways, chosen once a write.
class SingleWriter {
public:
    explicit SingleWriter(std::ostream& out) : m_writer(out) {}
    IfcLineWriterInterface& writer() noexcept { return m_writer; }
    void vEnd() { m_writer.vBufferFlush(); }

private:
    IfcSingleThreadedLineWriter m_writer;
};

template <class Writer>
bool boWriteSeeded(const Data& data, const WriteFile::Seed& seed, std::ostream& out, WriteError& errors,
                   bool boSingleThreaded) {
    Writer writer(out);
    const auto pInfo = std::make_unique<StepWriteInfoCommon>(data.entityIdMap(false), errors, writer.writer(),
                                                             boSingleThreaded);
    seed(*pInfo);
    {
        const std::lock_guard lock(pInfo->m_mutex);
        if (pInfo->m_queue.empty()) return false;
    }
    data.vWrite(*pInfo, {});
    writer.vEnd();
    return true;
}

template <class Writer>
void vWriteProject(const FileData& data, std::ostream& out, WriteError& errors, WriteFile::Progress progress,
                   bool boSingleThreaded) {
    Writer writer(out);
    data.boWrite(writer.writer(), errors, std::move(progress), boSingleThreaded);
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
