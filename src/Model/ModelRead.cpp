// SPDX-License-Identifier: Apache-2.0
#include "Model/ModelRead.h"

#include <algorithm>
#include <array>
#include <exception>
#include <istream>
#include <streambuf>
#include <string_view>

#include "Format/Ifc/IfcReadFile.h"
#include "Format/Ifc/Xml/IfcXmlImport.h"
#include "Model/Archive.h"
#include "Model/Error.h"
#include "platform/SharedBytes.h"
#include "platform/Xml.h"
#include "provider/SchemaLoader.h"

namespace oxa::detail {

namespace {

// The bytes of a stream, counted, with a look at the first of them; at the caller's wish they end early. Large reads go
// past the buffer.
class CountedBytes final : public std::streambuf, public stream::ShareableBuffer {
public:
    CountedBytes(std::istream& stream, std::optional<std::uint64_t> size, const OpenOptions& options)
        : m_source(*stream.rdbuf()),
          m_size(size),
          m_options(options) {
        underflow();
    }

    [[nodiscard]] std::string_view firstBytes() const noexcept {
        return {eback(), static_cast<std::size_t>(egptr() - eback())};
    }
    [[nodiscard]] bool boStopped() const noexcept { return m_boStopped; }
    // Where the source can. Who wants them to end early gets none from then on, at any place.
    [[nodiscard]] std::unique_ptr<stream::SharedBytes> pShare() override {
        std::unique_ptr<stream::SharedBytes> pSource = stream::pShare(m_source);
        if (!pSource) return nullptr;
        return std::make_unique<Shared>(*this, std::move(pSource));
    }
    // What was thrown where the bytes are taken: an istream between here and the reader keeps it to itself.
    void vFaultCheck() const {
        if (m_pFault) std::rethrow_exception(m_pFault);
    }

protected:
    int_type underflow() override {
        if (gptr() == egptr()) {
            const std::streamsize iRead = iTake(m_buffer.data(), static_cast<std::streamsize>(m_buffer.size()));
            setg(m_buffer.data(), m_buffer.data(), m_buffer.data() + iRead);
        }
        return gptr() == egptr() ? traits_type::eof() : traits_type::to_int_type(*gptr());
    }
    std::streamsize xsgetn(char* pTo, std::streamsize iWanted) override {
        const std::streamsize iBuffered = std::min<std::streamsize>(iWanted, egptr() - gptr());
        std::copy_n(gptr(), iBuffered, pTo);
        gbump(static_cast<int>(iBuffered));
        return iBuffered == iWanted ? iBuffered : iBuffered + iTake(pTo + iBuffered, iWanted - iBuffered);
    }

private:
    static constexpr std::uint64_t g_iProgressStep = 1 << 20;

    // Places are those of the source.
    class Shared final : public stream::SharedBytes {
    public:
        Shared(CountedBytes& bytes, std::unique_ptr<stream::SharedBytes> pSource)
            : SharedBytes(pSource->iBegin() - static_cast<std::uint64_t>(bytes.egptr() - bytes.gptr()),
                          pSource->iEnd()),
              m_bytes(bytes),
              m_pSource(std::move(pSource)),
              m_iTakenBefore(bytes.m_iDone - m_pSource->iBegin()) {}

        std::size_t iReadAt(std::uint64_t iPlace, char* pTo, std::size_t iWanted) noexcept override {
            return m_bytes.m_options.stop.stop_requested() ? 0 : m_pSource->iReadAt(iPlace, pTo, iWanted);
        }
        void vReached(std::uint64_t iPlace) override {
            m_pSource->vReached(iPlace);
            m_bytes.vGuarded([&] { m_bytes.vTell(m_iTakenBefore + iPlace, false); });
        }
        void vGoOnAt(std::uint64_t iPlace) override {
            m_pSource->vGoOnAt(iPlace);
            m_bytes.setg(m_bytes.m_buffer.data(), m_bytes.m_buffer.data(), m_bytes.m_buffer.data());
            m_bytes.m_iDone = m_iTakenBefore + iPlace;
        }

    private:
        CountedBytes& m_bytes;
        std::unique_ptr<stream::SharedBytes> m_pSource;
        std::uint64_t m_iTakenBefore;   // less the place of the source
    };

    std::streamsize iTake(char* pTo, std::streamsize iWanted) {
        std::streamsize iRead = 0;
        vGuarded([&] {
            m_boStopped = m_boStopped || m_options.stop.stop_requested();
            iRead = m_boStopped ? 0 : std::max<std::streamsize>(0, m_source.sgetn(pTo, iWanted));
            m_iDone += static_cast<std::uint64_t>(iRead);
            vTell(m_iDone, iRead < iWanted);
        });
        return iRead;
    }

    void vTell(std::uint64_t iDone, bool boEnd) {
        if (!m_options.progress || (iDone < m_iNextProgress && !boEnd)) return;
        m_iNextProgress = iDone + g_iProgressStep;
        m_options.progress({iDone, m_size});
    }

    template <class Step>
    void vGuarded(Step&& step) try {
        step();
    } catch (...) {
        m_pFault = std::current_exception();
        m_boStopped = true;
        throw;
    }

    std::streambuf& m_source;
    std::optional<std::uint64_t> m_size;
    const OpenOptions& m_options;
    std::array<char, 16384> m_buffer{};
    std::uint64_t m_iDone = 0;
    std::uint64_t m_iNextProgress = 0;
    bool m_boStopped = false;
    std::exception_ptr m_pFault;
};

// ifcXML with the reason why a document can't be read.
class XmlDocument final : public ifc::xml::Import, private xml::ExceptionInterface {
public:
    // Empty: it was read.
    std::string sLoad(std::istream& stream, const std::string& sName) {
        if (m_pFile->parse(stream, sName, this)) return {};
        return m_sFault.empty() ? "no root element" : m_sFault;
    }

private:
    void vFault(std::string_view, std::string_view sText, std::size_t iOffset) override {
        if (!m_sFault.empty()) return;
        m_sFault = sText;
        if (iOffset) m_sFault += " (byte " + std::to_string(iOffset) + ")";
    }

    std::string m_sFault;
};

bool boBeginsAsXml(std::string_view bytes) {
    using namespace std::string_view_literals;
    const std::size_t iFirst = bytes.find_first_not_of("\xEF\xBB\xBF\xFE\xFF\0 \t\r\n"sv);
    return iFirst != std::string_view::npos && bytes[iFirst] == '<';
}

// What a read of the simple form begins with, until the file names its own.
const ifc::def::SchemaPset& noSchema() {
    static const auto* const pNone = [] {
        auto* pSchema = new ifc::def::SchemaPset("");
        pSchema->vFinish();
        return pSchema;
    }();
    return *pNone;
}

struct Reader {
    CountedBytes& bytes;
    const std::string& sName;
    const OpenOptions& options;
    std::istream stream{&bytes};
    ReadResult result{nullptr, ifc::io::ReadError::pAllocate(), false};

    [[noreturn]] void vRefuse(const std::string& sText) const { throw FileError(sName + ": " + sText); }

    void vStep() {
        result.pFile = std::make_unique<ifc::File>();
        vScan();
    }

    void vSimple() {
        auto pFile = std::make_unique<ifc::FileSimple>(noSchema());
        if (!pFile->header().boRead(stream, *result.pErrors)) vRefuse("the head of the simple form is cut");
        const std::string sSchema = pFile->header().sSchemaNameGet();
        const ifc::def::SchemaPset* pSchema = ifc::SchemaLoader::pSchemaGet(options.schema, sSchema);
        if (!pSchema) vRefuse("names the schema " + sSchema + ", which is not known");
        pFile->vSchemaSet(*pSchema);
        result.pFile = std::move(pFile);
        vScan();
    }

    void vScan() {
        const bool boRead = ifc::io::ReadFile::boRead(*result.pFile, stream, *result.pErrors,
                                                      {.schemaFromName = options.schema,
                                                       .boKeepIds = true,
                                                       .boSingleThreaded = options.threads == 1,
                                                       .boSettlePart = true});
        result.boWhole = boRead && result.pErrors->records().empty() && result.pErrors->lostStatements().iCount == 0 &&
                         result.pErrors->passedOver().iCount == 0;
    }

    void vXml() {
        static std::mutex mutex;   // an import has tables of the whole process
        const std::lock_guard lock(mutex);
        XmlDocument document;
        if (const std::string sFault = document.sLoad(stream, sName); !sFault.empty() && !bytes.boStopped())
            vRefuse("can't be read as XML: " + sFault);
        auto pFile = std::make_unique<ifc::File>();
        if (bytes.boStopped()) return;
        if (!document.boImportHeader(*pFile, options.schema))
            vRefuse("is XML, but has no ifcXML namespace of a known schema at its root");
        document.boImportData(pFile->data());
        ifc::FileHeader& header = pFile->header();
        if (header.description.descriptions.empty()) header.description.descriptions = {{}};   // ISO 10303-21, 8.2.1
        if (header.name.author.empty()) header.name.author = {{}};
        if (header.name.organization.empty()) header.name.organization = {{}};
        result.pFile = std::move(pFile);
    }

    // A model without a schema is none: nothing can be asked of it.
    void vCheck() const {
        bytes.vFaultCheck();
        if (bytes.boStopped()) throw Stopped(sName + ": the read was stopped");
        if (result.pFile->dataBase().pSchema()) return;
        const auto& records = result.pErrors->records();
        const auto fatal = std::ranges::find(records, ifc::Errors::Fatal, &ifc::ErrorRecord::severity);
        vRefuse(fatal != records.end() ? fatal->description : "is no IFC file, or names no schema");
    }
};

}   // namespace

namespace {

ReadResult plainRead(std::istream& stream, const std::string& sName, std::optional<std::uint64_t> size,
                     const OpenOptions& options) {
    CountedBytes bytes(stream, size, options);
    Reader reader{bytes, sName, options};
    if (bytes.firstBytes().empty() && !bytes.boStopped()) reader.vRefuse("is empty");
    if (boBeginsAsXml(bytes.firstBytes()))
        reader.vXml();
    else if (bytes.firstBytes().starts_with("Ifc file simple"))
        reader.vSimple();
    else
        reader.vStep();
    reader.vCheck();
    return std::move(reader.result);
}

void vFaultCheck(const Unpacked& unpacked) {
    if (unpacked.fault().empty()) return;
    throw FileError(unpacked.fault() + (unpacked.beyondLimits() ? "; OpenOptions::unpack has the limits" : ""));
}

// What is wrong with the archive is the reason for whatever the text inside of it lacks.
ReadResult packedRead(Unpacked& unpacked, const std::string& sName, const OpenOptions& options) {
    vFaultCheck(unpacked);
    try {
        std::istream inside(&unpacked.bytes());
        ReadResult result = plainRead(inside, sName, unpacked.size(), options);
        while (unpacked.bytes().sbumpc() != std::streambuf::traits_type::eof())
            continue;   // its check sum is behind it
        vFaultCheck(unpacked);
        return result;
    } catch (const FileError&) {
        vFaultCheck(unpacked);
        throw;
    }
}

}   // namespace

ReadResult modelRead(std::istream& stream, const std::string& sName, std::optional<std::uint64_t> size,
                     const OpenOptions& options, const std::filesystem::path& path) try {
    if (!stream.good() || !stream.rdbuf()) throw FileError(sName + ": is no stream that can be read");
    // Only what may be packed is looked at twice.
    const int iFirst = stream.rdbuf()->sgetc();
    if (iFirst != 'P' && iFirst != 0x1f) return plainRead(stream, sName, size, options);
    const OpenOptions quiet;   // progress and stop are of what is inside
    CountedBytes bytes(stream, size, quiet);
    const Packing packing = packingOf(bytes.firstBytes());
    if (packing == Packing::None) {
        std::istream plain(&bytes);
        return plainRead(plain, sName, size, options);
    }
    Unpacked unpacked(packing, bytes, sName, path, options.unpack);
    return packedRead(unpacked, sName, options);
} catch (const std::ios_base::failure& failure) {
    throw FileError(sName + ": can't be read: " + failure.code().message());
}

ReadResult modelNew(ifc::def::SchemaPset& schema) {
    auto pFile = std::make_unique<ifc::File>();
    pFile->vSchemaSet(schema);
    pFile->header().description.descriptions = {{}};   // ISO 10303-21, 8.2.1: one at least
    pFile->header().name.vInit({}, {}, {}, {});
    return {std::move(pFile), nullptr, true};
}

}   // namespace oxa::detail
