// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/IfcFileError.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "platform/Localization.h"

namespace oxa::ifc {
namespace {

std::string sWritten(const Errors& errors) {
    std::ostringstream out;
    errors.vErrorsWrite(out);
    return out.str();
}

struct NumberRow {
    const char* sName;
    std::uint32_t iNumber;
    std::uint32_t iExpected;
};
const NumberRow g_numberRows[] = {
    {"Error", Errors::Error, 0},         {"Fatal", Errors::Fatal, 1}, {"Syntax", Errors::Syntax, 0},
    {"Header", Errors::Header, 1},       {"Value", Errors::Value, 2}, {"Null", Errors::Null, 3},
    {"Reference", Errors::Reference, 4}, {"Model", Errors::Model, 5}, {"Identifier", Errors::Identifier, 7},
    {"Schema", Errors::Schema, 8},
};

TEST(Errors, NumbersAreFixed) {
    for (const NumberRow& row : g_numberRows) {
        SCOPED_TRACE(row.sName);
        EXPECT_EQ(row.iNumber, row.iExpected);
    }
    static_assert(sizeof(Errors::Severity) == 4 && sizeof(Errors::Category) == 4);
}

TEST(Errors, BeginsEmpty) {
    const Errors errors;
    EXPECT_FALSE(errors.boFatal());
    EXPECT_TRUE(errors.records().empty());
    EXPECT_EQ(sWritten(errors), "");
}

TEST(Errors, RecordHoldsWhatWasAdded) {
    Errors errors;
    const auto* const pEntity = reinterpret_cast<const Entity*>(&errors);   // any address: it is not followed
    errors.add(pEntity, Errors::Fatal, Errors::Schema, "no such key", "#1=WALL()", 4711);
    ASSERT_EQ(errors.records().size(), 1u);
    const ErrorRecord& record = errors.records().front();
    EXPECT_EQ(record.entity, pEntity);
    EXPECT_EQ(record.severity, Errors::Fatal);
    EXPECT_EQ(record.category, Errors::Schema);
    EXPECT_EQ(record.description, localize("Ifc", "no such key"));
    EXPECT_EQ(record.lineString, "#1=WALL()");
    EXPECT_EQ(record.lineNumber, 4711u);
}

TEST(Errors, TextIsLocalisedWithItsArgument) {
    const std::string text = localize("Ifc", "Error_UnknownSchemaName");
    const std::size_t iPlace = text.find("%1");
    ASSERT_NE(iPlace, std::string::npos);
    Errors errors;
    errors.add(nullptr, Errors::Fatal, Errors::Model, "Error_UnknownSchemaName", "IFC9", {}, 0);
    EXPECT_EQ(errors.records().at(0).description, text.substr(0, iPlace) + "IFC9" + text.substr(iPlace + 2));
    EXPECT_EQ(errors.records().at(0).lineString, "");
}

struct ArgumentRow {
    const char* sRule;
    std::string_view sText;
    std::string_view sArgument;
    std::string_view sExpected;
};
// A key that nobody knows is its own text.
const ArgumentRow g_argumentRows[] = {
    {"in its place", "no %1 here", "wall", "no wall here"},
    {"in every place", "%1 and %1", "a", "a and a"},
    {"side by side", "%1%1", "ab", "abab"},
    {"not expanded again", "<%1> <%1>", "%1", "<%1> <%1>"},
    {"nor in part", "<%1>1", "%", "<%>1"},
    {"nor behind other text", "<%1> <%1>", "abc%1", "<abc%1> <abc%1>"},
    {"nor at its begin", "%1%1", "%1abc", "%1abc%1abc"},
    {"a long one", "%1, %1", "abc%1%1%1%1%1%1%1def", "abc%1%1%1%1%1%1%1def, abc%1%1%1%1%1%1%1def"},
    {"one longer than the text", "a%1b%1", "0123456789", "a0123456789b0123456789"},
    {"one of a character", "%1%1%1", "%", "%%%"},
    {"empty", "<%1>", "", "<>"},
    {"empty, side by side", "%1%1", "", ""},
    {"empty, in three places", "%1%1 %1.", "", " ."},
    {"without a place it is lost", "nothing", "wall", "nothing"},
    {"other signs are text", "100% %2 %", "wall", "100% %2 %"},
};

TEST(Errors, ArgumentStandsForEveryPlace) {
    for (const ArgumentRow& row : g_argumentRows) {
        SCOPED_TRACE(row.sRule);
        ASSERT_EQ(localize("Ifc", row.sText), row.sText);
        Errors errors;
        errors.add(nullptr, Errors::Error, Errors::Value, row.sText, row.sArgument, "", 1);
        EXPECT_EQ(errors.records().at(0).description, row.sExpected);
    }
}

struct KeyRow {
    const char* sRule;
    std::string_view sKey;
    std::string_view sArgument;
    std::string_view sExpected;   // as argument()
};
const KeyRow g_keyRows[] = {
    {"the argument", "Error_UnknownSchemaName", "IFC9", "IFC9"},
    {"the argument of another", "Error_MissingEntityWithId", "4711", "4711"},
    {"a long one", "Error_UnknownSchemaName", "0123456789012345678901234567890123456789",
     "0123456789012345678901234567890123456789"},
    {"an empty one", "Error_UnknownSchemaName", "", ""},
    {"at the begin of the text", "%1 is none", "a", "a"},
    {"at its end", "none is %1", "a", "a"},
    {"in several places", "<%1> <%1>", "abc%1", "abc%1"},
    {"none where the text has no place for it", "Error_InvalidFile", "a", ""},
    {"a key that nobody knows", "no such key", "a", ""},
};

TEST(Errors, RecordTellsItsKeyAndItsArgument) {
    for (const KeyRow& row : g_keyRows) {
        SCOPED_TRACE(row.sRule);
        Errors errors;
        errors.add(nullptr, Errors::Error, Errors::Value, row.sKey, row.sArgument, "#1=A();", 1);
        errors.add(nullptr, Errors::Error, Errors::Value, row.sKey, "#1=A();", 1);
        ErrorRecord copy = errors.records().at(0);
        EXPECT_EQ(copy.key, row.sKey);
        EXPECT_EQ(copy.argument(), row.sExpected);
        EXPECT_EQ(errors.records().at(1).key, row.sKey);
        EXPECT_EQ(errors.records().at(1).argument(), "");
        EXPECT_EQ(copy.reportKey, reportKeyFromText(row.sKey));
        EXPECT_EQ(errors.records().at(1).reportKey, reportKeyFromText(row.sKey));
    }
}

// What each way of adding leaves in the record.
struct AddRow {
    const char* sRule;
    void (*vAdd)(Errors& errors);
    Errors::Severity eSeverity;
    Errors::Category eCategory;
    std::optional<ReportKey> eKey;
    const char* sKey;
    const char* sArgument;
    const char* sDescription;
};
const AddRow g_addRows[] = {
    {"a key has its usual severity and category",
     [](Errors& errors) { errors.add(nullptr, ReportKey::HeaderTypeNotImplemented, "text", 7); }, Errors::Error,
     Errors::Header, ReportKey::HeaderTypeNotImplemented, "Error_HeaderTypeNotImplemented", "",
     "The header statement is of an unknown kind and was skipped."},
    {"with an argument too", [](Errors& errors) { errors.add(nullptr, ReportKey::UnknownSchemaName, "X", "text", 7); },
     Errors::Fatal, Errors::Model, ReportKey::UnknownSchemaName, "Error_UnknownSchemaName", "X",
     "The schema \"X\" is not known; reading was stopped."},
    {"or those that its raiser names",
     [](Errors& errors) { errors.add(nullptr, Errors::Fatal, Errors::Value, ReportKey::EntityIsAbstract, "text", 7); },
     Errors::Fatal, Errors::Value, ReportKey::EntityIsAbstract, "Error_EntityIsAbstract", "",
     "The entity type is abstract and can have no instances."},
    {"with an argument too",
     [](Errors& errors) {
         errors.add(nullptr, Errors::Fatal, Errors::Null, ReportKey::InvalidNullAttribute, "Name", "text", 7);
     },
     Errors::Fatal, Errors::Null, ReportKey::InvalidNullAttribute, "Error_InvalidNullAttribute", "Name",
     "The mandatory attribute Name has no value."},
    {"the text of a key is the same as the key",
     [](Errors& errors) { errors.add(nullptr, Errors::Error, Errors::Null, "Error_InvalidFile", "text", 7); },
     Errors::Error, Errors::Null, ReportKey::InvalidFile, "Error_InvalidFile", "",
     "This is no complete IFC file: the end of its data section, ENDSEC, was not found."},
    {"a text of the caller is no key of the library",
     [](Errors& errors) { errors.add(nullptr, Errors::Error, Errors::Model, "my %1", "own", "text", 7); },
     Errors::Error, Errors::Model, std::nullopt, "my %1", "own", "my own"},
};

TEST(Errors, EachWayOfAddingFillsTheRecord) {
    for (const AddRow& row : g_addRows) {
        SCOPED_TRACE(row.sRule);
        Errors errors;
        row.vAdd(errors);
        ASSERT_EQ(errors.records().size(), 1u);
        const ErrorRecord& record = errors.records().front();
        EXPECT_EQ(record.entity, nullptr);
        EXPECT_EQ(record.severity, row.eSeverity);
        EXPECT_EQ(record.category, row.eCategory);
        EXPECT_EQ(record.reportKey, row.eKey);
        EXPECT_EQ(record.key, row.sKey);
        EXPECT_EQ(record.argument(), row.sArgument);
        EXPECT_EQ(record.description, row.sDescription);
        EXPECT_EQ(record.lineString, "text");
        EXPECT_EQ(record.lineNumber, 7u);
        EXPECT_EQ(errors.boFatal(), row.eSeverity == Errors::Fatal);
    }
}

// The key stands where the record had room: a file can have as many of them as bytes.
TEST(Errors, AKeyCostsARecordNoMemory) {
    struct WithoutKey {
        const Entity* entity;
        Errors::Severity severity;
        Errors::Category category;
        std::string description;
        SourceText lineString;
        std::uint32_t lineNumber, argumentBegin, argumentLength;
        SharedText key;
    };
    EXPECT_EQ(sizeof(ErrorRecord), sizeof(WithoutKey));
    EXPECT_EQ(ErrorRecord().reportKey, std::nullopt);
}

TEST(Errors, KeyOutlivesTheListAndIsOneForAll) {
    ErrorRecord record;
    EXPECT_FALSE(record.key);
    EXPECT_EQ(record.argument(), "");
    {
        Errors errors;
        for (const char* sKey : {"Error_InvalidFile", "Error_InvalidEntity", "Error_InvalidFile"})
            errors.add(nullptr, Errors::Error, Errors::Value, std::string(sKey), "", 1);
        record = errors.records().at(2);
        EXPECT_EQ(&*errors.records().at(0).key, &*record.key);
        EXPECT_EQ(errors.records().at(1).key, "Error_InvalidEntity");
    }
    EXPECT_EQ(record.key, "Error_InvalidFile");
}

TEST(Errors, WithoutArgumentThePlaceStays) {
    Errors errors;
    errors.add(nullptr, Errors::Error, Errors::Value, "no %1 here", "line", 1);
    EXPECT_EQ(errors.records().at(0).description, "no %1 here");
}

TEST(Errors, FatalStaysOnceSet) {
    Errors errors;
    const auto vAdd = [&errors](Errors::Severity severity) {
        errors.add(nullptr, severity, Errors::Syntax, "k", "", 0);
    };
    vAdd(Errors::Error);
    vAdd(Errors::Error);
    EXPECT_FALSE(errors.boFatal());
    vAdd(Errors::Fatal);
    EXPECT_TRUE(errors.boFatal());
    vAdd(Errors::Error);
    vAdd(Errors::Error);
    EXPECT_TRUE(errors.boFatal());
    EXPECT_EQ(errors.records().size(), 5u);
}

TEST(Errors, ListHasTextAndLineInTheOrderOfArrival) {
    Errors errors;
    errors.add(nullptr, Errors::Error, Errors::Value, "second class", "#2=B();", 22);
    errors.add(nullptr, Errors::Fatal, Errors::Value, "first class", "", 11);
    errors.add(nullptr, Errors::Error, Errors::Value, "two\nlines", "#3=\tC();", 33);
    EXPECT_EQ(sWritten(errors), "second class\t#2=B();\nfirst class\t\ntwo\nlines\t#3=\tC();\n");
}

TEST(Errors, AreAllocatedUnderTheirTwoNames) {
    const std::unique_ptr<io::ReadError> pRead = io::ReadError::pAllocate();
    const std::unique_ptr<io::WriteError> pWrite = io::WriteError::pAllocate();
    ASSERT_TRUE(pRead && pWrite);
    EXPECT_TRUE(pRead->records().empty());
    EXPECT_FALSE(pWrite->boFatal());
    static_assert(sizeof(io::ReadError) == sizeof(Errors) && sizeof(io::WriteError) == sizeof(Errors));
    static_assert(!std::is_polymorphic_v<io::ReadError> && !std::is_polymorphic_v<io::WriteError>);
}

TEST(Errors, EveryThreadMayAdd) {
    constexpr unsigned iThreads = 8;
    constexpr unsigned iEach = 1000;
    Errors errors;
    std::vector<std::thread> threads;
    for (unsigned iThread = 0; iThread < iThreads; ++iThread)
        threads.emplace_back([&errors, iThread] {
            for (unsigned i = 0; i < iEach; ++i) {
                const bool boLast = iThread == 0 && i + 1 == iEach;
                errors.add(nullptr, boLast ? Errors::Fatal : Errors::Error, Errors::Value, "%1",
                           std::to_string(iThread), std::to_string(i), i);
            }
        });
    while (!errors.boFatal()) std::this_thread::yield();   // as the scanner does
    for (std::thread& thread : threads) thread.join();

    ASSERT_EQ(errors.records().size(), iThreads * iEach);
    std::vector<unsigned> next(iThreads, 0);   // each thread's records are all there, in its own order
    for (const ErrorRecord& record : errors.records()) {
        const auto iThread = static_cast<std::size_t>(std::stoi(record.description));
        ASSERT_LT(iThread, next.size());
        EXPECT_EQ(record.lineNumber, next[iThread]);
        EXPECT_EQ(record.lineString, std::to_string(next[iThread]));
        ++next[iThread];
    }
    EXPECT_EQ(next, std::vector<unsigned>(iThreads, iEach));
}

TEST(Errors, CountLostStatementsAndKeepTheFirstLine) {
    struct Step {
        std::size_t iCount;
        unsigned iLine;
        std::size_t iAll;
        unsigned iFirst;
    };
    Errors errors;
    EXPECT_EQ(errors.lostStatements().iCount, 0U);
    EXPECT_EQ(errors.lostStatements().iFirstLine, 0U);
    for (const Step& step :
         {Step{0, 3, 0, 0}, Step{200, 40, 200, 40}, Step{1, 39, 201, 39}, Step{7, 500, 208, 39}, Step{0, 1, 208, 39}}) {
        errors.vLostAdd(step.iCount, step.iLine);
        EXPECT_EQ(errors.lostStatements().iCount, step.iAll);
        EXPECT_EQ(errors.lostStatements().iFirstLine, step.iFirst);
    }
    EXPECT_TRUE(errors.records().empty());
    EXPECT_FALSE(errors.boFatal());
}

}   // namespace
}   // namespace oxa::ifc
