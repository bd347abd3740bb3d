// SPDX-License-Identifier: Apache-2.0
// Scope: what names mean at a place of a text, while it is compiled; and the making of expressions and statements.
//
// For      Compiler alone, which splits over several sources: CompileExpression.cpp, CompileStatement.cpp, Compiler.cpp.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Check/Express/Tree.h"
#include "Check/Rules/Code.h"
#include "Check/Rules/Handlers.h"

namespace oxa::check::rules {

// What a name stands for.
struct Symbol {
    enum class Sort : std::uint8_t { Variable, Alias, Constant, Routine };
    Sort sort = Sort::Variable;
    std::uint32_t iSlot = 0;
    std::uint16_t iLevel = 0;
    const TypeCode* pType = nullptr;
    Target target;                 // of an alias
    const Node* pNode = nullptr;   // the same as a value
    Routine* pRoutine = nullptr;
};

// A routine that is being compiled: its frame, and the names that are known in it, in capitals.
struct Scope {
    Routine* pRoutine = nullptr;
    Scope* pOuter = nullptr;
    std::map<std::string, Symbol, std::less<>> symbols;
    const schema::Entity* pSelf = nullptr;   // of rules and derived attributes of an entity

    // A further variable of the frame.
    std::uint32_t iNewSlot() { return pRoutine->iSlots++; }
};

class CodeMaker {
public:
    explicit CodeMaker(Program& program) : m_program(program) {}

    // Declares all that the schema declares, then compiles it. False where its tables would be larger than any schema's.
    [[nodiscard]] bool boCompileAll();

private:
    // Compiler.cpp
    void vDeclareAttributes();
    void vDeclareGlobals();
    void vCompileTypes();
    void vCompileEntities();
    void vCompileDerived();
    void vCompileUnique(const express::EntityRules& tree, const schema::Entity& entity);
    void vCompileGlobalRules();
    [[nodiscard]] bool boMakeAccesses();
    [[nodiscard]] bool boInheritRules();
    Rule& newRule(Rule::Sort sort, const std::string& sOwner, const std::string& sLabel, std::size_t iPosition,
                  const schema::ObjectBase* pOwner);
    // An expression as a routine of its own; a fault stays in it.
    void vCompileCode(Routine& code, const express::Expression& tree, const schema::Entity* pSelf);
    void vDeclareBlocks(const express::Declarations& declarations, Scope& scope, std::uint16_t iLevel);
    void vCompileBlock(const express::Block& block, Scope& outer, Routine& routine);
    void vDeclareParameters(const express::Block& block, Scope& scope);
    void vCompileLocals(const express::Block& block, Scope& scope);

    // CompileBounds.cpp
    void vCompileBounds(const schema::ObjectBase* pType, const std::string& sOwner, const std::string& sAttribute,
                        const schema::Entity* pEntity);
    void vCompileAllBounds();

    // CompileExpression.cpp. What can't be compiled is told once (vFault), and gives a node that is never run.
    const Node* pExpression(const express::Expression& tree);
    const Node* pName(const express::Expression& tree);
    const Node* pSymbol(const express::Expression& tree, const Symbol& symbol);
    const Node* pEnumerator(const express::Expression& tree, const schema::DataTypeEnum* pEnum);
    const Node* pAttribute(const express::Expression& tree);
    const Node* pGroup(const express::Expression& tree);
    const Node* pIndex(const express::Expression& tree);
    const Node* pCall(const express::Expression& tree);
    const Node* pBuiltin(const express::Expression& tree, const run::Builtin& builtin);
    const Node* pConstruct(const express::Expression& tree, const schema::Entity& entity);
    const Node* pRoutineCall(const express::Expression& tree, const Routine& routine);
    const Node* pAggregate(const express::Expression& tree);
    Node& query(const express::Expression& tree);
    const Node* pInterval(const express::Expression& tree);
    const Node* pUnary(const express::Expression& tree);
    const Node* pBinary(const express::Expression& tree);
    const Node* pTypeQuestion(const express::Expression& tree);
    const Node* pTypeCount(const express::Expression& tree, const express::Expression& argument);
    const Node* pConstant(const express::Expression& tree);
    const Node* pNumber(const express::Expression& tree);
    const Node* pBits(const express::Expression& tree);
    const Node* pText(const express::Expression& tree, std::string sValue);
    [[nodiscard]] TypeTarget typeTarget(std::string_view name) const;
    Node& newNode(const express::Expression& tree, Handler pRun);
    const Node* pFault(const express::Expression& tree, std::string sWhy);

    // CompileStatement.cpp
    std::vector<const Step*> steps(const express::Body& body);
    const Step* pStep(const express::Statement& tree);
    void vAssignment(const express::Statement& tree, Step& step);
    void vAlias(const express::Statement& tree, Step& step);
    void vCase(const express::Statement& tree, Step& step);
    void vProcedure(const express::Statement& tree, Step& step);
    void vRepeat(const express::Statement& tree, Step& step);
    [[nodiscard]] std::optional<Target> target(const express::Expression& tree);
    const TypeCode* pTypeCode(const express::TypeTree& tree);
    void vFault(express::Place place, std::string sWhy);

    [[nodiscard]] const Symbol* pFind(std::string_view upper) const;
    [[nodiscard]] bool boHasAttribute(const schema::Entity& entity, std::string_view upper);
    [[nodiscard]] std::uint16_t iHopsTo(const Symbol& symbol) const {
        return static_cast<std::uint16_t>(m_pScope->pRoutine->iLevel - symbol.iLevel);
    }

    Program& m_program;
    Scope* m_pScope = nullptr;
    Scope m_global;
    std::map<std::pair<const schema::Entity*, std::string>, std::uint32_t> m_derived;   // own ones, by name in capitals
    std::map<const schema::Entity*, std::set<std::string, std::less<>>> m_attributes;   // own ones, made when asked for
    std::multimap<std::string, const schema::DataTypeEnum*, std::less<>> m_enumerators;   // by item, in capitals
    std::map<const express::Block*, Routine*> m_routineOf;
};

}   // namespace oxa::check::rules
