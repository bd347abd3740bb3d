// SPDX-License-Identifier: Apache-2.0
// The documents about reading say what the reader does: each of their examples is read, and the result compared.
//
// Result   a line a report, "Error Value 3 Error_UnknownEntityType": severity, category, line, key, with the argument in
//          parentheses where its text has a place for one; a line an instance, by number, as it would be written;
//          "passed over 1, line 3" where something was; "refused" where the read answered false.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Examples.h"
#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/RuleModel.h"
#include "platform/Localization.h"
#include "provider/SchemaLoader.h"

namespace oxa::ifc {
namespace {

std::string sDocumentPath(const std::string& sName) { return OXA_SOURCE_DIR "/docs/" + sName; }

// The documents that hold examples.
const std::vector<std::string> g_documents = {"reading.md", "simple-form.md"};

Texts reportsWithoutText(const Errors& errors) {
    Texts texts = reports(errors);
    for (std::string& sText : texts) sText.erase(sText.find(" | "));
    return texts;
}

std::string sResult(const Data& data, const Errors& errors, bool boRead) {
    std::string sText;
    for (const std::string& sReport : reportsWithoutText(errors)) sText += sReport + '\n';
    std::multimap<std::size_t, std::string> instances;
    for (const Entity* pEntity : data.entities())
        instances.emplace(data.iIdFromEntity(*pEntity), pEntity->sWriteLine(data));
    for (const auto& [iId, sStatement] : instances) sText += sStatement + '\n';
    if (const auto passedOver = errors.passedOver(); passedOver.iCount)
        sText += "passed over " + std::to_string(passedOver.iCount) + ", line " +
                 std::to_string(passedOver.iFirstLine) + '\n';
    if (!boRead) sText += "refused\n";
    return sText;
}

struct Outcome {
    std::string sResult;
    std::set<std::string> reports;   // severity, category, key
    bool boFatal = false;
};

// What is told of one report, without its line and its argument.
std::string sKind(const std::string& sReport) {
    std::istringstream in(sReport);
    std::string sSeverity, sCategory, sLine, sKey;
    in >> sSeverity >> sCategory >> sLine >> sKey;
    return sSeverity + ' ' + sCategory + ' ' + sKey.substr(0, sKey.find('('));
}

Outcome outcomeOf(std::string sOutcome, const Errors& errors) {
    Outcome outcome{std::move(sOutcome), {}, errors.boFatal()};
    for (const std::string& sReport : reportsWithoutText(errors)) outcome.reports.insert(sKind(sReport));
    return outcome;
}

// The schema by its own name alone.
SchemaFromName schemaOfName(const def::SchemaPset& schema) {
    return [&schema](const std::string& sName) {
        return sName == schema.sName ? const_cast<def::SchemaPset*>(&schema) : nullptr;
    };
}

Outcome readFile(const std::string& sFile, const def::SchemaPset& schema, bool boSingleThreaded) {
    const ReadFileModel model(sFile, boSingleThreaded, schemaOfName(schema));
    return outcomeOf(sResult(model.file.data(), model.errors, model.boRead), model.errors);
}

// The statements of a header section. In place of instances: the header as it would be written.
Outcome readHeader(const std::string& sStatements, const def::SchemaPset& schema, bool boSingleThreaded) {
    const ReadFileModel model("ISO-10303-21;HEADER;" + sStatements + "ENDSEC;DATA;ENDSEC;END-ISO-10303-21;",
                              boSingleThreaded, schemaOfName(schema));
    std::string sText = sResult(model.file.data(), model.errors, model.boRead);
    for (const std::string& sLine : linesOfText(model.file.header().writeToString()))
        if (sLine.starts_with("FILE_")) sText += sLine + '\n';
    return outcomeOf(std::move(sText), model.errors);
}

// With boRewrite: what is written of it again, from the root that it names.
Outcome readSimple(const std::string& sText, const def::SchemaPset& schema, bool boSingleThreaded, bool boRewrite) {
    std::istringstream in(sText);
    FileSimple file(schema);
    io::ReadError errors;
    const bool boRead = file.boRead(in, schemaOfName(schema), errors, {}, boSingleThreaded);
    if (!boRewrite) return outcomeOf(sResult(file.data(), errors, boRead), errors);
    std::ostringstream out;
    io::WriteError writeErrors;
    EXPECT_TRUE(boRead && file.boWrite(file.pRootEntity(), out, writeErrors, boSingleThreaded));
    EXPECT_TRUE(writeErrors.records().empty());
    return outcomeOf(out.str(), errors);
}

// The head of a file in front of a DATA section, which so begins on line 1.
std::string sDataFile(const def::SchemaPset& schema, const std::string& sData) {
    return "ISO-10303-21;HEADER;FILE_SCHEMA(('" + schema.sName + "'));ENDSEC;DATA;" + sData +
           "ENDSEC;END-ISO-10303-21;";
}

Outcome outcome(const Example& example, const def::SchemaPset& schema, bool boSingleThreaded) {
    if (example.sKind.empty()) return readFile(sDataFile(schema, example.sInput), schema, boSingleThreaded);
    if (example.sKind == "file") return readFile(example.sInput, schema, boSingleThreaded);
    if (example.sKind == "header") return readHeader(example.sInput, schema, boSingleThreaded);
    if (example.sKind == "simple") return readSimple(example.sInput, schema, boSingleThreaded, false);
    if (example.sKind == "rewrite") return readSimple(example.sInput, schema, boSingleThreaded, true);
    throw std::runtime_error("no kind of example: " + example.sKind);
}

std::unique_ptr<def::SchemaPset> pSchemaOfDocument(const Document& document) {
    std::vector<SchemaMessage> messages;
    auto pSchema = SchemaLoader::pSchemaFromExpress(document.sSchema, messages);
    if (!pSchema) throw std::runtime_error(messages.empty() ? "no schema" : messages.front().sText);
    return pSchema;
}

std::string sSorted(const std::string& sText) {
    std::vector<std::string> lines = linesOfText(sText);
    std::ranges::sort(lines);
    std::string sSorted;
    for (const std::string& sLine : lines) sSorted += sLine + '\n';
    return sSorted;
}

class DocumentExamples : public testing::TestWithParam<std::string> {};

TEST_P(DocumentExamples, AreReadAsTheySay) {
    const AssertLog asserts;
    const Document document = documentOf(sDocumentPath(GetParam()));
    const auto pSchema = pSchemaOfDocument(document);
    ASSERT_FALSE(document.examples.empty());
    for (const Example& example : document.examples) {
        const Outcome read = outcome(example, *pSchema, true);
        EXPECT_TRUE(boSaysAll(example.sExpected, read.sResult))
            << "docs/" << GetParam() << ", line " << example.iLine << "\n--- it says\n"
            << example.sExpected << "--- and comes out as\n"
            << read.sResult;
    }
}

// Behind a fatal fault several threads may have read more than one has. Otherwise they differ in the order alone.
TEST_P(DocumentExamples, AreReadTheSameBySeveralThreads) {
    const AssertLog asserts;
    const Document document = documentOf(sDocumentPath(GetParam()));
    const auto pSchema = pSchemaOfDocument(document);
    for (const Example& example : document.examples) {
        const Outcome read = outcome(example, *pSchema, true);
        if (read.boFatal || example.sKind == "rewrite" || example.sExpected.find("...") != std::string::npos) continue;
        EXPECT_EQ(sSorted(outcome(example, *pSchema, false).sResult), sSorted(read.sResult))
            << "docs/" << GetParam() << ", line " << example.iLine;
    }
}

std::string sSuiteName(const testing::TestParamInfo<std::string>& info) {
    std::string sName = info.param.substr(0, info.param.find('.'));
    std::erase(sName, '-');
    return sName;
}
INSTANTIATE_TEST_SUITE_P(Docs, DocumentExamples, testing::ValuesIn(g_documents), sSuiteName);

// The table of reports: what each row says is shown by an example, and no example shows another. Rows that say "never"
// are of keys that no file brings about. Every key has its row.
TEST(DocumentReports, AreThoseOfTheTable) {
    const AssertLog asserts;
    const Document document = documentOf(sDocumentPath("reading.md"));
    const auto pSchema = pSchemaOfDocument(document);
    std::set<std::string> shown;
    for (const Example& example : document.examples) shown.merge(outcome(example, *pSchema, true).reports);
    std::set<std::string> told;
    std::set<std::string> keys;
    for (const KeyRow& row : document.keys) {
        keys.insert(row.sKey);
        ASSERT_GE(row.cells.size(), 2U) << row.sKey;
        if (row.cells[0] == "never") continue;
        std::istringstream categories(row.cells[1]);
        for (std::string sCategory; std::getline(categories >> std::ws, sCategory, ',');)
            told.insert(row.cells[0] + ' ' + sCategory + ' ' + row.sKey);
    }
    EXPECT_EQ(told, shown);
    std::set<std::string> all;
    for (const std::string_view key : localizationKeys("Ifc"))
        if (key.starts_with("Error_")) all.emplace(key);
    EXPECT_EQ(keys, all);
}

// The comparison itself: it would be no test if it took everything.
TEST(DocumentReports, ComparisonTellsTextsApart) {
    EXPECT_TRUE(boSaysAll("a\nb...d\n", "a\nbcd\n"));
    EXPECT_TRUE(boSaysAll("...x...x\n", "xx\n"));
    EXPECT_FALSE(boSaysAll("a...a\n", "a\n"));
    EXPECT_FALSE(boSaysAll("a\n", "a\nb\n"));
    EXPECT_FALSE(boSaysAll("a\nb\n", "a\n"));
    EXPECT_FALSE(boSaysAll("a...c\n", "abd\n"));
    EXPECT_FALSE(boSaysAll("ab\n", "aB\n"));
}

}   // namespace
}   // namespace oxa::ifc
