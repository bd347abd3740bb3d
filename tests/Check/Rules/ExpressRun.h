// SPDX-License-Identifier: Apache-2.0
// ExpressRun: expressions of EXPRESS evaluated against a schema, and a model of it that is read from a text.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Check/Express/Parser.h"
#include "Check/Rules/BuiltInRules.h"
#include "Check/Rules/Compiler.h"
#include "Check/Rules/Explain.h"
#include "Check/Rules/RuleCheck.h"
#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "provider/SchemaLoader.h"

namespace oxa::test {

// The table of rules of a built-in schema, as text.
inline std::string sRuleTable(std::string_view name) {
    std::string sResult;
    for (const auto& table : check::rules::g_builtInRules)
        if (table.name == name)
            for (const std::string_view piece : table.pieces) sResult += piece;
    return sResult;
}

class ExpressRun {
public:
    // "sRules": a text with a schema's rules; "sTests": declarations to be added to them.
    ExpressRun(const ifc::def::SchemaPset& schema, const std::string& sRules, const std::string& sTests,
               const std::string& sData = {}, const check::rules::Limits& limits = {}) {
        std::vector<ifc::SchemaMessage> messages;
        check::express::SchemaRules trees;
        check::express::SchemaRules added;
        EXPECT_TRUE(check::express::Parser(sRules, messages).boReadSchema(trees));
        EXPECT_TRUE(check::express::Parser("SCHEMA t; " + sTests + " END_SCHEMA;", messages).boReadSchema(added))
            << messages.front().iColumn << ": " << messages.front().sText;
        for (auto& block : added.outer.blocks) trees.outer.blocks.push_back(std::move(block));
        for (auto& constant : added.outer.constants) trees.outer.constants.push_back(std::move(constant));
        pProgram = check::rules::pCompile(schema, std::move(trees));
        std::istringstream stream(
            "ISO-10303-21;HEADER;FILE_DESCRIPTION((''),'2;1');FILE_NAME('','',(''),(''),'','','');"
            "FILE_SCHEMA(('" +
            schema.sName + "'));ENDSEC;DATA;" + sData + "ENDSEC;END-ISO-10303-21;");
        ifc::io::ReadError errors;
        auto* pSchema = const_cast<ifc::def::SchemaPset*>(&schema);
        EXPECT_TRUE(file.boRead(
            stream, [=](const std::string&) { return pSchema; }, errors, true, {}, true));
        for (const auto& record : errors.records())
            if (record.category != ifc::Errors::Null && record.category != ifc::Errors::Header)
                sLosses += record.description + '\n' + record.lineString.value_or({}) + '\n';
        static_cast<void>(file.data().entities());
        pIndex = std::make_unique<check::rules::ModelIndex>(file.data());
        pEvaluator = std::make_unique<check::rules::Evaluator>(*pProgram, *pIndex, limits);
    }

    // What the function gives for the instances with these numbers, as text; after a fault "fault: " and why.
    std::string sCalled(const std::string& sFunction, const std::vector<std::size_t>& instances = {}) {
        pEvaluator->vReset();
        std::vector<check::rules::Value> arguments;
        for (const std::size_t iId : instances)
            arguments.push_back(check::rules::valueOf(file.data().pEntityFromId(iId)));
        for (const check::rules::Routine& routine : pProgram->routines) {
            if (routine.sName != sFunction) continue;
            const check::rules::Value value = pEvaluator->call(routine, arguments);
            if (pEvaluator->boFailed()) return "fault: " + pEvaluator->sFault();
            return check::rules::sValueText(*pEvaluator, value);
        }
        return "no function";
    }

    ifc::File file;
    std::string sLosses;   // what was told of the model's text, but for values that are missing
    std::unique_ptr<const check::rules::Program> pProgram;
    std::unique_ptr<check::rules::ModelIndex> pIndex;
    std::unique_ptr<check::rules::Evaluator> pEvaluator;
};

// "FUNCTION t0 : GENERIC; RETURN (text); END_FUNCTION;" and so on, one a text.
template <class Rows>
std::string sFunctionsOf(const Rows& rows, const char* sParameters = "") {
    std::string sResult;
    std::size_t i = 0;
    for (const auto& row : rows)
        sResult +=
            "FUNCTION t" + std::to_string(i++) + sParameters + " : GENERIC; RETURN (" + row.sText + "); END_FUNCTION; ";
    return sResult;
}

}   // namespace oxa::test
