// SPDX-License-Identifier: Apache-2.0
// Writes of all entities of models that were changed since they were read, row by row: what was done, and what every
// way to write must have for it, written out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <span>

#include "Format/Ifc/Write/EditedModel.h"

namespace oxa::ifc::io::edited {
namespace {

enum : unsigned {
    Dealt = 1,          // which new one gets what number is left open
    Late = 2,           // new ones may stand behind all others
    Twice = 4,          // two have the same number
    Anew = 8,           // the file's numbers are lost
    NotKept = 8 + 16,   // by the read of it
    Threads = 32        // that read the file
};

struct Row {
    const char* sRule;
    std::string sEdit;         // with ">" in front of what is done behind the read, where something is done before it
    std::string sLines = {};   // new ones, and those that differ from the file's, in short
    std::string sWalk = {};    // labels of all, as one thread writes them without an order; empty: as many as there are
    unsigned flags = 0;
    std::size_t iMissing = 0;   // instances that are named and have no statement
    std::string sFile = g_sBase;
    void (*vThen)(Model&, Entity*) = nullptr;   // what no command does, with the entity of label sThen
    std::string sThen = {};

    [[nodiscard]] bool boIs(unsigned flag) const { return (flags & flag) == flag; }
};

// Statements in the order of numbers.
Lines expectedOf(const Row& row) {
    std::map<std::string, std::string> byLabel;
    for (const std::string& sLine : longOf(row.sFile)) byLabel[sLabelOf(sLine)] = sLine;
    if (!row.sWalk.empty())
        std::erase_if(byLabel, [&](const auto& line) { return row.sWalk.find(line.first) == std::string::npos; });
    for (const std::string& sLine : longOf(row.sLines)) byLabel[sLabelOf(sLine)] = sLine;
    Lines lines;
    for (const auto& [sLabel, sLine] : byLabel) lines.push_back(sLine);
    std::ranges::stable_sort(lines, {}, iNumberOf);
    return lines;
}

struct Way {
    bool boSingleThreaded;
    WriteOrder eOrder;
};
constexpr Way g_ways[] = {{true, WriteOrder::Any},     {false, WriteOrder::Any}, {true, WriteOrder::Number},
                          {false, WriteOrder::Number}, {true, WriteOrder::File}, {false, WriteOrder::File}};
std::string sShown(const Way& way) {
    return std::string(way.boSingleThreaded ? "one thread, " : "several threads, ") +
           (way.eOrder == WriteOrder::Any      ? "any order"
            : way.eOrder == WriteOrder::Number ? "by number"
                                               : "as in the file");
}

class RowCheck {
public:
    explicit RowCheck(const Row& row)
        : m_row(row),
          m_file(longOf(row.sFile)),
          m_expected(expectedOf(row)),
          m_expectedCanonical(canonical(m_expected)) {
        std::set<std::uint32_t> kept;
        for (const std::string& sLine : m_file) kept.insert(iNumberOf(sLine));
        if (row.boIs(Anew)) kept.clear();
        // Some that the model has not, or from dealing alone; then backwards; then one again.
        m_fileNumbers = {11, 10, 5000000};
        for (auto line = m_file.rbegin(); line != m_file.rend(); ++line) m_fileNumbers.push_back(iNumberOf(*line));
        m_fileNumbers.push_back(1);
        std::map<std::uint32_t, std::string> firsts;
        for (const std::string& sLine : m_expected) firsts.emplace(iNumberOf(sLine), sLine);
        for (const std::uint32_t iNumber : m_fileNumbers)
            if (kept.erase(iNumber) > 0 && firsts.contains(iNumber)) m_expectedInFile.push_back(firsts[iNumber]);
    }

    void vRun() const {
        SCOPED_TRACE(m_row.sRule);
        std::map<WriteOrder, std::string> texts;
        for (const Way& way : g_ways) {
            SCOPED_TRACE(sShown(way));
            Model model;
            vPrepare(model);
            const std::string sText = sWritten(model.data(), way);
            vExpectText(sText, way);
            if (way.eOrder != WriteOrder::Any) {
                EXPECT_EQ(sText, texts.try_emplace(way.eOrder, sText).first->second) << "on any number of threads";
            }
            const Lines lines = sorted(linesOf(sText));
            for (const Way& again : g_ways) {   // with the numbers that are there by now
                SCOPED_TRACE("again: " + sShown(again));
                const std::string sAgain = sWritten(model.data(), again);
                EXPECT_EQ(sorted(linesOf(sAgain)), lines);
                if (again.eOrder != WriteOrder::Any) vExpectAgain(model, sAgain, again);
                if (again.eOrder == WriteOrder::Any && again.boSingleThreaded) {
                    EXPECT_EQ(sWritten(model.data(), again), sAgain);
                }
            }
            if (way.eOrder != WriteOrder::Any) continue;
            Model plain;
            vPrepare(plain);
            const Written result = dataOf(plain.data(), way.boSingleThreaded);
            EXPECT_TRUE(result.boResult);
            vExpectText(result.text, way);
        }
    }

private:
    void vPrepare(Model& model) const {
        const std::size_t iRead = m_row.sEdit.find('>');
        const bool boBefore = iRead != std::string::npos;
        model.m_boKeepIds = !m_row.boIs(NotKept);
        if (boBefore) model.vDo(m_row.sEdit.substr(0, iRead));
        EXPECT_TRUE(model.boRead(m_row.sFile, !m_row.boIs(Threads)));
        model.vDo(boBefore ? m_row.sEdit.substr(iRead + 1) : m_row.sEdit);
        if (m_row.vThen) m_row.vThen(model, model[m_row.sThen]);
    }
    std::string sWritten(const Data& data, const Way& way) const {
        std::vector<unsigned> counts;
        std::vector<std::size_t> numbers;
        const Written result = dataOf(data, {.boSingleThreaded = way.boSingleThreaded,
                                             .progress = [&](unsigned iCount) { counts.push_back(iCount); },
                                             .eOrder = way.eOrder,
                                             .fileNumbers = m_fileNumbers,
                                             .pWritten = &numbers});
        EXPECT_TRUE(result.boResult);
        EXPECT_TRUE(result.records.empty());
        EXPECT_EQ(std::ranges::adjacent_find(counts, std::greater_equal<>()), counts.end()) << "counts rise";
        const std::size_t iAll = m_expected.size() + m_row.iMissing;
        if (way.boSingleThreaded && way.eOrder == WriteOrder::Any) {
            EXPECT_EQ(counts.size(), iAll);
        }
        if (!counts.empty()) {
            EXPECT_LE(counts.back(), iAll);
        }
        std::set<std::size_t> listed;
        for (const Entity* pEntity : data.entities()) listed.insert(data.iIdFromEntity(*pEntity));
        EXPECT_TRUE(std::ranges::is_sorted(numbers));
        EXPECT_EQ(std::set<std::size_t>(numbers.begin(), numbers.end()), listed);
        return result.text;
    }
    // In an order: the same bytes in the frame of a file.
    void vExpectAgain(Model& model, const std::string& sAgain, const Way& way) const {
        vExpectOrder(linesOf(sAgain), way.eOrder);
        const Written framed = written([&](auto& out, auto& errors) {
            return WriteFile::boWrite(
                model.header(), model.data(), nullptr, out, errors,
                {.boSingleThreaded = way.boSingleThreaded, .eOrder = way.eOrder, .fileNumbers = m_fileNumbers});
        });
        EXPECT_TRUE(framed.text.ends_with("\nDATA;\n" + sAgain + "ENDSEC;\nEND-ISO-10303-21;\n"));
    }
    void vExpectText(const std::string& sText, const Way& way) const {
        const Lines lines = linesOf(sText);
        const bool boOrder = way.eOrder != WriteOrder::Any;
        const bool boWalk = !boOrder && way.boSingleThreaded && !m_row.sWalk.empty();
        if (m_row.boIs(Twice) || (!m_row.boIs(Dealt) && (boOrder || boWalk))) {
            EXPECT_EQ(sorted(lines), sorted(m_expected));
        }
        if (!m_row.boIs(Twice)) {
            EXPECT_EQ(canonical(lines), m_expectedCanonical);
            std::set<std::uint32_t> numbers;
            for (const std::string& sLine : lines) EXPECT_TRUE(numbers.insert(iNumberOf(sLine)).second) << sLine;
        }
        if (boOrder) vExpectOrder(lines, way.eOrder);
        std::string sWalk;
        for (const std::string& sLabel : labelsOf(lines)) sWalk += sLabel;
        if (boWalk) {
            EXPECT_EQ(sWalk, m_row.sWalk);
        }
    }
    void vExpectOrder(Lines lines, WriteOrder eOrder) const {
        Lines kept = eOrder == WriteOrder::File ? m_expectedInFile : Lines();
        if (m_row.boIs(Late)) {   // and what is left of the file
            std::set<std::string> old;
            for (const std::string& sLabel : labelsOf(m_file)) old.insert(sLabel);
            std::erase_if(lines, [&](const std::string& sLine) { return !old.contains(sLabelOf(sLine)); });
            std::erase_if(kept, [&](const std::string& sLine) { return !old.contains(sLabelOf(sLine)); });
        }
        ASSERT_GE(lines.size(), kept.size());
        const auto rest = lines.begin() + static_cast<std::ptrdiff_t>(kept.size());
        EXPECT_EQ(labelsOf(Lines(lines.begin(), rest)), labelsOf(kept));
        EXPECT_TRUE(std::is_sorted(rest, lines.end(), [](const std::string& a, const std::string& b) {
            return iNumberOf(a) < iNumberOf(b);
        })) << sJoined(lines);
    }

    const Row& m_row;
    Lines m_file;
    Lines m_expected;   // by number
    Lines m_expectedCanonical;
    Lines m_expectedInFile;   // of fileNumbers, in their order
    std::vector<std::uint32_t> m_fileNumbers;
};

void vExpectRows(std::span<const Row> rows) {
    for (const Row& row : rows) RowCheck(row).vRun();
}

TEST(WriteEditedRows, Created) {
    const Row rows[] = {
        {"nothing was done", "", "", "abcdefigh"},
        {"in the list", "create n; next a n", "1a #10; 10n", "abcdefingh"},
        {"in the list, named by nothing", "create n", "10n", "abcdefingh"},
        {"in no list, named by nothing", "unlisted n", "", "abcdefigh"},
        {"in no list, named by nothing, with a number", "unlisted n; number n 10", "", "abcdefigh"},
        {"in no list", "unlisted n; next a n", "1a #10; 10n", "abcdefighn"},
        {"on its own", "own n; next a n", "1a #10; 10n", "abcdefighn"},
        {"a list", "own n; others b a n c", "2b $ (#1,#10,#3); 10n", "abcdefighn"},
        {"an item", "unlisted n; others+ b n", "2b $ (#1,#3,#10); 10n", "abcdefighn"},
        {"the first item", "own n; others++ i n", "9i $ (#10); 10n", "abcdefighn"},
        {"rows", "unlisted n; row i a n", "9i $ $ ((#1,#10)); 10n", "abcdefighn"},
        {"a row", "own n; row+ c n", "3c $ $ ((#1,#2),(#4),(#10)); 10n", "abcdefighn"},
        {"a select", "own n; any d n", "4d $ $ $ #10 (IFCLABEL('l'),#2); 10n", "abcdefighn"},
        {"in place of a select", "own n; any e n", "5e $ $ $ #10 (IFCINNER(#1)); 10n", "abcdefighn"},
        {"selects", "unlisted n; values i a n", "9i $ $ $ $ (#1,#10); 10n", "abcdefighn"},
        {"one more select", "own n; values+ d n", "4d $ $ $ #3 (IFCLABEL('l'),#2,#10); 10n", "abcdefighn"},
        {"an inverse list that was empty", "unlisted n; tie+ b n", "10n", "abcdefighn"},
        {"one more in an inverse list", "own n; tie+ a n", "10n", "abcdefighn"},
        {"an inverse list with another entry", "unlisted n; tie a n", "10n", "abcdefighn"},
        {"an inverse list with others", "unlisted n; own o; ties a n o", "10n; 11o", "abcdefighno"},
        {"values first", "unlisted n; own o; tie+ a o; next a n", "1a #10; 10n; 11o", "abcdefighno"},
        {"new ones name new ones",
         "unlisted o; own n; unlisted p; own q; unlisted r; unlisted s;"
         "next b o; next a n; others n p; tie+ p q; row q r n; any r s",
         "1a #10; 2b #11 (#1,#3); 10n $ (#12); 11o; 12p; 13q $ $ ((#14,#10)); 14r $ $ $ #15; 15s", "abcdefighnopqrs"},
        {"some in the list, some not",
         "unlisted n; create o; unlisted p; create q IFCTIE; next a n; next n o; next o p; to q n",
         "1a #10; 10n #11; 11o #12; 12p; 13q= $ #10", "abcdefioghqnp", Dealt},
    };
    vExpectRows(rows);
}

TEST(WriteEditedRows, Deleted) {
    const std::string sHide = "undefine h From; derive h To; delete f;";
    const Row rows[] = {
        {"still named", "delete b", "", "acdefighb"},
        {"named by ties", "delete f", "", "abcdeighf"},
        {"named by an inverse list alone", "delete g", "", "abcdefihg"},
        {"named by nothing", "delete i", "", "abcdefgh"},
        {"some, of which two are named", "delete i h e d", "", "abcfgdh"},
        {"as many made", "delete i; create n", "10n", "abcdefngh"},
        {"as many made, and still named", "delete b; create n", "10n", "acdefinghb"},
        {"as many in the list as before", "delete b; add a", "", "acdefighb"},
        {"in the list three times", "add a a", "", "abcdefigh"},
        {"put back", "delete b; add b", "", "acdefibgh"},
        {"dropped as incomplete, and named", "drop c", "", "abdefighc"},
        {"dropped as incomplete", "drop i", "", "abcdefgh"},
        {"first out of the inverse list", "tie- a g; delete g", "", "abcdefih"},
        {"first without inverse lists", "untie a; delete g", "", "abcdefih"},
        {"out of what names it", "delete a g; others- b a; row c b d; values e",
         "2b $ (#3); 3c $ $ ((#2,#4)); 5e $ $ $ IFCINNER(#4) ()", "bcdefih"},
        {"removed", "remove b i", "1a; 3c $ $ ((#1),(#4)); 4d $ $ $ #3 (IFCLABEL('l'))", "acdefgh"},
        {"removed from an inverse list", "remove g", "", "abcdefih"},
        {"removed, as many made", "remove g; create n; next f n", "6f #10; 10n", "abcdefinh"},
        {"behind flags", sHide, "8h= $ *", "abcdeigh"},
        {"behind flags, and seen again", sHide + "write; derive- h To", "8h= $ #6", "abcdeighf"},
    };
    vExpectRows(rows);
}

struct Place {
    const char* sWhere;
    void (*vPut)(Model&, Entity*);
    std::string sLine;
};
// With entities that no list has, from wherever they come.
void vExpectPlaces(std::span<const Place> places) {
    const struct {
        const char *sWho, *sEdit, *sLabel, *sLines;
    } whos[] = {
        {"of another model", ">", "x", "; 10x #11; 11y; 12z= #10"},
        {"of another model, with a number", "> number x 10", "x", "; 10x #11; 11y; 12z= #10"},
        {"made before the read", "unlisted n >", "n", "; 10n"},
        {"made before the read, and names another model", "own n; next n x >", "n",
         "; 10n #11; 11x #12; 12y; 13z= #11"},
        {"made after the read", "> unlisted n", "n", "; 10n"},
    };
    for (const Place& place : places)
        for (const auto& who : whos)
            for (const char* sThen : {"", "; write"}) {
                SCOPED_TRACE(std::string(who.sWho) + sThen);
                Row row{place.sWhere, std::string(who.sEdit) + sThen, place.sLine + who.sLines, "", Late};
                row.vThen = place.vPut;
                row.sThen = who.sLabel;
                RowCheck(row).vRun();
            }
}

AttributeEntity& reference(const AttributeSelect& select) {
    return *static_cast<AttributeEntity*>(select.m_pValue.load());
}
const AttributeSelect& inner(const AttributeSelect& select) {
    return *static_cast<AttributeSelect*>(select.m_pValue.load());
}
template <class Item>
Item& item(Model& m, const char* sLabel, unsigned iIndex, std::size_t iItem) {
    return (*m.cell<AttributeList>(sLabel, iIndex).pArray<Item>())[iItem];
}
EntityList& listOf(Model& m) { return *m.cell<AttributeList>("b", 2).pEntities(); }
EntityList& rowOf(Model& m, std::size_t iRow) { return *item<AttributeList>(m, "c", 3, iRow).pEntities(); }

// Whatever cell it is that gets an entity which no list has, past its setters.
TEST(WriteEditedRows, NamedInCells) {
    const Place places[] = {
        {"a reference", [](Model& m, Entity* p) { m.cell<AttributeEntity>("a", 1).m_value = p; }, "1a #10"},
        {"a list, in front", [](Model& m, Entity* p) { listOf(m).value = p; }, "2b $ (#10,#3)"},
        {"a list", [](Model& m, Entity* p) { listOf(m).next.load()->value = p; }, "2b $ (#1,#10)"},
        {"a row", [](Model& m, Entity* p) { rowOf(m, 0).value = p; }, "3c $ $ ((#10,#2),(#4))"},
        {"the last row", [](Model& m, Entity* p) { rowOf(m, 1).value = p; }, "3c $ $ ((#1,#2),(#10))"},
        {"a select", [](Model& m, Entity* p) { reference(m.cell<AttributeSelect>("d", 4)).m_value = p; },
         "4d $ $ $ #10 (IFCLABEL('l'),#2)"},
        {"selects", [](Model& m, Entity* p) { reference(item<AttributeSelect>(m, "d", 5, 1)).m_value = p; },
         "4d $ $ $ #3 (IFCLABEL('l'),#10)"},
        {"a select inside", [](Model& m, Entity* p) { reference(inner(m.cell<AttributeSelect>("e", 4))).m_value = p; },
         "5e $ $ $ IFCINNER(#10) (IFCINNER(#1))"},
        {"inside selects",
         [](Model& m, Entity* p) { reference(inner(item<AttributeSelect>(m, "e", 5, 0))).m_value = p; },
         "5e $ $ $ IFCINNER(#4) (IFCINNER(#10))"},
        {"a tie", [](Model& m, Entity* p) { m.cell<AttributeEntity>("g", 1).m_value = p; }, "7g= #10"},
        {"a copied cell",
         [](Model& m, Entity* p) {
             const auto [pFrom, pFromCell] = m["a"]->pAttributeFromIndex(1);
             const auto [pTo, pToCell] = m["f"]->pAttributeFromIndex(1);
             EXPECT_TRUE(pFromCell->copyTo(*pToCell, *pFrom, *pTo, m.data(), [p](Entity*) { return p; }, {}));
         },
         "6f #10"},
    };
    vExpectPlaces(places);
}

// The same for who refers to an instance.
TEST(WriteEditedRows, NamedInInverseLists) {
    const Place place{"an inverse list",
                      [](Model& m, Entity* p) {
                          EntityList* pHead = nullptr;
                          std::memcpy(&pHead, m["a"]->unsafeAttributesInverseRaw(), sizeof pHead);
                          pHead->value = p;
                      },
                      ""};
    vExpectPlaces({&place, 1});
    const Row rows[] = {{"those of another instance", "takeTies i x", "10z= #11; 11x #12; 12y", "abcdefighzxy", Late}};
    vExpectRows(rows);
}

// Setters that are told of the model from which the entity comes, and not of that which names it from then on.
TEST(WriteEditedRows, NamedWithTheMemoryOfAnotherModel) {
    const Row rows[] = {
        {"a reference", "nextOther i x", "9i #10; 10x #11; 11y; 12z= #10", "abcdefighxyz", Late},
        {"an inverse list", "tieOther b x", "10x #11; 11y; 12z= #10", "abcdefighxyz", Late},
        {"a tie that tells what it names", "announce z f", "10z= #6", "abcdefighz", Late},
    };
    vExpectRows(rows);
}

TEST(WriteEditedRows, OneAfterTheOther) {
    const Row rows[] = {
        {"the values of another instance", "takeValues i x", "9x #10; 10y", "abcdefxghy", Late},
        {"a tie that tells what it names", "unlisted t IFCTIE > cell t f; tell t", "10t= #6", "abcdefight", Late},
        {"fresh values", "fresh c n", "3n", "abndefigh"},
        {"with writes between", "write; cell a x; write; cell i x; cell a b; write; unlisted n; next f n",
         "9i #10; 10x #11; 11y; 12z= #10; 6f #13; 13n", "abcdefighnxyz", Late},
        {"named, written, and named no more", "unlisted n; next a n; cell i x; write; next a b; undefine i Next", "",
         "abcdefigh"},
        {"named in a cell, written, and named no more", "cell i x; write; undefine i Next", "", "abcdefigh"},
    };
    vExpectRows(rows);
}

// With an order too: the last statement is told, wherever it stands.
TEST(WriteEditedRows, ProgressCountsAllStatements) {
    for (const Way& way : g_ways) {
        if (way.eOrder == WriteOrder::Any) continue;
        SCOPED_TRACE(sShown(way));
        for (const char* sEdit : {"", "unlisted n; next a n", "cell i x"}) {
            SCOPED_TRACE(sEdit);
            Model model;
            EXPECT_TRUE(model.boRead(g_sBase));
            model.vDo(sEdit);
            unsigned iLast = 0;
            const Written result = dataOf(model.data(), {.boSingleThreaded = way.boSingleThreaded,
                                                         .progress = [&](unsigned iCount) { iLast = iCount; },
                                                         .eOrder = way.eOrder});
            EXPECT_EQ(iLast, linesOf(result.text).size());
        }
    }
}

// Two statements of one number, whichever way the second one came there.
TEST(WriteEditedRows, NumbersWrittenTwiceAreTold) {
    for (const Way& way : g_ways) {
        SCOPED_TRACE(sShown(way));
        for (const char* sEdit : {"create n", "unlisted n; next b n", "cell b y"}) {
            SCOPED_TRACE(sEdit);
            Model model;
            EXPECT_TRUE(model.boRead("1a #3; 3b"));
            model.vDo(sEdit);
            const Written result =
                dataOf(model.data(),
                       {.boSingleThreaded = way.boSingleThreaded, .eOrder = way.eOrder, .boTellNumbersTwice = true});
            EXPECT_EQ(linesOf(result.text).size(), 3U);
            EXPECT_EQ(result.records.size(), 1U);
        }
    }
}

TEST(WriteEditedRows, Reads) {
    const std::string sHoles = "1a #9; 2b $ (#8,#9) $ $ (#7)";   // none of which is defined
    const std::string sFilled = "1a #3; 2b $ (#4,#3) $ $ (#5); 3n";
    const Row rows[] = {
        {"numbers that are never defined", "", "1a #3; 2b $ (#4,#3) $ $ (#5)", "ab", 0, 3, sHoles},
        {"one of them, filled", "fill a n", sFilled, "abn", 0, 2, sHoles},
        {"filled after a write, and in the list", "write; fill a n; add n", sFilled, "abn", 0, 2, sHoles},
        {"a new one too", "unlisted n; next a n", "1a #3; 2b $ (#4,#5) $ $ (#6); 3n", "abn", 0, 3, sHoles},
        {"two reads", "read", "10j #11; 11k", "abcdefijkgh"},
        {"first undefined ones", "read", "1a #3; 2b $ (#4,#3) $ $ (#5); 6j #7; 7k", "abjk", Dealt, 3, sHoles},
        {"between them a new one", "unlisted n; next a n; read", "1a #10; 10n; 11j #12; 12k", "abcdefijkghn", Dealt},
        {"between them one in an inverse list", "unlisted n; tie+ b n; read", "10n; 11j #12; 12k", "abcdefijkghn",
         Dealt},
        {"between them some deleted", "delete b g i; read", "10j #11; 11k", "acdefjkhbg", Dealt},
        {"between them one of another model", "cell a x; read", "1a #10; 10x #11; 11y; 12z= #10; 13j #14; 14k",
         "abcdefijkghxyz", Dealt | Late},
        {"behind them a new one", "read; unlisted n; next k n", "10j #11; 11k #12; 12n", "abcdefijkghn"},
        {"behind them one of another model", "read; cell a x", "1a #10; 10x #11; 11y; 12z= #10; 13j #14; 14k",
         "abcdefijkghxyz", Dealt | Late},
        {"a second read that fails", "readPart", "10j #11", "", 0, 1},
        {"made before the read", "create n; unlisted o; next n o >", "10n #11; 11o", "nabcdefigho"},
        {"made before the read, with a number, so that the file's are not kept",
         "create n; unlisted o; next n o; number n 1 >", "10n #11; 11o", "nabcdefigho", Dealt | Anew},
        {"all new", "create n; own o; next n o", "1n #2; 2o", "no", 0, 0, ""},
    };
    vExpectRows(rows);
}

TEST(WriteEditedRows, Numbers) {
    const std::string sFar = "70000j #1;" + g_sBase;
    const std::string sLast = "-1j #1;" + g_sBase;   // the last one that there is, 4294967295
    const std::string sClash = "1a #3; 3b";
    const std::string sNew = "unlisted n; next a n";
    const std::string sToX = "1a #10; 10x #11; 11y; 12z= #10";
    const std::string sToX11 = "1a #11; 11x #12; 12y; 13z= #11;";
    const Row rows[] = {
        {"not kept", "", "", "abcdefigh", Dealt | NotKept},
        {"not kept, a new one", sNew, "1a #10; 10n", "abcdefighn", Dealt | NotKept},
        {"not kept, one of another model", "cell a x", sToX, "abcdefighxyz", Dealt | Late | NotKept},
        {"not kept, deleted", "delete b i", "", "acdefghb", Dealt | NotKept},
        {"anew", "anew", "", "abcdefigh", Dealt | Anew},
        {"anew, some already", "anew; number h 1; number c 2", "", "abcdefigh", Dealt | Anew},
        {"anew, one deleted", "anew; delete g", "", "abcdefihg", Dealt | Anew},
        {"anew after a write, one of another model", "write; anew; cell a x", sToX, "abcdefighxyz",
         Dealt | Late | Anew},
        {"far apart", "", "", "jabcdefigh", 0, 0, sFar},
        {"a new one between", sNew, "1a #11; 11n", "jabcdefighn", 0, 0, sFar},
        {"a new one between, in the list", "create n; next a n", "1a #11; 11n", "jabcdefingh", 0, 0, sFar},
        {"one of another model between", "cell a x", sToX11, "jabcdefighxyz", Late, 0, sFar},
        {"a new one above", "above;" + sNew, "1a #70001; 70001n", "jabcdefighn", 0, 0, sFar},
        {"the last", "", "4294967295j #1", "jabcdefigh", 0, 0, sLast},
        {"none above", "above not;" + sNew, "1a #11; 11n; 4294967295j #1", "jabcdefighn", 0, 0, sLast},
        {"below the last", "cell a x", sToX11 + "4294967295j #1", "jabcdefighxyz", Late, 0, sLast},
        {"the last, deleted", "next i j; delete j", "9i #4294967295; 4294967295j #1", "abcdefighj", 0, 0, sLast},
        {"above, and nothing new", "above", "", "abcdefigh"},
        {"a number that the file has", "unlisted n; next b n", "3b #3; 3n", "abn", Twice, 0, sClash},
        {"the same in a cell", "cell b y", "3b #3; 3y", "aby", Twice | Late, 0, sClash},
        {"moved", "move", "", "abcdefigh"},
        {"changed, then moved", sNew + "; delete i; move", "1a #10; 10n", "abcdefghn"},
        {"moved, then changed", "move; delete b;" + sNew, "1a #10; 10n", "acdefighnb"},
        {"moved, then a cell", "move; cell a x", sToX, "abcdefighxyz", Late},
    };
    vExpectRows(rows);
}

// Enough for several threads, each of which has its part.
TEST(WriteEditedRows, LargeModels) {
    constexpr int g_iNodes = 1000;
    const auto sTo = [](int i) { return '#' + std::to_string(i); };
    const auto sNode = [&](int i, const std::string& sNext) {
        return std::to_string(i) + ' ' + std::to_string(i) + ' ' + sNext + " (" + sTo(i / 2 + 1) + ");";
    };
    std::string sFile;
    for (int i = g_iNodes; i > 0; --i) sFile += sNode(i, i % 7 ? sTo(i % g_iNodes + 1) : "$");
    std::string sMany;   // each tenth names a new one
    std::string sManyLines;
    for (int i = 10, iNew = g_iNodes + 1; i <= g_iNodes; i += 10, ++iNew) {
        const std::string sNew = 'n' + std::to_string(i);
        sMany += "unlisted " + sNew + "; next " + std::to_string(i) + ' ' + sNew + ';';
        sManyLines += sNode(i, sTo(iNew)) + std::to_string(iNew) + sNew + ';';
    }
    std::string sDelete = "delete";   // all of these are named
    for (int i = 3; i <= g_iNodes; i += 3)
        if (i % 7 != 1 || i <= g_iNodes / 2) sDelete += ' ' + std::to_string(i);
    const std::string sToX = sNode(500, "#1001") + "1001x #1002; 1002y; 1003z= #1001";
    for (const unsigned flag : {0U, +Threads}) {
        const Row rows[] = {
            {"nothing was done", "", "", "", flag, 0, sFile},
            {"one of another model", "cell 500 x", sToX, "", flag | Late, 0, sFile},
            {"many new ones", sMany, sManyLines, "", flag, 0, sFile},
            {"every third deleted", sDelete, "", "", flag, 0, sFile},
        };
        vExpectRows(rows);
    }
}

}   // namespace
}   // namespace oxa::ifc::io::edited
