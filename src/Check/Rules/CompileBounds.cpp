// SPDX-License-Identifier: Apache-2.0
// Bounds of aggregates that are expressions, as in "LIST [1:Count] OF REAL": a rule of the attribute or of the type, which
// is evaluated as its WHERE rules are. Bounds that are numbers are the schema level's.
#include <algorithm>

#include "Check/Express/Parser.h"
#include "Check/Express/Printer.h"
#include "Check/Rules/Scope.h"

namespace oxa::check::rules {

namespace {

bool boNumber(std::string_view bound) {
    return std::all_of(bound.begin(), bound.end(), [](char c) { return c >= '0' && c <= '9'; }) || bound == "?" ||
           (bound.starts_with('-') && boNumber(bound.substr(1)));
}

// The condition that the number of items keeps to the bounds; empty where these are numbers.
std::string sCondition(const schema::ObjectBase* pType, const std::string& sValue) {
    const schema::DataTypeBase* pData = schema::pDataTypeOf(pType);
    if (!pData || !schema::boIsAggregate(pData->kind)) return {};
    const std::string_view bounds = static_cast<const schema::DataTypeAggregate*>(pData)->sBounds;
    std::size_t iColon = 0;
    for (std::size_t i = 1, iOpen = 0; i < bounds.size() && iColon == 0; ++i) {
        if (bounds[i] == '(' || bounds[i] == '[' || bounds[i] == '{') ++iOpen;
        if (bounds[i] == ')' || bounds[i] == ']' || bounds[i] == '}') --iOpen;
        if (bounds[i] == ':' && iOpen == 0) iColon = i;
    }
    if (iColon == 0) return {};
    const std::string sLow(bounds.substr(1, iColon - 1));
    const std::string sHigh(bounds.substr(iColon + 1, bounds.size() - iColon - 2));
    if (boNumber(sLow) && boNumber(sHigh)) return {};
    const std::string sCount = "SIZEOF(" + sValue + ")";
    std::string sResult = sValue == "SELF" ? "" : "NOT EXISTS(" + sValue + ") OR ";
    if (pData->kind == schema::DataKind::Array)
        return sResult + '(' + sCount + " = (" + sHigh + ") - (" + sLow + ") + 1)";
    if (sHigh == "?") return sResult + '(' + sCount + " >= " + sLow + ')';
    return sResult + "{(" + sLow + ") <= " + sCount + " <= (" + sHigh + ")}";
}

}   // namespace

void CodeMaker::vCompileBounds(const schema::ObjectBase* pType, const std::string& sOwner,
                               const std::string& sAttribute, const schema::Entity* pEntity) {
    const std::string sText = sCondition(pType, pEntity ? sAttribute : "SELF");
    if (sText.empty()) return;
    std::vector<ifc::SchemaMessage> messages;
    express::ExpressionPtr pTree = express::Parser(sText, messages).pReadExpression();
    const schema::ObjectBase* const pOwner = pEntity ? pEntity : pType;
    Rule& rule = newRule(pEntity ? Rule::Sort::Entity : Rule::Sort::Type, sOwner, sAttribute, 0, pOwner);
    const auto iRule = static_cast<std::uint32_t>(m_program.rules.size() - 1);
    (pEntity ? m_program.entityRules[pEntity->iTypeOrdinal] : m_program.typeRules[schema::pAsType(pType)])
        .push_back(iRule);
    if (!pTree) {
        rule.code.sFault = "its bounds can't be read: " + messages.front().sText;
        return;
    }
    rule.sText = express::sText(*pTree);
    vCompileCode(rule.code, *m_program.bounds.emplace_back(std::move(pTree)), pEntity);
}

// Of all types and entities, those without rules of their own too.
void CodeMaker::vCompileAllBounds() {
    for (const schema::Schema::Record& record : m_program.graph.objects) {
        if (const schema::Type* pType = schema::pAsType(record.pObject); pType && !pType->pDeclared)
            vCompileBounds(pType, pType->sName, "bounds", nullptr);
        const schema::Entity* pEntity = schema::pAsEntity(record.pObject);
        if (!pEntity) continue;
        for (const schema::Attribute& attribute : pEntity->ownAttributes)
            if (!schema::pAsType(attribute.pType()))
                vCompileBounds(attribute.pType(), pEntity->sName, attribute.sName, pEntity);
    }
}

}   // namespace oxa::check::rules
