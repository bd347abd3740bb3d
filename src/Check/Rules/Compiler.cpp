// SPDX-License-Identifier: Apache-2.0
// The declarations of a schema to a program, and the tables by which it runs.
#include "Check/Rules/Compiler.h"

#include <algorithm>

#include "Check/Express/Printer.h"
#include "Check/Rules/Scope.h"
#include "Format/Ifc/IfcFileEntity.h"

namespace oxa::check::rules {

using schema::sUpper;

std::uint32_t Program::iName(std::string_view upper) {
    const auto [pEntry, boNew] = m_nameIndex.emplace(upper, static_cast<std::uint32_t>(names.size()));
    if (boNew) names.emplace_back(upper);
    return pEntry->second;
}

std::uint32_t Program::iFindName(std::string_view upper) const {
    const auto pEntry = m_nameIndex.find(std::string(upper));
    return pEntry == m_nameIndex.end() ? static_cast<std::uint32_t>(names.size()) : pEntry->second;
}

namespace {

// Of a table: the largest published schema has some hundred thousand.
constexpr std::size_t g_iMostEntries = 20'000'000;

// All entities, supertypes first: in the order of their ordinals.
std::vector<const schema::Entity*> entitiesOf(const schema::Schema& graph) {
    std::vector<const schema::Entity*> result;
    for (const schema::Schema::Record& record : graph.objects)
        if (const schema::Entity* pEntity = schema::pAsEntity(record.pObject)) result.push_back(pEntity);
    std::sort(result.begin(), result.end(),
              [](const schema::Entity* a, const schema::Entity* b) { return a->iTypeOrdinal < b->iTypeOrdinal; });
    return result;
}

}   // namespace

const Symbol* CodeMaker::pFind(std::string_view upper) const {
    for (const Scope* pScope = m_pScope; pScope; pScope = pScope->pOuter) {
        const auto pSymbol = pScope->symbols.find(upper);
        if (pSymbol != pScope->symbols.end()) return &pSymbol->second;
    }
    return nullptr;
}

bool CodeMaker::boHasAttribute(const schema::Entity& entity, std::string_view upper) {
    const std::string sName(upper);
    for (const schema::Entity* p = &entity; p; p = p->pParent) {
        const auto [pNames, boNew] = m_attributes.try_emplace(p);
        if (boNew) {
            for (const schema::Attribute& attribute : p->ownAttributes) pNames->second.insert(sUpper(attribute.sName));
            for (const schema::AttributeInverse& attribute : p->ownInverseAttributes)
                pNames->second.insert(sUpper(attribute.sName));
        }
        if (pNames->second.contains(sName) || m_derived.contains({p, sName})) return true;
    }
    return false;
}

// Derived attributes, by entity and name, before any expression asks whether a name is one.
void CodeMaker::vDeclareAttributes() {
    for (const express::EntityRules& tree : m_program.trees.entities) {
        const schema::Entity* pEntity = schema::pAsEntity(m_program.graph.pObjectFromName(tree.sName));
        for (const express::Declaration& attribute : tree.derived) {
            DerivedAttribute& derived = m_program.derived.emplace_back();
            derived.pOwner = pEntity;
            derived.sName = attribute.names.front();
            derived.sGroup = attribute.sGroup;
            if (!pEntity) continue;
            const auto iDerived = static_cast<std::uint32_t>(m_program.derived.size() - 1);
            for (const std::string& sName : {derived.sName, attribute.sRenamed}) {
                if (sName.empty()) continue;
                m_derived[{pEntity, sUpper(sName)}] = iDerived;
                m_program.iName(sUpper(sName));
            }
        }
    }
    for (const schema::Schema::Record& record : m_program.graph.objects)
        if (const auto* pEnum = dynamic_cast<const schema::DataTypeEnum*>(schema::pDataTypeOf(record.pObject)))
            for (const std::string& sItem : pEnum->declared) m_enumerators.emplace(sUpper(sItem), pEnum);
}

void CodeMaker::vDeclareBlocks(const express::Declarations& declarations, Scope& scope, std::uint16_t iLevel) {
    for (const express::Declaration& constant : declarations.constants) {
        Symbol symbol;
        symbol.sort = Symbol::Sort::Constant;
        symbol.pRoutine = &m_program.routines.emplace_back();
        symbol.pRoutine->sName = constant.names.front();
        scope.symbols[sUpper(constant.names.front())] = symbol;
    }
    for (const express::Block& block : declarations.blocks) {
        if (block.kind == express::BlockKind::Rule) continue;
        Routine& routine = m_program.routines.emplace_back();
        routine.sName = block.sName;
        routine.iLevel = iLevel;
        routine.boProcedure = block.kind == express::BlockKind::Procedure;
        for (const express::Declaration& parameter : block.parameters)
            for (std::size_t i = 0; i < parameter.names.size(); ++i)
                routine.parameters.push_back({nullptr, nullptr, parameter.boVar});
        m_routineOf[&block] = &routine;
        Symbol symbol;
        symbol.sort = Symbol::Sort::Routine;
        symbol.pRoutine = &routine;
        scope.symbols[sUpper(block.sName)] = symbol;
    }
}

void CodeMaker::vDeclareParameters(const express::Block& block, Scope& scope) {
    scope.pRoutine->parameters.clear();
    for (const express::Declaration& declaration : block.parameters) {
        const TypeCode* pType = pTypeCode(declaration.type);
        for (const std::string& sName : declaration.names) {
            Symbol symbol;
            symbol.iSlot = scope.iNewSlot();
            symbol.iLevel = scope.pRoutine->iLevel;
            symbol.pType = pType;
            scope.symbols[sUpper(sName)] = symbol;
            scope.pRoutine->parameters.push_back({pType, nullptr, declaration.boVar});
        }
    }
}

// Slots: parameters, then locals, in the order of their declaration.
void CodeMaker::vCompileBlock(const express::Block& block, Scope& outer, Routine& routine) {
    Scope scope;
    scope.pRoutine = &routine;
    scope.pOuter = &outer;
    Scope* const pBefore = m_pScope;
    m_pScope = &scope;
    vDeclareParameters(block, scope);
    for (const std::string& sPopulation : block.populations) {
        Symbol symbol;
        symbol.iSlot = scope.iNewSlot();
        symbol.iLevel = routine.iLevel;
        scope.symbols[sUpper(sPopulation)] = symbol;
        routine.parameters.emplace_back();
    }
    vCompileLocals(block, scope);
    if (block.kind == express::BlockKind::Function) routine.pResult = pTypeCode(block.result);
    for (const express::Declaration& constant : block.inner.constants) {
        Routine& code = *scope.symbols.find(sUpper(constant.names.front()))->second.pRoutine;
        code.iLevel = static_cast<std::uint16_t>(routine.iLevel + 1);
        Scope inner;
        inner.pRoutine = &code;
        inner.pOuter = &scope;
        m_pScope = &inner;
        code.pExpression = pExpression(*constant.pValue);
        m_pScope = &scope;
    }
    for (const express::Block& inner : block.inner.blocks) vCompileBlock(inner, scope, *m_routineOf.at(&inner));
    routine.body = steps(block.body);
    for (const express::DomainRule& tree : block.rules) {
        Rule& rule = newRule(Rule::Sort::Global, block.sName, tree.sLabel,
                             static_cast<std::size_t>(&tree - block.rules.data()), nullptr);
        rule.sText = express::sText(*tree.pCondition);
        rule.pGlobal = &routine;
        rule.code.pExpression = pExpression(*tree.pCondition);
    }
    m_pScope = pBefore;
}

// The slots of locals stand together: what their expressions need comes behind them.
void CodeMaker::vCompileLocals(const express::Block& block, Scope& scope) {
    Routine& routine = *scope.pRoutine;
    std::uint32_t iLocal = routine.iSlots;
    for (const express::Declaration& local : block.locals)
        routine.iSlots += static_cast<std::uint32_t>(local.names.size());
    vDeclareBlocks(block.inner, scope, static_cast<std::uint16_t>(routine.iLevel + 1));
    for (const express::Declaration& local : block.locals) {
        Routine::Variable variable;
        variable.pType = pTypeCode(local.type);
        for (const std::string& sName : local.names) {
            // Of several names with one value each has its own.
            variable.pValue = local.pValue ? pExpression(*local.pValue) : nullptr;
            Symbol symbol;
            symbol.iSlot = iLocal++;
            symbol.iLevel = routine.iLevel;
            symbol.pType = variable.pType;
            scope.symbols[sUpper(sName)] = symbol;
            routine.locals.push_back(variable);
        }
    }
}

void CodeMaker::vCompileCode(Routine& code, const express::Expression& tree, const schema::Entity* pSelf) {
    Scope scope;
    scope.pRoutine = &code;
    scope.pOuter = &m_global;
    scope.pSelf = pSelf;
    m_pScope = &scope;
    code.pExpression = pExpression(tree);
    m_pScope = &m_global;
}

Rule& CodeMaker::newRule(Rule::Sort sort, const std::string& sOwner, const std::string& sLabel, std::size_t iPosition,
                         const schema::ObjectBase* pOwner) {
    Rule& rule = m_program.rules.emplace_back();
    rule.sort = sort;
    // One without a label has its number for a name.
    rule.sName = sOwner + '.' + (sLabel.empty() ? std::to_string(iPosition + 1) : sLabel);
    rule.pOwner = pOwner;
    return rule;
}

void CodeMaker::vCompileTypes() {
    for (const express::TypeRules& tree : m_program.trees.types) {
        const schema::Type* pType = schema::pAsType(m_program.graph.pObjectFromName(tree.sName));
        for (const express::DomainRule& domain : tree.rules) {
            Rule& rule = newRule(Rule::Sort::Type, tree.sName, domain.sLabel,
                                 static_cast<std::size_t>(&domain - tree.rules.data()), pType);
            rule.sText = express::sText(*domain.pCondition);
            vCompileCode(rule.code, *domain.pCondition, nullptr);
            if (pType) m_program.typeRules[pType].push_back(static_cast<std::uint32_t>(m_program.rules.size() - 1));
        }
    }
}

void CodeMaker::vCompileUnique(const express::EntityRules& tree, const schema::Entity& entity) {
    for (const express::UniqueRule& unique : tree.uniques) {
        Rule& rule = newRule(Rule::Sort::Unique, tree.sName, unique.sLabel,
                             static_cast<std::size_t>(&unique - tree.uniques.data()), &entity);
        Scope scope;
        scope.pRoutine = &rule.code;
        scope.pOuter = &m_global;
        scope.pSelf = &entity;
        m_pScope = &scope;
        for (const express::ExpressionPtr& pAttribute : unique.attributes) {
            rule.sText += (rule.sText.empty() ? "" : ", ") + express::sText(*pAttribute);
            rule.attributes.push_back(pExpression(*pAttribute));
        }
        m_pScope = &m_global;
        m_program.uniqueRules[entity.iTypeOrdinal].push_back(static_cast<std::uint32_t>(m_program.rules.size() - 1));
    }
}

void CodeMaker::vCompileEntities() {
    for (const express::EntityRules& tree : m_program.trees.entities) {
        const schema::Entity* pEntity = schema::pAsEntity(m_program.graph.pObjectFromName(tree.sName));
        if (!pEntity) continue;
        for (const express::DomainRule& domain : tree.rules) {
            Rule& rule = newRule(Rule::Sort::Entity, tree.sName, domain.sLabel,
                                 static_cast<std::size_t>(&domain - tree.rules.data()), pEntity);
            rule.sText = express::sText(*domain.pCondition);
            vCompileCode(rule.code, *domain.pCondition, pEntity);
            m_program.entityRules[pEntity->iTypeOrdinal].push_back(
                static_cast<std::uint32_t>(m_program.rules.size() - 1));
        }
        vCompileUnique(tree, *pEntity);
    }
}

void CodeMaker::vCompileDerived() {
    std::size_t iDerived = 0;
    for (const express::EntityRules& tree : m_program.trees.entities) {
        for (const express::Declaration& attribute : tree.derived) {
            DerivedAttribute& derived = m_program.derived[iDerived++];
            derived.code.sName = tree.sName + '.' + derived.sName;
            if (!derived.pOwner) continue;
            vCompileCode(derived.code, *attribute.pValue, derived.pOwner);
        }
    }
}

void CodeMaker::vCompileGlobalRules() {
    for (const express::Block& block : m_program.trees.outer.blocks) {
        if (block.kind != express::BlockKind::Rule) continue;
        GlobalRule& global = m_program.globals.emplace_back();
        global.sName = block.sName;
        global.code.sName = block.sName;
        global.code.iLevel = 1;
        const auto iFirst = static_cast<std::uint32_t>(m_program.rules.size());
        vCompileBlock(block, m_global, global.code);
        for (auto i = iFirst; i < m_program.rules.size(); ++i) global.rules.push_back(i);
        for (const std::string& sPopulation : block.populations) {
            const schema::Entity* pEntity = schema::pAsEntity(m_program.graph.pObjectFromName(sPopulation));
            if (pEntity)
                global.populations.push_back(pEntity);
            else if (global.code.sFault.empty())
                global.code.sFault = sPopulation + " is no entity";
        }
    }
}

// What each name means for each type: as for its supertype, but for what the type declares itself.
bool CodeMaker::boMakeAccesses() {
    Program& program = m_program;
    const std::size_t iNames = program.names.size();
    const std::vector<const schema::Entity*> entities = entitiesOf(program.graph);
    const std::size_t iRows = entities.empty() ? 1 : std::size_t{entities.back()->iTypeOrdinal} + 1;
    if (iRows * iNames > g_iMostEntries) return false;
    program.accesses.emplace_back();
    program.accessOf.resize(iRows * iNames);
    for (const schema::Entity* pEntity : entities) {
        const auto pRow = program.accessOf.begin() + static_cast<std::ptrdiff_t>(pEntity->iTypeOrdinal * iNames);
        if (pEntity->pParent)
            std::copy_n(program.accessOf.begin() + static_cast<std::ptrdiff_t>(pEntity->pParent->iTypeOrdinal * iNames),
                        iNames, pRow);
        const auto vSet = [&](const std::string& sName, const Access& access) {
            const std::uint32_t iName = program.iFindName(sUpper(sName));
            if (iName == iNames) return;
            pRow[static_cast<std::ptrdiff_t>(iName)] = static_cast<std::uint32_t>(program.accesses.size());
            program.accesses.push_back(access);
        };
        std::size_t iPosition = pEntity->allAttributes().size() - pEntity->ownAttributes.size();
        for (const schema::Attribute& attribute : pEntity->ownAttributes) {
            Access access;
            access.way = Access::Way::Cell;
            access.iPosition = static_cast<std::uint32_t>(iPosition);
            const ifc::DataSizeEntity::Cell& cell = ifc::Entity::getDataSize(*pEntity).cells[iPosition++];
            access.eClass = cell.eClass;
            access.iOffset = cell.iOffset;
            access.pType = attribute.pType();
            vSet(attribute.sName, access);
        }
        iPosition = pEntity->allInverseAttributes().size() - pEntity->ownInverseAttributes.size();
        for (const schema::AttributeInverse& attribute : pEntity->ownInverseAttributes) {
            Access access;
            access.way = Access::Way::Inverse;
            access.iPosition = static_cast<std::uint32_t>(iPosition++);
            access.boAggregate = attribute.boAggregate;
            vSet(attribute.sName, access);
        }
        for (auto pOwn = m_derived.lower_bound({pEntity, {}}); pOwn != m_derived.end() && pOwn->first.first == pEntity;
             ++pOwn) {
            Access access;
            access.way = Access::Way::Derived;
            access.iDerived = pOwn->second;
            vSet(pOwn->first.second, access);
        }
    }
    return true;
}

// Rules of supertypes hold for subtypes, those of a defined type for the types declared by it.
bool CodeMaker::boInheritRules() {
    Program& program = m_program;
    std::size_t iEntries = 0;
    for (const schema::Entity* pEntity : entitiesOf(program.graph)) {
        if (!pEntity->pParent) continue;
        std::vector<std::uint32_t>& own = program.entityRules[pEntity->iTypeOrdinal];
        const std::vector<std::uint32_t>& above = program.entityRules[pEntity->pParent->iTypeOrdinal];
        iEntries += own.size() + above.size();
        if (iEntries > g_iMostEntries) return false;
        own.insert(own.begin(), above.begin(), above.end());
    }
    std::unordered_map<const schema::Type*, std::vector<std::uint32_t>> all;
    for (const schema::Schema::Record& record : program.graph.objects) {
        const schema::Type* pType = schema::pAsType(record.pObject);
        std::vector<std::uint32_t> found;
        for (const schema::Type* p = pType; p; p = p->pDeclared, ++iEntries)
            if (const auto pRules = program.typeRules.find(p); pRules != program.typeRules.end())
                found.insert(found.begin(), pRules->second.begin(), pRules->second.end());
        iEntries += found.size();
        if (iEntries > g_iMostEntries) return false;
        if (!found.empty()) all.emplace(pType, std::move(found));
    }
    program.typeRules = std::move(all);
    return true;
}

bool CodeMaker::boCompileAll() {
    Routine outer;   // of what stands in no block: only names
    m_global.pRoutine = &outer;
    m_pScope = &m_global;
    std::uint16_t iLast = 0;
    for (const schema::Entity* pEntity : entitiesOf(m_program.graph)) iLast = std::max(iLast, pEntity->iTypeOrdinal);
    m_program.entityRules.resize(std::size_t{iLast} + 1);
    m_program.uniqueRules.resize(std::size_t{iLast} + 1);
    vDeclareAttributes();
    vDeclareBlocks(m_program.trees.outer, m_global, 1);
    for (const express::Declaration& constant : m_program.trees.outer.constants)
        vCompileCode(*m_global.symbols.find(sUpper(constant.names.front()))->second.pRoutine, *constant.pValue,
                     nullptr);
    for (const express::Block& block : m_program.trees.outer.blocks)
        if (block.kind != express::BlockKind::Rule) vCompileBlock(block, m_global, *m_routineOf.at(&block));
    vCompileTypes();
    vCompileEntities();
    vCompileAllBounds();
    vCompileDerived();
    vCompileGlobalRules();
    return boMakeAccesses() && boInheritRules();
}

std::unique_ptr<const Program> pCompile(const schema::Schema& graph, express::SchemaRules trees) {
    auto pProgram = std::make_unique<Program>(graph);
    pProgram->trees = std::move(trees);
    return CodeMaker(*pProgram).boCompileAll() ? std::move(pProgram) : nullptr;
}

}   // namespace oxa::check::rules
