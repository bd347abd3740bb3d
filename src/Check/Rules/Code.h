// SPDX-License-Identifier: Apache-2.0
// Code: rules as they run: trees of nodes that call their own handler, with places in the place of names.
//
// For      Compiler, which makes it, Evaluator, which runs it.
// Owner    a Program owns all nodes, steps, routines and the trees that they were made of.
// Threads  read-only once made; any number of evaluators run one program.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Check/Express/Tree.h"
#include "Check/Rules/Value.h"
#include "Format/Ifc/IfcFileAttribute.h"
#include "schema/Schema.h"

namespace oxa::check::rules {

class Evaluator;
struct Node;
struct Step;
struct Routine;
struct TypeCode;

using Handler = Value (*)(Evaluator&, const Node&);
enum class Flow : std::uint8_t { Next, Escape, Skip, Return };
using StepHandler = Flow (*)(Evaluator&, const Step&);

// A value that TYPEOF is asked for: a type of the schema, or a base type.
struct TypeTarget {
    const schema::ObjectBase* pObject = nullptr;       // null for a base type, and for a name that no type has
    const schema::DataTypeSelect* pSelect = nullptr;   // of pObject
    std::string_view base;                             // as in "LIST"; empty for a type of the schema
};

struct Node {
    Handler pRun = nullptr;
    const Node* pFirst = nullptr;
    const Node* pSecond = nullptr;
    const Node* pThird = nullptr;
    std::vector<const Node*> operands;   // arguments, items
    Value value;                         // of a constant
    std::uint32_t iPlace = 0;            // slot, attribute name
    std::uint16_t iHops = 0;             // frames to go out for the slot
    bool boSecond = false;               // a variant of the handler
    const Routine* pRoutine = nullptr;
    const schema::Entity* pEntity = nullptr;
    std::vector<TypeTarget> targets;
    const TypeCode* pType = nullptr;
    const express::Expression* pSource = nullptr;   // null for a node of no place in the text
};

// Of a declared variable, parameter or result: what an aggregate becomes that is stored there.
struct TypeCode {
    AggregateKind kind = AggregateKind::Literal;   // Literal: no aggregate is declared
    const Node* pLow = nullptr;
    const Node* pHigh = nullptr;
    const TypeCode* pElement = nullptr;
    const schema::ObjectBase* pObject = nullptr;   // a defined type
};

// Where an assignment goes: a variable, then into it.
struct Target {
    struct Part {
        const Node* pIndex = nullptr;   // null for an attribute or a group
        std::uint32_t iName = 0;
        const schema::Entity* pGroup = nullptr;
    };
    std::uint32_t iSlot = 0;
    std::uint16_t iHops = 0;
    std::vector<Part> parts;
    const TypeCode* pType = nullptr;   // of the variable
};

struct CaseCode {
    std::vector<const Node*> labels;
    const Step* pStep = nullptr;
};

struct Step {
    StepHandler pRun = nullptr;
    const Node* pFirst = nullptr;
    const Node* pSecond = nullptr;
    const Node* pThird = nullptr;
    const Node* pWhile = nullptr;
    const Node* pUntil = nullptr;
    std::uint32_t iSlot = 0;
    bool boCounts = false;   // REPEAT with a variable
    Target target;
    std::vector<const Step*> body;
    std::vector<const Step*> alternative;
    std::vector<CaseCode> cases;
    std::vector<Target> targets;   // of the arguments of a procedure; those of VAR parameters count
};

// A function, a procedure, a global rule, or the expression of a WHERE rule or a derived attribute.
struct Routine {
    struct Variable {
        const TypeCode* pType = nullptr;
        const Node* pValue = nullptr;   // its initial value; null for none
        bool boVar = false;
    };
    std::string sName;
    std::uint16_t iLevel = 0;   // how many blocks it stands in
    std::uint32_t iSlots = 0;   // parameters first, then locals, then what expressions need
    std::vector<Variable> parameters;
    std::vector<Variable> locals;   // their slots follow those of the parameters
    const TypeCode* pResult = nullptr;
    std::vector<const Step*> body;
    const Node* pExpression = nullptr;   // of a rule or a derived attribute
    std::string sFault;                  // why it can't run; empty where it can
    bool boProcedure = false;
};

// What an attribute's name means for instances of one type.
struct Access {
    enum class Way : std::uint8_t { None, Cell, Inverse, Derived };
    Way way = Way::None;
    ifc::CellClass eClass = ifc::CellClass::Unresolved;
    bool boAggregate = false;      // of an inverse attribute
    std::uint32_t iOffset = 0;     // of the cell
    std::uint32_t iPosition = 0;   // among all attributes, or all inverse ones
    std::uint32_t iDerived = 0;    // in Program::derived
    const schema::ObjectBase* pType = nullptr;
};

struct DerivedAttribute {
    const schema::Entity* pOwner = nullptr;
    std::string sName;
    std::string sGroup;   // of a redeclared one: the entity that declared it first
    Routine code;
};

// One WHERE rule, UNIQUE clause or rule of the schema.
struct Rule {
    enum class Sort : std::uint8_t { Type, Entity, Unique, Global };
    Sort sort = Sort::Entity;
    std::string sName;                            // as in IfcWall.CorrectPredefinedType
    std::string sText;                            // the condition as in the schema
    const schema::ObjectBase* pOwner = nullptr;   // type or entity; null for a global one
    Routine code;                                 // of a condition
    std::vector<const Node*> attributes;          // of UNIQUE
    const Routine* pGlobal = nullptr;             // whose statements run before the condition
};

struct GlobalRule {
    std::string sName;
    Routine code;   // its parameters are the populations
    std::vector<const schema::Entity*> populations;
    std::vector<std::uint32_t> rules;   // in Program::rules
};

class Program {
public:
    explicit Program(const schema::Schema& schemaGraph) : graph(schemaGraph) {}
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    const schema::Schema& graph;
    express::SchemaRules trees;
    std::deque<express::ExpressionPtr> bounds;   // conditions made of bounds that are expressions
    std::deque<Node> nodes;
    std::deque<Step> steps;
    std::deque<TypeCode> types;
    std::deque<std::string> texts;          // of constants
    std::deque<std::vector<Value>> lists;   // of constant aggregates
    std::deque<Aggregate> aggregates;
    std::deque<Routine> routines;
    std::deque<DerivedAttribute> derived;
    std::deque<Rule> rules;
    std::deque<GlobalRule> globals;

    std::vector<std::string> names;        // of attributes, in capitals; an attribute's name is an index
    std::vector<Access> accesses;          // [0] is none
    std::vector<std::uint32_t> accessOf;   // by ordinal of the type and name
    std::vector<std::vector<std::uint32_t>> entityRules;   // by ordinal of the type: rules, inherited ones first
    std::vector<std::vector<std::uint32_t>> uniqueRules;   // the same of UNIQUE; own ones only
    std::unordered_map<const schema::Type*, std::vector<std::uint32_t>> typeRules;   // with those of the types below

    [[nodiscard]] const Access& access(const schema::Entity& type, std::uint32_t iName) const noexcept {
        return accesses[accessOf[std::size_t{type.iTypeOrdinal} * names.size() + iName]];
    }
    // Index of a name in capitals; where it is new it is added before the tables are made.
    std::uint32_t iName(std::string_view upper);
    // The same without adding; the count of names where it is unknown.
    [[nodiscard]] std::uint32_t iFindName(std::string_view upper) const;

private:
    std::unordered_map<std::string, std::uint32_t> m_nameIndex;
};

}   // namespace oxa::check::rules
