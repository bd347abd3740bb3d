// SPDX-License-Identifier: Apache-2.0
// Handlers: what each kind of node and step does. The operands that one takes stand beside it.
//
// For      Compiler, which hangs them on nodes.
// Logic    an operand without a value makes the result indeterminate, unless the comment says otherwise (ISO 10303-11,
//          12.1 to 12.7).
#pragma once

#include <span>
#include <string_view>

#include "Check/Rules/Code.h"
#include "Check/Rules/Evaluator.h"

namespace oxa::check::rules::run {

// Primaries (HandlersPrimary.cpp).
Value constant(Evaluator&, const Node&);   // value
Value self(Evaluator&, const Node&);
Value variable(Evaluator&, const Node&);         // iPlace, iHops
Value routineValue(Evaluator&, const Node&);     // pRoutine: a constant of the schema
Value ownAttribute(Evaluator&, const Node&);     // iPlace: of SELF
Value attribute(Evaluator&, const Node&);        // pFirst, iPlace
Value group(Evaluator&, const Node&);            // pFirst, pEntity
Value groupAttribute(Evaluator&, const Node&);   // pFirst, pEntity, iPlace
Value index(Evaluator&, const Node&);            // pFirst, pSecond
Value indexRange(Evaluator&, const Node&);       // pFirst, pSecond, pThird
Value aggregate(Evaluator&, const Node&);        // operands, repeated ones as nodes of "repeated"
Value repeated(Evaluator&, const Node&);         // pFirst, pSecond; only below aggregate
Value query(Evaluator&, const Node&);            // pFirst, pSecond, iPlace
Value queryCount(Evaluator&, const Node&);       // the same, for SIZEOF
Value construct(Evaluator&, const Node&);        // pEntity, operands
Value callFunction(Evaluator&, const Node&);     // pRoutine, operands
Value compose(Evaluator&, const Node&);          // pFirst, pSecond

// Operators (HandlersOperator.cpp), over pFirst and pSecond.
Value logicalNot(Evaluator&, const Node&);
Value logicalAnd(Evaluator&, const Node&);
Value logicalOr(Evaluator&, const Node&);
Value logicalXor(Evaluator&, const Node&);
Value negate(Evaluator&, const Node&);
Value plus(Evaluator&, const Node&);
Value add(Evaluator&, const Node&);
Value subtract(Evaluator&, const Node&);
Value multiply(Evaluator&, const Node&);
Value divide(Evaluator&, const Node&);
Value integerDivide(Evaluator&, const Node&);
Value modulo(Evaluator&, const Node&);
Value power(Evaluator&, const Node&);
Value isEqual(Evaluator&, const Node&);     // boSecond: "<>"
Value isSame(Evaluator&, const Node&);      // boSecond: ":<>:"
Value isLess(Evaluator&, const Node&);      // boSecond: ">="
Value isGreater(Evaluator&, const Node&);   // boSecond: "<="
Value isIn(Evaluator&, const Node&);
Value isLike(Evaluator&, const Node&);
Value interval(Evaluator&, const Node&);   // pFirst < pSecond < pThird; iPlace 1: "<=" left, 2: "<=" right

// Types (HandlersType.cpp).
Value typeTest(Evaluator&, const Node&);    // pFirst, targets[0]: a name IN TYPEOF(...)
Value typeCount(Evaluator&, const Node&);   // pFirst, targets: SIZEOF(TYPEOF(...) * [...])
Value typeEqual(Evaluator&, const Node&);   // pFirst, pSecond: TYPEOF(...) = TYPEOF(...); boSecond: "<>"
Value typeOf(Evaluator&, const Node&);      // pFirst
Value rolesOf(Evaluator&, const Node&);     // pFirst
Value usedIn(Evaluator&, const Node&);      // pFirst, pSecond

// Sets and lists (HandlersAggregate.cpp): the operators of them, from the values of both operands.
Value unionOf(Evaluator&, const Value&, const Value&);
Value differenceOf(Evaluator&, const Value&, const Value&);
Value intersectionOf(Evaluator&, const Value&, const Value&);
Value isSubset(Evaluator&, const Value&, const Value&);

// Built-in functions by name (Builtins.cpp).
struct Builtin {
    std::string_view name;   // in capitals
    std::size_t iLeast, iMost;
    Handler pRun;   // over operands
};
[[nodiscard]] std::span<const Builtin> builtins() noexcept;
// FORMAT (Format.cpp); the text of a number, "?" for a format that is none.
[[nodiscard]] Value formatted(Evaluator&, const Value& number, std::string_view format);

// Statements (Statements.cpp).
Flow assign(Evaluator&, const Step&);     // target, pFirst
Flow appendTo(Evaluator&, const Step&);   // target: a variable alone; its value + pFirst
Flow caseOf(Evaluator&, const Step&);     // pFirst, cases, alternative
Flow compound(Evaluator&, const Step&);   // body
Flow escape(Evaluator&, const Step&);
Flow ifThen(Evaluator&, const Step&);   // pFirst, body, alternative
Flow null(Evaluator&, const Step&);
Flow callProcedure(Evaluator&, const Step&);   // pFirst: a node of callFunction; targets
Flow insertItem(Evaluator&, const Step&);      // target, pFirst, pSecond
Flow removeItem(Evaluator&, const Step&);      // target, pFirst
Flow repeat(Evaluator&, const Step&);          // iSlot, pFirst, pSecond, pThird, pWhile, pUntil, body
Flow returnValue(Evaluator&, const Step&);     // pFirst
Flow skip(Evaluator&, const Step&);

}   // namespace oxa::check::rules::run
