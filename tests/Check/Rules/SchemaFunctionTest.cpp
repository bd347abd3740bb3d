// SPDX-License-Identifier: Apache-2.0
// The functions of the three published schemas with arguments made by hand: the rows of SchemaFunctionRows, each for all
// schemas that have its function.
#include <algorithm>
#include <cctype>
#include <map>
#include <set>

#include "Check/Rules/ExpressRun.h"
#include "Check/Rules/SchemaFunctionRows.h"

namespace {

using oxa::test::ExponentsRow;
using oxa::test::ExpressRun;
using oxa::test::FunctionRow;
using oxa::test::GivenInstance;

struct SchemaName {
    const char* sName;
    unsigned uMask;
};
void PrintTo(const SchemaName& schema, std::ostream* pStream) { *pStream << schema.sName; }

// The word that begins at a place of a text.
std::string sWordAt(std::string_view text, std::size_t iAt) {
    std::size_t iEnd = iAt;
    while (iEnd < text.size() && (std::isalnum(static_cast<unsigned char>(text[iEnd])) || text[iEnd] == '_')) ++iEnd;
    return std::string(text.substr(iAt, iEnd - iAt));
}

// The function that a call is about, in capitals.
std::string sNameOf(const std::string& sCall) {
    const std::size_t iAt = sCall.find("Ifc");
    return iAt == std::string::npos ? std::string() : oxa::ifc::def::schema::sUpper(sWordAt(sCall, iAt));
}

// What is called of one schema, and what is expected of it.
class Calls {
public:
    explicit Calls(const SchemaName& schema) : m_uMask(schema.uMask) {
        for (const GivenInstance& given : oxa::test::givenInstances()) {
            if (!boHolds(given.uSchemas)) continue;
            EXPECT_TRUE(numbers.emplace(given.sName, numbers.size() + 1).second) << given.sName;
        }
        vReadFunctions(schema.sName);
        for (const FunctionRow& row : oxa::test::functionRows())
            if (boHolds(row.uSchemas)) vAdd(row.sCall, row.sResult);
        for (const ExponentsRow& row : oxa::test::unitRows())
            if (boHolds(row.uSchemas)) vAddUnit(row);
        for (const ExponentsRow& row : oxa::test::siUnitRows())
            if (boHolds(row.uSchemas))
                vAdd("IfcDimensionsForSiUnit(" + std::string(row.sName) + ')',
                     "IfcDimensionalExponents(" + std::string(row.sExponents) + ')');
        pRun = std::make_unique<ExpressRun>(*oxa::ifc::SchemaLoader::pBuiltIn(schema.sName),
                                            oxa::test::sRuleTable(schema.sName), m_sTests, sData());
    }

    // "#12=IfcPlane" becomes "@plane".
    [[nodiscard]] std::string sNamed(const std::string& sText) const {
        std::string sResult;
        for (std::size_t i = 0; i < sText.size(); ++i) {
            if (sText[i] != '#') {
                sResult += sText[i];
                continue;
            }
            const std::size_t iNumber = std::stoul(sText.substr(i + 1));
            const auto it =
                std::find_if(numbers.begin(), numbers.end(), [&](const auto& pair) { return pair.second == iNumber; });
            sResult += '@' + it->first;
            i = std::min(sText.find_first_of(",)]", i), sText.size()) - 1;
        }
        return sResult;
    }

    struct Call {
        std::string sText;
        std::string sResult;
        std::vector<std::size_t> instances;   // arguments of the function that was made of the text
    };
    std::map<std::string, std::size_t> numbers;   // of the given instances
    std::set<std::string> functions;              // in capitals
    std::vector<std::string> unknown;
    std::vector<Call> calls;
    std::unique_ptr<ExpressRun> pRun;

private:
    [[nodiscard]] bool boHolds(unsigned uSchemas) const { return (uSchemas & m_uMask) != 0; }

    // Functions, and a call of each with no value in any place.
    void vReadFunctions(const char* sName) {
        std::vector<oxa::ifc::SchemaMessage> messages;
        oxa::check::express::SchemaRules rules;
        const std::string sTable = oxa::test::sRuleTable(sName);
        EXPECT_TRUE(oxa::check::express::Parser(sTable, messages).boReadSchema(rules));
        for (const auto& block : rules.outer.blocks) {
            if (block.kind != oxa::check::express::BlockKind::Function) continue;
            functions.insert(oxa::ifc::def::schema::sUpper(block.sName));
            std::size_t iArguments = 0;
            for (const auto& parameter : block.parameters) iArguments += parameter.names.size();
            std::string sUnknown;
            for (std::size_t i = 0; i < iArguments; ++i) sUnknown += i ? ", ?" : "?";
            unknown.push_back(block.sName);
            m_sTests += "FUNCTION u" + std::to_string(unknown.size() - 1) + " : GENERIC; RETURN (" + block.sName + '(' +
                        sUnknown + ")); END_FUNCTION; ";
        }
    }

    // A function whose parameters are the given instances that the text names.
    void vAdd(const std::string& sText, const std::string& sResult) {
        if (!functions.contains(sNameOf(sText))) return;
        Call call{sText, sResult, {}};
        std::string sParameters;
        for (std::size_t i = 0; i < sText.size(); ++i) {
            const std::string sWord = sWordAt(sText, i);
            if (sWord.empty()) continue;
            i += sWord.size() - 1;
            const auto it = numbers.find(sWord);
            if (it == numbers.end() || std::count(call.instances.begin(), call.instances.end(), it->second)) continue;
            sParameters += (sParameters.empty() ? "(" : ", ") + sWord;
            call.instances.push_back(it->second);
        }
        if (!sParameters.empty()) sParameters += " : GENERIC)";
        m_sTests += "FUNCTION t" + std::to_string(calls.size()) + sParameters + " : GENERIC; RETURN (" + sText +
                    "); END_FUNCTION; ";
        calls.push_back(std::move(call));
    }

    // Its own exponents are right, and others are not.
    void vAddUnit(const ExponentsRow& row) {
        const std::string sExponents = row.sExponents;
        const std::string sBegin = "IfcCorrectDimensions(" + std::string(row.sName) + ", IfcDimensionalExponents(";
        vAdd(sBegin + sExponents + "))", "TRUE");
        vAdd(sBegin + '9' + sExponents.substr(sExponents.find(',')) + "))", "FALSE");
    }

    // "@x" becomes the number of x.
    [[nodiscard]] std::string sData() const {
        std::string sResult;
        for (const GivenInstance& given : oxa::test::givenInstances()) {
            if (!boHolds(given.uSchemas)) continue;
            sResult += '#' + std::to_string(numbers.at(given.sName)) + '=';
            const std::string_view text = given.sStatement;
            for (std::size_t i = 0; i < text.size(); ++i) {
                if (text[i] != '@') {
                    sResult += text[i];
                    continue;
                }
                const std::string sName = sWordAt(text, i + 1);
                sResult += '#' + std::to_string(numbers.at(sName));
                i += sName.size();
            }
            sResult += ";\n";
        }
        return sResult;
    }

    unsigned m_uMask;
    std::string m_sTests;
};

class SchemaFunctionTest : public testing::TestWithParam<SchemaName> {
protected:
    // Compiled once for all tests.
    static Calls& calls() {
        static std::map<unsigned, std::unique_ptr<Calls>> made;
        std::unique_ptr<Calls>& pCalls = made[GetParam().uMask];
        if (!pCalls) pCalls = std::make_unique<Calls>(GetParam());
        return *pCalls;
    }
};

TEST_P(SchemaFunctionTest, GivesWhatIsExpected) {
    for (std::size_t i = 0; i < calls().calls.size(); ++i) {
        const Calls::Call& call = calls().calls[i];
        EXPECT_EQ(calls().sNamed(calls().pRun->sCalled("t" + std::to_string(i), call.instances)), call.sResult)
            << call.sText;
    }
}

// Each statement of the table was read, so that no row is about an instance that is not there.
TEST_P(SchemaFunctionTest, HasItsInstances) {
    for (const auto& [sName, iNumber] : calls().numbers)
        EXPECT_NE(calls().pRun->file.data().pEntityFromId(iNumber), nullptr) << sName;
    EXPECT_EQ(calls().pRun->sLosses, "");
}

TEST_P(SchemaFunctionTest, TakesWhatHasNoValue) {
    for (std::size_t i = 0; i < calls().unknown.size(); ++i) {
        const std::string sResult = calls().pRun->sCalled("u" + std::to_string(i));
        EXPECT_FALSE(sResult.starts_with("fault")) << calls().unknown[i] << ": " << sResult;
    }
}

TEST_P(SchemaFunctionTest, EachIsCalled) {
    std::set<std::string> missing = calls().functions;
    for (const Calls::Call& call : calls().calls) missing.erase(sNameOf(call.sText));
    std::string sMissing;
    for (const std::string& sName : missing) sMissing += ' ' + sName;
    EXPECT_EQ(sMissing, "");
}

INSTANTIATE_TEST_SUITE_P(Schemas, SchemaFunctionTest,
                         testing::Values(SchemaName{"IFC2X3", oxa::test::g_uIfc2x3},
                                         SchemaName{"IFC4", oxa::test::g_uIfc4},
                                         SchemaName{"IFC4X3_ADD2", oxa::test::g_uIfc4x3}));

}   // namespace
