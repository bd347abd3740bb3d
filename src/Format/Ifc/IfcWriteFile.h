// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcWriteFile: the frame of an exchange structure (ISO 10303-21), and the way statements reach a stream.
///
/// - Callers: File::boWrite, FileSimple::boWrite, Data::boWrite, and library users with seeds of their own.
/// - Threads: composing threads hand finished statements to one line writer; one of them at a time touches the stream.
/// - Errors: a failing stream is not noticed here: the caller looks at its state. Faults of statements are records in
///   the errors; the file is complete all the same.
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <mutex>
#include <string>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/Write/WriteContext.h"
#include "platform/Export.h"
#include "platform/Stream.h"

namespace oxa::ifc::io {

/// Where finished statements go.
class OXA_IFC_API IfcLineWriterInterface {
public:
    virtual ~IfcLineWriterInterface();
    /// Takes one statement without its line end. May swap the string's storage: afterwards "line" is undefined, but
    /// reusable. The count that it answers is of no further use.
    virtual std::size_t iLineAdd(std::string& line, unsigned id) = 0;
    /// No further lines will come.
    virtual void vFinish() = 0;

protected:
    IfcLineWriterInterface() = default;
    IfcLineWriterInterface(const IfcLineWriterInterface&) = delete;
    IfcLineWriterInterface& operator=(const IfcLineWriterInterface&) = delete;
};

/// Statements straight to a stream, on one thread; each with one LF byte. The buffer goes out when the writer dies or
/// by vBufferFlush.
class OXA_IFC_API IfcSingleThreadedLineWriter final : public IfcLineWriterInterface {
public:
    /// The stream is not owned and must outlive the writer.
    explicit IfcSingleThreadedLineWriter(std::ostream& out);
    ~IfcSingleThreadedLineWriter() override;

    std::size_t iLineAdd(std::string& line, unsigned id) override;
    void vFinish() override;
    /// Hands to the stream what is buffered.
    void vBufferFlush();

private:
    struct State {
        stream::StreamWriteBuffer m_buffer;
        std::uint32_t m_iLines = 0;
    };
    std::unique_ptr<State> m_pState;
};

/// Fifteen statements between composing threads and a consumer of the caller's: a stack, so the newest leaves first.
class OXA_IFC_API ThreadStringPool final : public IfcLineWriterInterface {
public:
    static constexpr std::size_t g_iLines = 15;   ///< how many statements fit in

    ThreadStringPool();
    ~ThreadStringPool() override;

    /// Waits while the pool is full. Swaps the text in; the producer gets an old buffer back.
    std::size_t iLineAdd(std::string& line, unsigned id) override;
    void vFinish() override;

    /// What take() found.
    enum class Take {
        Line,      ///< a statement
        Nothing,   ///< none by now
        Finished   ///< none, and none will come
    };
    /// For the consumer: swaps the newest statement out.
    [[nodiscard]] Take take(std::string& line);
    /// The same, and waits for one; false when the pool is empty and nothing will come any more.
    [[nodiscard]] bool boTakeWait(std::string& line);

private:
    struct Record {
        std::string m_line;
        std::uint32_t m_iId = 0;
    };
    void vSwapOut(std::string& line);

    std::array<Record, g_iLines> m_lines;   // guarded by m_mutex
    std::size_t m_iCount = 0;               // guarded by m_mutex
    std::mutex m_mutex;
    std::condition_variable m_notFull;
    std::condition_variable m_notEmpty;   // or finished
    std::atomic<bool> m_boFinished{false};
};

/// One write, as a function: of a file, of all data, of one entity, or of what a caller names.
class OXA_IFC_API WriteFile {
public:
    /// As WriteProgress; may be empty.
    using Progress = std::function<void(unsigned)>;
    /// Queues the entities that a write begins with: asking for an entity's number queues it. Called once, on the
    /// caller's thread.
    using Seed = std::function<void(StepWriteInfoCommon&)>;

    ///@{
    /// A whole file: frame, header, and all that the project reaches. Always true.
    static bool boWrite(const File& file, std::ostream& out, WriteError& errors, Progress progress,
                        bool boSingleThreaded);
    static bool boWrite(const File& file, std::ostream& out, WriteError& errors, const WriteOptions& options);
    ///@}
    ///@{
    /// Data lines without any frame: of all entities; of one and what it reaches; of what "seed" queues. False when
    /// nothing was queued; with boSingleThreaded false that is a mistake of the caller's which ends the process.
    static bool boWrite(const Data& data, std::ostream& out, WriteError& errors, bool boSingleThreaded);
    static bool boWrite(const Data& data, const Entity* pEntity, std::ostream& out, WriteError& errors,
                        bool boSingleThreaded);
    static bool boWrite(const Data& data, Seed seed, std::ostream& out, WriteError& errors, bool boSingleThreaded);
    ///@}
    /// Data lines of one entity and what it reaches, or of all for null. False when there is nothing to write.
    static bool boWrite(const Data& data, const Entity* pEntity, std::ostream& out, WriteError& errors,
                        const WriteOptions& options);
    ///@{
    /// The same as a file with that header, which need not be the one that the data came with: an exchange structure
    /// with its frame, always true; or the short form, false where its head can't be written.
    static bool boWrite(const FileHeader& header, const Data& data, const Entity* pEntity, std::ostream& out,
                        WriteError& errors, const WriteOptions& options);
    static bool boWrite(const FileHeaderSimple& header, const Data& data, const Entity* pEntity, std::ostream& out,
                        WriteError& errors, const WriteOptions& options);
    ///@}
};

}   // namespace oxa::ifc::io
