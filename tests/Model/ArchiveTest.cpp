// SPDX-License-Identifier: Apache-2.0
// Packed models: read from files, streams and buffers, written, and what is said of archives that hold none, or too much.
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "Model/Archive.h"
#include "Model/ModelText.h"
#include "PackedText.h"

namespace oxa::test {

namespace fs = std::filesystem;

namespace {

std::string sModel() { return fileText("IFC4", "#1=IFCWALL('0000000000000000000001',$,'W',$,$,$,$,$,$);\n"); }
const std::string g_sPlain = sModel();

std::string sPacked(Packing packing, std::string_view text, std::string_view inside = "a.ifc") {
    std::ostringstream out;
    Packer packer(out, packing, inside);
    packer.stream() << text;
    packer.finish();
    return out.str();
}

std::string sUnpacked(const std::string& sBytes, const UnpackLimits& limits = {}) {
    std::istringstream packed(sBytes);
    Unpacked unpacked(packingOf(sBytes), *packed.rdbuf(), "x", {}, limits);
    std::string sText(std::size_t{65} << 20, '\0');
    const std::streamsize iRead = unpacked.bytes().sgetn(sText.data(), static_cast<std::streamsize>(sText.size()));
    sText.resize(static_cast<std::size_t>(iRead));
    return unpacked.fault().empty() ? sText : "fault: " + unpacked.fault();
}

// "1 element" or what was thrown.
std::string sOpened(const std::string& sBytes, const OpenOptions& options = {}) {
    std::string sSize;
    const std::string sText =
        sThrown([&] { sSize = std::to_string(Model::fromBuffer(sBytes, options).size()) + " element"; });
    return sText == "nothing" ? sSize : sText;
}

TEST(Archive, IsToldByItsFirstBytesAndWrittenByItsName) {
    const struct {
        const char* sRule;
        std::string sBytes;
        Packing packing;
    } bytes[] = {
        {"gzip", "\x1f\x8b\x08", Packing::Gzip},
        {"ZIP", "PK\x03\x04", Packing::Zip},
        {"ZIP without a file", "PK\x05\x06", Packing::Zip},
        {"ZIP in parts", "PK\x07\x08", Packing::Zip},
        {"half of a mark", "\x1f", Packing::None},
        {"letters", "PK is a text", Packing::None},
        {"nothing", "", Packing::None},
    };
    for (const auto& row : bytes) EXPECT_EQ(packingOf(row.sBytes), row.packing) << row.sRule;
    const struct {
        const char* sPath;
        Packing packing;
        const char* sInside;
    } names[] = {
        {"a.ifc.gz", Packing::Gzip, "a.ifc"}, {"x/a.ifcXML.GZ", Packing::Gzip, "x/a.ifcXML"},
        {"a.ifczip", Packing::Zip, "a.ifc"},  {"a.b.IfcZip", Packing::Zip, "a.b.ifc"},
        {"a.ifc", Packing::None, "a.ifc"},    {"agz", Packing::None, "agz"},
        {".gz", Packing::None, ".gz"},        {"a.zip", Packing::None, "a.zip"},
    };
    for (const auto& row : names) {
        EXPECT_EQ(packingOfName(row.sPath), row.packing) << row.sPath;
        EXPECT_EQ(unpackedName(row.sPath), row.sInside);
    }
    EXPECT_EQ(unpackedName("a.ifczip", ".ifcxml"), "a.ifcxml");
}

TEST(Archive, IsOpenedFromBufferStreamAndFile) {
    const fs::path path = fs::path(testing::TempDir()) / ("archive-" + Model("IFC4").create("IfcWall").guid() + ".bin");
    for (const std::string& sBytes :
         {sPacked(Packing::Gzip, g_sPlain), sPacked(Packing::Zip, g_sPlain), sGzip(g_sPlain),
          sZip({{"a.ifc", g_sPlain}}), sGzip(g_sPlain.substr(0, 100)) + sGzip(g_sPlain.substr(100)),
          sGzip(g_sPlain) + std::string(512, '\0'), sZip({{"a.ifc", g_sPlain}}) + "trailing bytes",
          sZip({{"../../etc/a.ifc", g_sPlain}}), sZip({{"no end", g_sPlain}}),
          sZip({{"a/", ""},
                {"a/b.png", "PNG"},
                {"a/c.IFC", g_sPlain},
                {"__MACOSX/a/._c.ifc", "junk"},
                {"c.xml", ""}})}) {
        EXPECT_EQ(Model::fromBuffer(sBytes).byId(1).text("Name"), "W");
        EXPECT_TRUE(Model::fromBuffer(sBytes).whole());
        std::istringstream stream(sBytes);
        EXPECT_EQ(Model::open(stream).byId(1).text("Name"), "W");
        std::ofstream(path, std::ios::binary) << sBytes;
        EXPECT_EQ(Model::open(path).byId(1).text("Name"), "W");
    }
    fs::remove(path);
}

TEST(Archive, TextsThatOnlyBeginLikeOneArePlain) {
    EXPECT_EQ(sOpened("PK " + g_sPlain), "1 element");
    EXPECT_EQ(sOpened("P"), sOpened("Q"));
}

// One whose list, at its end, has the size of the model one byte too large, or too small.
std::string sOtherSize(int iMore) {
    std::string sBytes = sPacked(Packing::Zip, g_sPlain);
    char& size = sBytes.at(sBytes.find("PK\x01\x02") + 24);   // APPNOTE, 4.3.12: uncompressed size, low byte first
    size = static_cast<char>(size + iMore);
    return sBytes;
}

TEST(Archive, OfOneModelAloneIsRead) {
    const std::string sNested = sPacked(Packing::Gzip, g_sPlain);
    const std::string sLong(200, 'n');
    const std::string sDirty = "a\nb.ifc";
    const struct {
        const char* sRule;
        std::string sBytes;
        std::string sError;
    } rows[] = {
        {"nothing", sZip({}), "is a ZIP archive with nothing in it"},
        {"only a folder", sZip({{"a/", ""}}), "is a ZIP archive with nothing in it"},
        {"no model", sZip({{"a.png", "x"}, {"b.pdf", "y"}}), "is a ZIP archive without a model; it holds a.png, b.pdf"},
        {"two", sZip({{"a.ifc", g_sPlain}, {"b.ifcxml", g_sPlain}}),
         "is a ZIP archive with several models, a.ifc, b.ifcxml; unpack it and name one"},
        {"many",
         sZip({{"1.ifc", "x"},
               {"2.ifc", "x"},
               {"3.ifc", "x"},
               {"4.ifc", "x"},
               {"5.ifc", "x"},
               {"6.ifc", "x"},
               {"7.ifc", "x"}}),
         "is a ZIP archive with several models, 1.ifc, 2.ifc, 3.ifc, 4.ifc, 5.ifc and 2 more; unpack it and name one"},
        {"names of two lines", sZip({{sDirty, "x"}, {sLong, "y"}, {"b.ifc", "z"}}),
         "is a ZIP archive with several models, a?b.ifc, b.ifc; unpack it and name one"},
        {"long names", sZip({{sLong, "y"}, {"b", "z"}}),
         "is a ZIP archive without a model; it holds " + sLong.substr(0, 80) + "..., b"},
        {"encrypted", sZip({{"a.ifc", g_sPlain, 1}}),
         "is a ZIP archive whose a.ifc is encrypted; unpack it and name the file inside"},
        {"another method", sZip({{"a.ifc", g_sPlain, 0, 98}}),
         "is a ZIP archive whose a.ifc is compressed by method 98, which is not read here; unpack it and name the file "
         "inside"},
        {"a wrong check sum", sZip({{"a.ifc", g_sPlain, 0, 0, true}}),
         "is a ZIP archive whose a.ifc is damaged: its check sum is that of other bytes"},
        {"a size too large", sOtherSize(1),
         "is a ZIP archive whose a.ifc is damaged: it has " + std::to_string(g_sPlain.size()) +
             " bytes, the list says " + std::to_string(g_sPlain.size() + 1)},
        {"a size too small", sOtherSize(-1),
         "is a ZIP archive whose a.ifc is damaged: it has " + std::to_string(g_sPlain.size()) +
             " bytes, the list says " + std::to_string(g_sPlain.size() - 1)},
        {"no deflated bytes", sZip({{"a.ifc", g_sPlain, 0, 8}}), "is a ZIP archive whose a.ifc was cut or is damaged"},
        {"empty", sZip({{"a.ifc", ""}}), "holds a.ifc, which is empty"},
        {"packed twice", sZip({{"a.ifc", sNested}}), "holds a.ifc, which is packed once more; unpack it"},
        {"gzip in gzip", sGzip(sNested), "holds buffer, which is packed once more; unpack it"},
        {"an empty gzip", sGzip(""), "holds buffer, which is empty"},
        {"gzip with something else behind", sGzip(g_sPlain) + "and more",
         "is compressed with gzip, and what follows at byte " + std::to_string(sGzip(g_sPlain).size() + 2) + " is not"},
        {"gzip with a wrong check sum", sGzip(g_sPlain).substr(0, sGzip(g_sPlain).size() - 8) + std::string(8, 'x'),
         "is compressed with gzip and damaged: its check sum is that of other bytes"},
        {"no gzip behind its mark", "\x1f\x8b is a text", "is compressed with gzip and damaged at byte 4"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(sOpened(row.sBytes), "FileError: buffer: " + row.sError);
    }
}

// Wherever it was cut: the archive is the reason, not what its text lacks.
TEST(Archive, CutIsToldAtEveryPlace) {
    const std::string sGz = sPacked(Packing::Gzip, g_sPlain);
    for (std::size_t i = 2; i < sGz.size(); ++i)
        EXPECT_EQ(sOpened(sGz.substr(0, i)),
                  "FileError: buffer: is compressed with gzip and was cut: its end is missing")
            << i;
    const std::string sZipped = sPacked(Packing::Zip, g_sPlain);
    for (std::size_t i = 4; i < sZipped.size(); ++i)
        EXPECT_EQ(sOpened(sZipped.substr(0, i)), "FileError: buffer: is a ZIP archive that was cut or is damaged: the "
                                                 "list of its files, at its end, is missing")
            << i;
}

// One wrong byte gives the same model, where it does not count, or one line.
TEST(Archive, DamageNeverPasses) {
    for (const Packing packing : {Packing::Gzip, Packing::Zip}) {
        const std::string sWhole = sPacked(packing, g_sPlain);
        for (std::size_t i = 4; i < sWhole.size(); ++i) {
            std::string sBytes = sWhole;
            sBytes[i] = static_cast<char>(sBytes[i] ^ 0x10);
            const std::string sResult = sOpened(sBytes);
            EXPECT_TRUE(sResult == "1 element" || sResult.starts_with("FileError: buffer: ")) << i << ' ' << sResult;
        }
    }
}

TEST(Archive, HoldsNoMoreThanTheLimits) {
    const std::string sGz = sGzip(g_sPlain);
    const std::string sZipped = sZip({{"a.ifc", g_sPlain}});
    OpenOptions options;
    options.unpack.bytes = g_sPlain.size();
    EXPECT_EQ(sOpened(sGz, options), "1 element");
    EXPECT_EQ(sOpened(sZipped, options), "1 element");
    const std::string sSize = std::to_string(--options.unpack.bytes);
    const std::string sEnd = ", more than a model needs; OpenOptions::unpack has the limits";
    EXPECT_EQ(sOpened(sGz, options), "FileError: buffer: holds more than " + sSize + " bytes" + sEnd);
    EXPECT_EQ(sOpened(sZipped, options),
              "FileError: buffer: holds " + std::to_string(g_sPlain.size()) + " bytes" + sEnd);
}

// The ratio counts beyond 64 MiB alone: a little may well stand for that.
TEST(Archive, HoldsNoMoreThanTheRatio) {
    const std::size_t iFree = std::size_t{64} << 20;
    for (const Packing packing : {Packing::Gzip, Packing::Zip}) {
        const std::string sSmall = sPacked(packing, std::string(iFree, ' '));
        EXPECT_EQ(sUnpacked(sSmall).size(), iFree);
        const std::string sBomb = sPacked(packing, std::string(iFree + (1 << 17), ' '));
        EXPECT_EQ(sUnpacked(sBomb), "fault: x: holds more than 200 times its bytes, more than a model needs");
        EXPECT_EQ(sUnpacked(sBomb, UnpackLimits::none()).size(), iFree + (1 << 17));
    }
}

TEST(Archive, ProgressIsOfWhatIsInside) {
    std::uint64_t iDone = 0;
    std::optional<std::uint64_t> total;
    OpenOptions options;
    options.progress = [&](const Progress& progress) {
        EXPECT_GE(progress.done, iDone);
        iDone = progress.done;
        total = progress.total;
    };
    EXPECT_EQ(sOpened(sZip({{"a.ifc", g_sPlain}}), options), "1 element");
    EXPECT_EQ(iDone, g_sPlain.size());
    EXPECT_EQ(total, g_sPlain.size());
    iDone = 0;
    EXPECT_EQ(sOpened(sGzip(g_sPlain), options), "1 element");
    EXPECT_EQ(iDone, g_sPlain.size());
    EXPECT_EQ(total, std::nullopt);
}

TEST(Archive, BeginsAgain) {
    for (const std::string& sBytes : {sGzip(g_sPlain), sZip({{"a.ifc", g_sPlain}})}) {
        std::istringstream packed(sBytes);
        Unpacked unpacked(packingOf(sBytes), *packed.rdbuf(), "x");
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(std::string(std::istreambuf_iterator<char>(&unpacked.bytes()), {}), g_sPlain);
            packed.clear();
            packed.seekg(0);
            unpacked.restart();
        }
    }
}

TEST(Archive, IsTheSameEachTime) {
    EXPECT_EQ(sPacked(Packing::Gzip, g_sPlain).substr(0, 10), std::string("\x1f\x8b\x08\0\0\0\0\0\0\xff", 10));
    const std::string sZipped = sPacked(Packing::Zip, g_sPlain, "\xc3\xa4.ifc");
    EXPECT_EQ(sZipped.substr(0, 14), std::string("PK\x03\x04\x14\0\x08\x08\x08\0\0\0\x21\0", 14));
    EXPECT_EQ(sZipped.substr(30, 6), "\xc3\xa4.ifc");
    std::istringstream packed(sZipped);
    EXPECT_EQ(Unpacked(Packing::Zip, *packed.rdbuf(), "x").inside(), "\xc3\xa4.ifc");
}

// Takes so many bytes.
struct FullBuffer final : std::streambuf {
    explicit FullBuffer(std::size_t iRoom) : m_iRoom(iRoom) {}
    int_type overflow(int_type c) override { return m_iRoom-- ? traits_type::not_eof(c) : traits_type::eof(); }
    std::size_t m_iRoom;
};

TEST(Archive, FailsWhereItsStreamDoes) {
    FullBuffer buffer(50);
    std::ostream out(&buffer);
    Packer packer(out, Packing::Zip, "a.ifc");
    packer.stream() << g_sPlain;
    packer.finish();
    EXPECT_FALSE(out);
}

struct SaveRow {
    const char* sName;
    Format format;
    const char* sInside;
    const char* sBegin;
};

TEST(Archive, IsSavedByTheEndOfTheName) {
    const SaveRow rows[] = {
        {"b.ifczip", Format::Auto, "b.ifc", "ISO-10303-21;"}, {"b.ifczip", Format::IfcXml, "b.ifcxml", "<?xml"},
        {"b.ifczip", Format::Simple, "b.txt", "Ifc file"},    {"b.IFC.GZ", Format::Auto, "b.IFC", "ISO-10303-21;"},
        {"b.ifcxml.gz", Format::Auto, "b.ifcxml", "<?xml"},   {"b.gz", Format::Step, "b", "ISO-10303-21;"},
    };
    Model model("IFC4");
    model.create("IfcProject", {{"Name", "P"}});
    const fs::path folder = fs::path(testing::TempDir()) / ("archive-" + model.create("IfcWall").guid());
    fs::create_directory(folder);
    for (const SaveRow& row : rows) {
        SCOPED_TRACE(row.sName);
        const fs::path path = folder / row.sName;
        model.save(path, {.format = row.format});
        std::ifstream stream(path, std::ios::binary);
        const std::string sBytes{std::istreambuf_iterator<char>(stream), {}};
        std::istringstream packed(sBytes);
        Unpacked unpacked(packingOf(sBytes), *packed.rdbuf(), row.sName);
        EXPECT_EQ(unpacked.inside(), row.sInside);
        EXPECT_TRUE(std::string(std::istreambuf_iterator<char>(&unpacked.bytes()), {}).starts_with(row.sBegin));
        EXPECT_EQ(Model::open(path).all("IfcProject").size(), 1U);
    }
    EXPECT_EQ(
        sThrown([&] { model.save(folder / "b.csv.gz"); }),
        "FileError: " + (folder / "b.csv.gz").string() +
            ": the end of the name says no form that is written (.ifc, .stp, .step, .p21, .spf, .ifczip, .ifcxml, "
            ".xml, or .gz behind one of them); SaveOptions::format does");
    fs::remove_all(folder);
}

}   // namespace
}   // namespace oxa::test
