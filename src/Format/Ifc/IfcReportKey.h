// SPDX-License-Identifier: Apache-2.0
/// @file
/// ReportKey: what a report says, one enumerator for each message of the library.
///
/// - For: whoever raises, filters, counts or groups reports: a message has a language, a key has none.
/// - Callers: Errors and its users; a host that shows the texts on its own.
/// - New one: an enumerator here and a row in Report/ReportKeys.cpp, both in the order of the alphabet.
/// - Threads: any number at once.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Export.h"

namespace oxa::ifc {

/// The enumerator of a key is what stands behind "Error_" in its text.
enum class ReportKey : std::uint8_t {
    AttributeSizeNotFound,
    DuplicateEntity,
    DuplicateGuids,
    EndOfCommentNotFound,
    EntityIdReused,
    EntityIsAbstract,
    EntityNotConnected,
    EntityWithoutForm,
    ExpectedEqualOperator,
    ExpectedLeftParenthesis,
    ExpectedNumberSign,
    ExpectedValidBinaryValueFor,
    ExpectedValidBooleanValueFor,
    ExpectedValidEntityValueFor,
    ExpectedValidEnumerationValueFor,
    ExpectedValidGuidValueFor,
    ExpectedValidIntegerValueFor,
    ExpectedValidIntegersInListFor,
    ExpectedValidLogicValueFor,
    ExpectedValidRealInListFor,
    ExpectedValidRealValueFor,
    ExpectedValidSelectValueFor,
    ExpectedValidStringValueFor,
    HeaderTypeNotImplemented,
    IllegalAttributeIndex,
    InvalidEndOfFile,
    InvalidEntity,
    InvalidFile,
    InvalidNullAttribute,
    ListTypeNotImplemented,
    MissingEntityWithId,
    MissingSemicolon,
    NotValidEnumerationValue,
    NumberWrittenTwice,
    TooFewAttributesFor,
    TooManyAttributesFor,
    UnexpectedEqualOperator,
    UnexpectedNewlineInString,
    UnexpectedNullGuid,
    UnknownAttributeType,
    UnknownEntityType,
    UnknownSchemaName,
};

/// The key as a text: "Error_UnknownEntityType". For good.
[[nodiscard]] OXA_IFC_API std::string_view reportKeyText(ReportKey eKey);

/// The other way round; none for a text that is no key of the library.
[[nodiscard]] OXA_IFC_API std::optional<ReportKey> reportKeyFromText(std::string_view text) noexcept;

/// The message in the language of the process, with "%1" where its argument goes.
[[nodiscard]] OXA_IFC_API std::string reportText(ReportKey eKey);

namespace details {

/// Hands the texts to the platform as its domain "Ifc": once, however often and from however many threads it is called.
OXA_IFC_API void vReportTextsRegister();

/// Before the first object that could ask for a text, static ones of callers included: an inline variable is ready
/// before what stands behind it in each unit, and the linker of a static build can't leave it out.
inline const bool g_boTextsRegistered = (vReportTextsRegister(), true);

}   // namespace details
}   // namespace oxa::ifc
