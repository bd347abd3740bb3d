// SPDX-License-Identifier: Apache-2.0
#include "Check/Express/Difference.h"

#include <algorithm>
#include <utility>

#include "Check/Express/Printer.h"
#include "schema/Schema.h"

namespace oxa::check::express {

namespace {

using ifc::def::schema::sUpper;

constexpr std::string_view g_base = "BASE ";
constexpr std::string_view g_drop = "DROP ";
constexpr std::string_view g_end = ";\n";

const std::string& sNameOf(const Declaration& constant) { return constant.names.front(); }
template <class Named>
const std::string& sNameOf(const Named& named) {
    return named.sName;
}

// Functions and procedures stand in front of rules.
template <class Named>
auto orderOf(const Named& named) {
    return std::pair(false, sUpper(sNameOf(named)));
}
auto orderOf(const Block& block) { return std::pair(block.kind == BlockKind::Rule, sUpper(block.sName)); }

// The declarations of one sort of a schema.
std::vector<TypeRules>& rowOf(SchemaRules& rules, const TypeRules*) { return rules.types; }
std::vector<EntityRules>& rowOf(SchemaRules& rules, const EntityRules*) { return rules.entities; }
std::vector<Declaration>& rowOf(SchemaRules& rules, const Declaration*) { return rules.outer.constants; }
std::vector<Block>& rowOf(SchemaRules& rules, const Block*) { return rules.outer.blocks; }

// As text, each on its own.
template <class Named>
std::vector<std::string> textsOf(std::vector<Named>& row) {
    std::vector<std::string> texts;
    for (Named& named : row) {
        SchemaRules alone;
        std::vector<Named>& only = rowOf(alone, &named);
        only.push_back(std::move(named));
        texts.push_back(sText(alone));
        named = std::move(only.front());
    }
    return texts;
}

template <class Named>
auto found(std::vector<Named>& row, const Named& named) {
    return std::find_if(row.begin(), row.end(), [&](const Named& other) { return orderOf(other) == orderOf(named); });
}

template <class Named>
void vDiffer(std::vector<Named>& own, std::vector<Named>& base, RuleDifference& result) {
    const std::vector<std::string> ownTexts = textsOf(own);
    const std::vector<std::string> baseTexts = textsOf(base);
    for (const Named& named : base)
        if (found(own, named) == own.end()) result.dropped.push_back(sNameOf(named));
    for (std::size_t i = 0; i < own.size(); ++i) {
        const auto pBase = found(base, own[i]);
        if (pBase != base.end() && baseTexts[static_cast<std::size_t>(pBase - base.begin())] == ownTexts[i]) continue;
        rowOf(result.rules, &own[i]).push_back(std::move(own[i]));
    }
}

template <class Named>
void vApplyRow(std::vector<Named>& base, std::vector<Named>& changed, const std::vector<std::string>& dropped) {
    std::erase_if(base, [&](const Named& named) {
        return std::find(dropped.begin(), dropped.end(), sNameOf(named)) != dropped.end();
    });
    for (Named& named : changed) {
        if (const auto pOld = found(base, named); pOld != base.end()) {
            *pOld = std::move(named);
            continue;
        }
        const auto pBehind =
            std::find_if(base.begin(), base.end(), [&](const Named& other) { return orderOf(named) < orderOf(other); });
        base.insert(pBehind, std::move(named));
    }
}

// What stands between the word and ";", which ends its line; the text goes on behind it.
std::string_view taken(std::string_view& text, std::string_view word) {
    if (!text.starts_with(word)) return {};
    const std::size_t iEnd = std::min(text.find(g_end), text.size());
    const std::string_view result = text.substr(word.size(), iEnd - word.size());
    text.remove_prefix(std::min(iEnd + g_end.size(), text.size()));
    return result;
}

}   // namespace

RuleDifference difference(SchemaRules own, SchemaRules base, std::string sBase) {
    RuleDifference result;
    result.sBase = std::move(sBase);
    result.rules.sName = own.sName;
    vDiffer(own.types, base.types, result);
    vDiffer(own.entities, base.entities, result);
    vDiffer(own.outer.constants, base.outer.constants, result);
    vDiffer(own.outer.blocks, base.outer.blocks, result);
    return result;
}

void vApply(SchemaRules& base, RuleDifference difference) {
    base.sName = std::move(difference.rules.sName);
    vApplyRow(base.types, difference.rules.types, difference.dropped);
    vApplyRow(base.entities, difference.rules.entities, difference.dropped);
    vApplyRow(base.outer.constants, difference.rules.outer.constants, difference.dropped);
    vApplyRow(base.outer.blocks, difference.rules.outer.blocks, difference.dropped);
}

std::string sText(const RuleDifference& difference) {
    std::string sResult(g_base);
    sResult.append(difference.sBase).append(g_end);
    if (!difference.dropped.empty()) {
        sResult += g_drop;
        for (const std::string& sName : difference.dropped)
            sResult.append(&sName == difference.dropped.data() ? "" : ", ").append(sName);
        sResult += g_end;
    }
    return sResult + sText(difference.rules);
}

RuleDifference differenceHead(std::string_view& text) {
    RuleDifference result;
    result.sBase = taken(text, g_base);
    std::string_view names = taken(text, g_drop);
    while (!names.empty()) {
        const std::size_t iComma = std::min(names.find(", "), names.size());
        result.dropped.emplace_back(names.substr(0, iComma));
        names.remove_prefix(std::min(iComma + 2, names.size()));
    }
    return result;
}

std::string sRenamed(std::string_view text, std::string_view from, std::string_view to) {
    const std::string sFrom = '\'' + std::string(from) + '.';
    std::string sResult;
    for (;;) {
        const std::size_t iAt = std::min(text.find(sFrom), text.size());
        sResult += text.substr(0, iAt);
        if (iAt == text.size()) return sResult;
        sResult.append("'").append(to).append(".");
        text.remove_prefix(iAt + sFrom.size());
    }
}

}   // namespace oxa::check::express
