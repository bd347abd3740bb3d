// SPDX-License-Identifier: Apache-2.0
// Streams that break: each call of a stream's buffer in turn fails, by its answer or by an exception.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <streambuf>

#include "../Format/Ifc/AssertLog.h"
#include "../Format/Ifc/ModelText.h"
#include "Fixtures.h"
#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/Xml/IfcXmlExport.h"
#include "Format/Ifc/Xml/IfcXmlImport.h"
#include "provider/SchemaLoader.h"

namespace oxa::ifc {
namespace {

struct Fault {
    const char* sRule;
    bool boThrows;   // the buffer throws; else its answer is "no"
    bool boAsked;    // the stream was asked to throw when it goes bad
};
const Fault g_faults[] = {
    {"no answer", false, false},
    {"no answer, asked to throw", false, true},
    {"a throw", true, false},
    {"a throw, asked to throw", true, true},
};

struct Broken : std::runtime_error {
    Broken() : std::runtime_error("broken") {}
};

// Gives a text in pieces, takes a text in pieces; the call with the number iFaulty, from 0, and all later ones fail.
class BreakingBuffer : public std::streambuf {
public:
    BreakingBuffer(std::string sInput, std::size_t iFaulty, bool boThrows)
        : m_sInput(std::move(sInput)),
          m_iFaulty(iFaulty),
          m_boThrows(boThrows) {}
    [[nodiscard]] bool boBroken() const noexcept { return m_iCalls > m_iFaulty; }
    [[nodiscard]] const std::string& sOutput() const noexcept { return m_sOutput; }

private:
    static constexpr std::size_t g_iPiece = 97;

    bool boFails() {
        if (m_iCalls++ < m_iFaulty) return false;
        if (m_boThrows) throw Broken();
        return true;
    }
    int_type underflow() override {
        if (m_iNext == m_sInput.size() || boFails()) return traits_type::eof();
        const std::size_t iPiece = std::min(g_iPiece, m_sInput.size() - m_iNext);
        setg(m_sInput.data() + m_iNext, m_sInput.data() + m_iNext, m_sInput.data() + m_iNext + iPiece);
        m_iNext += iPiece;
        return traits_type::to_int_type(*gptr());
    }
    int_type overflow(int_type c) override {
        if (boFails()) return traits_type::eof();
        m_sOutput += traits_type::to_char_type(c);
        return c;
    }
    std::streamsize xsputn(const char* pBytes, std::streamsize iCount) override {
        if (boFails()) return 0;
        m_sOutput.append(pBytes, static_cast<std::size_t>(iCount));
        return iCount;
    }
    int sync() override { return boFails() ? -1 : 0; }

    std::string m_sInput;
    std::string m_sOutput;
    std::size_t m_iNext = 0;
    std::size_t m_iFaulty;
    std::size_t m_iCalls = 0;
    bool m_boThrows;
};

// Runs "work" on a stream that breaks at its first call, then at its second, until it does not break any more. Work
// throws only what the stream does, and boTold says whether it threw.
template <class Stream, class Work>
void vAtEachCall(const std::string& sInput, const Work& work) {
    const AssertLog log(false);
    for (const Fault& fault : g_faults) {
        SCOPED_TRACE(fault.sRule);
        bool boBroken = true;
        for (std::size_t i = 0; boBroken; ++i) {
            SCOPED_TRACE(i);
            BreakingBuffer buffer(sInput, i, fault.boThrows);
            Stream stream(&buffer);
            if (fault.boAsked) stream.exceptions(std::ios::badbit | std::ios::failbit);
            work(stream, buffer);
            boBroken = buffer.boBroken();
            if (testing::Test::HasFailure()) return;
        }
    }
}

// True when it threw.
bool boThrew(const std::function<void()>& work) {
    try {
        work();
        return false;
    } catch (const Broken&) {
        return true;
    } catch (const std::ios::failure&) {
        return true;
    }
}

void vUse(const Data& data) {
    std::ostringstream out;
    io::WriteError errors;
    data.boWrite(out, errors, true);
}

TEST(StreamBreaks, InAReadOfAFile) {
    for (const bool boSingleThreaded : {true, false}) {
        SCOPED_TRACE(boSingleThreaded);
        vAtEachCall<std::istream>(g_sSmallFile, [&](std::istream& in, const BreakingBuffer&) {
            File file;
            io::ReadError errors;
            bool boRead = false;
            const bool boTold = boThrew([&] { boRead = file.boRead(in, {}, errors, true, {}, boSingleThreaded); });
            EXPECT_TRUE(boTold || boRead == errors.records().empty());
            EXPECT_TRUE(!boRead || file.data().entities().size() == 14);
            vUse(file.data());
        });
    }
}

TEST(StreamBreaks, InAReadOfASimpleFile) {
    std::string sText = "Ifc file simple;\nIFC4;\n*;\n";
    for (int i = 1; i < 100; ++i) sText += '#' + std::to_string(i) + "=IFCCARTESIANPOINT((1.,2.));\n";
    vAtEachCall<std::istream>(sText, [&](std::istream& in, const BreakingBuffer&) {
        FileSimple file(*SchemaLoader::pBuiltIn("IFC4"));
        io::ReadError errors;
        boThrew([&] { file.boRead(in, {}, errors, {}, true); });
        vUse(file.data());
    });
}

TEST(StreamBreaks, InAnImport) {
    const std::string sText = sFileBytes(std::filesystem::path(OXA_SOURCE_DIR) / "fuzz/seeds/XmlDocument/whole.ifcxml");
    vAtEachCall<std::istream>(sText, [&](std::istream& in, const BreakingBuffer& buffer) {
        File file;
        xml::Import import;
        bool boGood = false;
        const bool boTold = boThrew(
            [&] { boGood = import.boLoad(in) && import.boImportHeader(file, {}) && import.boImportData(file.data()); });
        EXPECT_EQ(boGood, !boTold && !buffer.boBroken());
        vUse(file.data());
    });
}

struct WriteRow {
    const char* sRule;
    std::function<bool(const File&, std::ostream&)> write;
};
const WriteRow g_writeRows[] = {
    {"a file",
     [](const File& file, std::ostream& out) {
         io::WriteError errors;
         return file.boWrite(out, errors, {}, true);
     }},
    {"a file, threaded",
     [](const File& file, std::ostream& out) {
         io::WriteError errors;
         return file.boWrite(out, errors, {}, false);
     }},
    {"data, threaded",
     [](const File& file, std::ostream& out) {
         io::WriteError errors;
         return file.data().boWrite(out, errors, false);
     }},
    {"an export",
     [](const File& file, std::ostream& out) {
         xml::Export xmlExport;
         return xmlExport.boExportHeader(file.header()) && xmlExport.boExportData(file.data(), {}) &&
                xmlExport.boSave(out);
     }},
    {"reports",
     [](const File&, std::ostream& out) {
         io::WriteError errors;
         for (unsigned i = 0; i < 5; ++i)
             errors.add(nullptr, Errors::Error, Errors::Value, "Error_UnknownEntityType", "IFCX", "#1=IFCX();", i);
         errors.vErrorsWrite(out);
         return errors.writeReport("{{ filename }}{% for c in categories %}{{ c.description }}{% endfor %}", out, "a");
     }},
};

// Whoever looks at the answer, at the stream or at the exception knows that something is missing.
TEST(StreamBreaks, InAWrite) {
    ReadFileModel model(sFileBytes(std::filesystem::path(OXA_SOURCE_DIR) / "examples/house-ifc4.ifc"), true, {});
    ASSERT_TRUE(model.boRead);
    for (const WriteRow& row : g_writeRows) {
        SCOPED_TRACE(row.sRule);
        std::ostringstream whole;
        ASSERT_TRUE(row.write(model.file, whole));
        vAtEachCall<std::ostream>("", [&](std::ostream& out, const BreakingBuffer& buffer) {
            bool boWritten = false;
            const bool boTold = boThrew([&] { boWritten = row.write(model.file, out); }) || !boWritten || !out;
            EXPECT_EQ(boTold, buffer.boBroken());
            EXPECT_TRUE(boTold || buffer.sOutput().size() == whole.str().size());
        });
    }
}

}   // namespace
}   // namespace oxa::ifc
