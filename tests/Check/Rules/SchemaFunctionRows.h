// SPDX-License-Identifier: Apache-2.0
// SchemaFunctionRows: the functions of the three published schemas, what they are called with and what they give.
#pragma once

#include <span>

namespace oxa::test {

// Schemas that a row holds for. A row about a function that a schema does not have is left out there by itself.
inline constexpr unsigned g_uIfc2x3 = 1;
inline constexpr unsigned g_uIfc4 = 2;
inline constexpr unsigned g_uIfc4x3 = 4;
inline constexpr unsigned g_uLater = g_uIfc4 | g_uIfc4x3;
inline constexpr unsigned g_uEvery = g_uIfc2x3 | g_uLater;

// An instance that rows name: "@x" in a statement is another one of this table.
struct GivenInstance {
    const char* sName;
    const char* sStatement;
    unsigned uSchemas = g_uEvery;
};
struct FunctionRow {
    const char* sCall;
    const char* sResult;   // "@x" for an instance of the table
    unsigned uSchemas = g_uEvery;
};
// A unit or a name of one, and its exponents as they are written.
struct ExponentsRow {
    const char* sName;
    const char* sExponents;
    unsigned uSchemas = g_uEvery;
};

[[nodiscard]] std::span<const GivenInstance> givenInstances();
[[nodiscard]] std::span<const FunctionRow> functionRows();
// Of IfcCorrectDimensions and of IfcDimensionsForSiUnit.
[[nodiscard]] std::span<const ExponentsRow> unitRows();
[[nodiscard]] std::span<const ExponentsRow> siUnitRows();

}   // namespace oxa::test
