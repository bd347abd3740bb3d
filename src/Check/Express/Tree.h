// SPDX-License-Identifier: Apache-2.0
// Tree: what an EXPRESS text says beyond a schema graph, as read and not yet resolved (ISO 10303-11, 9.2 to 9.6, 12, 13).
//
// For      Parser, which makes it, Printer, which writes it, and the compiler of rules.
// Not for  what the graph holds: explicit and inverse attributes, supertypes, underlying types.
// Owner    a node owns what stands below it; names are copies, so the text may go.
// Limits   no expression or statement is nested deeper than Parser::g_iDepthLimit, so recursion over a tree is safe.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "provider/ExpressDeclarations.h"

namespace oxa::check::express {

using ifc::def::express::Place;

enum class Op : unsigned char {
    // Without operands; "sText" is the literal as written, or the name.
    Integer,
    Real,
    String,
    Encoded,   // a string literal of hexadecimal code points
    Binary,
    True,
    False,
    Unknown,
    Indeterminate,   // "?"
    Self,
    Pi,
    ConstE,
    Name,
    // Behind a factor.
    Attribute,   // ".sText"
    Group,       // "\sText"
    Index,       // "[b]" or "[b:c]"
    Call,        // sText(...); the operands are the arguments
    // One operand.
    Negate,
    Plus,
    Not,
    // Two operands, in the order of the table in Printer.cpp.
    Power,
    Multiply,
    Divide,
    IntegerDivide,
    Modulo,
    And,
    Compose,   // "||"
    Add,
    Subtract,
    Or,
    Xor,
    Equal,
    NotEqual,
    Less,
    Greater,
    LessEqual,
    GreaterEqual,
    Same,      // ":=:"
    NotSame,   // ":<>:"
    In,
    Like,
    // The rest.
    Interval,    // {a op b op c}; see eLow, eHigh
    Aggregate,   // [a, b : c]
    Repeated,    // an item with its count, only below Aggregate
    Query,       // QUERY(sText <* a | b)
};

struct Expression {
    Op op = Op::Indeterminate;
    Op eLow = Op::Less, eHigh = Op::Less;   // of an Interval: Less or LessEqual
    unsigned short iParentheses = 0;        // pairs around it in the text
    unsigned short iDepth = 1;              // levels below and with this one
    Place place;
    std::string sText;
    std::vector<std::unique_ptr<Expression>> operands;
};
using ExpressionPtr = std::unique_ptr<Expression>;

enum class TypeForm : unsigned char {
    Named,
    Generic,
    GenericEntity,
    Aggregate,
    Array,
    Bag,
    List,
    Set,
    Binary,
    Boolean,
    Integer,
    Logical,
    Number,
    Real,
    String,
};

// The type of a parameter, a variable or a derived attribute.
struct TypeTree {
    TypeForm form = TypeForm::Named;
    std::string sName;   // of a Named one; the label of a Generic or an Aggregate
    bool boOptional = false, boUnique = false, boFixed = false;
    ExpressionPtr pLow, pHigh;            // bounds; of a simple type pLow is the width or precision
    std::unique_ptr<TypeTree> pElement;   // of an aggregate
};

enum class StatementKind : unsigned char {
    Alias,      // sText FOR a; body
    Assign,     // a := b
    Case,       // a OF cases; body is OTHERWISE
    Compound,   // body
    Escape,
    If,   // a; body, alternative
    Null,
    Call,     // a, which is a Call or a Name
    Repeat,   // sText := a TO b BY c; WHILE d UNTIL e; body
    Return,   // a, or nothing
    Skip,
};

struct Statement;
using StatementPtr = std::unique_ptr<Statement>;
using Body = std::vector<StatementPtr>;

struct CaseAction {
    std::vector<ExpressionPtr> labels;
    StatementPtr pAction;
};

struct Statement {
    StatementKind kind = StatementKind::Null;
    Place place;
    std::string sText;
    ExpressionPtr pFirst, pSecond, pThird, pWhile, pUntil;
    Body body;
    Body alternative;
    bool boAlternative = false;   // ELSE or OTHERWISE stands there, be it without a statement
    std::vector<CaseAction> cases;
};

// "names : type [:= value];" of LOCAL, CONSTANT, DERIVE and of parameters.
struct Declaration {
    bool boVar = false;   // a parameter that hands its value back
    std::vector<std::string> names;
    std::string sGroup;   // DERIVE of "SELF\sGroup.name": the attribute of a supertype
    std::string sRenamed;
    TypeTree type;
    ExpressionPtr pValue;
    Place place;
};

struct DomainRule {
    std::string sLabel;   // may be empty
    ExpressionPtr pCondition;
    Place place;
};

// "label : SELF\group.name, ...;"
struct UniqueRule {
    std::string sLabel;
    std::vector<ExpressionPtr> attributes;
    Place place;
};

struct Block;
enum class BlockKind : unsigned char { Function, Procedure, Rule };

// What a block of declarations holds, and the schema at its outermost.
struct Declarations {
    std::vector<Declaration> constants;
    std::vector<Block> blocks;   // functions and procedures; of a schema rules too, all in the order of the text
};

struct Block {
    BlockKind kind = BlockKind::Function;
    std::string sName;
    Place place;
    std::vector<Declaration> parameters;
    std::vector<std::string> populations;   // of a Rule: FOR (...)
    TypeTree result;                        // of a Function
    Declarations inner;
    std::vector<Declaration> locals;
    bool boLocals = false;   // LOCAL stands there
    Body body;
    std::vector<DomainRule> rules;   // of a Rule
};

struct TypeRules {
    std::string sName;
    std::vector<DomainRule> rules;
    Place place;
};

struct EntityRules {
    std::string sName;
    std::vector<Declaration> derived;
    std::vector<UniqueRule> uniques;
    std::vector<DomainRule> rules;
    Place place;
};

// All of one schema text. Types and entities that have none of it are left out.
struct SchemaRules {
    std::string sName;
    std::vector<TypeRules> types;
    std::vector<EntityRules> entities;
    Declarations outer;
};

}   // namespace oxa::check::express
