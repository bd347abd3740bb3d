// SPDX-License-Identifier: Apache-2.0
// All reports, one row each: enumerator, key, severity, category, and the text in both languages. Adding one is a row
// here and an enumerator; the rows are asserted to be in the order of both.
#include "Format/Ifc/Report/ReportKeys.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "platform/Localization.h"

namespace oxa::ifc {

namespace {

using Row = report::KeyRow;

// A text with an argument holds "%1": the number or the name that the report is about. It says what was found and,
// where that is the same for reading and writing, what was done about it.
constexpr std::array g_rows{
    Row{ReportKey::AttributeSizeNotFound, "Error_AttributeSizeNotFound", Errors::Error, Errors::Schema,
        "The schema gives %1 no attributes; the parameters were skipped.",
        "Das Schema nennt für %1 keine Attribute; die Parameter wurden übergangen."},
    Row{ReportKey::DuplicateEntity, "Error_DuplicateEntity", Errors::Error, Errors::Model,
        "The entity has been filled already; this statement was skipped.",
        "Die Entität ist bereits gefüllt; diese Anweisung wurde übergangen."},
    Row{ReportKey::DuplicateGuids, "Error_DuplicateGuids", Errors::Error, Errors::Value,
        "The GlobalId stands in the file already; the entity was kept, but the GlobalId leads to the first one.",
        "Die GlobalId kommt in der Datei schon vor; die Entität wurde behalten, die GlobalId führt aber zur ersten."},
    Row{ReportKey::EndOfCommentNotFound, "Error_EndOfCommentNotFound", Errors::Fatal, Errors::Syntax,
        "The file ends inside a comment; what stands behind its start was not read.",
        "Die Datei endet innerhalb eines Kommentars; was hinter dessen Anfang steht, wurde nicht gelesen."},
    Row{ReportKey::EntityIdReused, "Error_EntityIdReused", Errors::Error, Errors::Identifier,
        "The instance number #%1 is used again; the later statement replaces the earlier one.",
        "Die Instanznummer #%1 wird erneut verwendet; die spätere Anweisung ersetzt die frühere."},
    Row{ReportKey::EntityIsAbstract, "Error_EntityIsAbstract", Errors::Error, Errors::Value,
        "The entity type is abstract and can have no instances.",
        "Der Entitätstyp ist abstrakt und kann keine Instanzen haben."},
    Row{ReportKey::EntityNotConnected, "Error_EntityNotConnected", Errors::Error, Errors::Reference,
        "%1 is not connected with the project and was left out.",
        "%1 ist nicht mit dem Projekt verbunden und wurde ausgelassen."},
    Row{ReportKey::EntityWithoutForm, "Error_EntityWithoutForm", Errors::Error, Errors::Value,
        "%1 is connected with the project only by values that ifcXML has no form for; it was left out.",
        "%1 ist mit dem Projekt nur über Werte verbunden, für die ifcXML keine Form hat; ausgelassen."},
    Row{ReportKey::ExpectedEqualOperator, "Error_ExpectedEqualOperator", Errors::Fatal, Errors::Syntax,
        "\"=\" was expected behind the instance number; reading was stopped.",
        "Hinter der Instanznummer wurde „=“ erwartet; das Lesen wurde abgebrochen."},
    Row{ReportKey::ExpectedLeftParenthesis, "Error_ExpectedLeftParenthesis", Errors::Fatal, Errors::Syntax,
        "A statement of the form #12=KEYWORD(...) was expected, but the instance number is not valid; reading was "
        "stopped.",
        "Erwartet wurde eine Anweisung der Form #12=NAME(...), aber die Instanznummer ist ungültig; das Lesen wurde "
        "abgebrochen."},
    Row{ReportKey::ExpectedNumberSign, "Error_ExpectedNumberSign", Errors::Fatal, Errors::Syntax,
        "\"#\" was expected at the start of the statement; reading was stopped.",
        "Am Anfang der Anweisung wurde „#“ erwartet; das Lesen wurde abgebrochen."},
    Row{ReportKey::ExpectedValidBinaryValueFor, "Error_ExpectedValidBinaryValueFor", Errors::Error, Errors::Value,
        "A binary value, such as \"0F\", was expected for %1; no value was stored.",
        "Für %1 wurde ein Binärwert wie \"0F\" erwartet; es wurde kein Wert übernommen."},
    Row{ReportKey::ExpectedValidBooleanValueFor, "Error_ExpectedValidBooleanValueFor", Errors::Error, Errors::Value,
        "A boolean value, .T. or .F., was expected for %1.",
        "Für %1 wurde ein boolescher Wert, .T. oder .F., erwartet."},
    Row{ReportKey::ExpectedValidEntityValueFor, "Error_ExpectedValidEntityValueFor", Errors::Error, Errors::Value,
        "A reference to an instance, such as #12, was expected for %1; none was stored.",
        "Für %1 wurde ein Verweis auf eine Instanz wie #12 erwartet; es wurde keiner übernommen."},
    Row{ReportKey::ExpectedValidEnumerationValueFor, "Error_ExpectedValidEnumerationValueFor", Errors::Error,
        Errors::Value, "An enumeration value, such as .VALUE., was expected for %1; no value was stored.",
        "Für %1 wurde ein Aufzählungswert wie .WERT. erwartet; es wurde kein Wert übernommen."},
    Row{ReportKey::ExpectedValidGuidValueFor, "Error_ExpectedValidGuidValueFor", Errors::Error, Errors::Value,
        "A GlobalId of 22 characters was expected for %1.", "Für %1 wurde eine GlobalId aus 22 Zeichen erwartet."},
    Row{ReportKey::ExpectedValidIntegerValueFor, "Error_ExpectedValidIntegerValueFor", Errors::Error, Errors::Value,
        "An integer of 32 bits was expected for %1; 0 was stored.",
        "Für %1 wurde eine ganze Zahl mit 32 Bit erwartet; übernommen wurde 0."},
    Row{ReportKey::ExpectedValidIntegersInListFor, "Error_ExpectedValidIntegersInListFor", Errors::Error, Errors::Value,
        "A list of integers of 32 bits was expected for %1; every other item was stored as 0.",
        "Für %1 wurde eine Liste ganzer Zahlen mit 32 Bit erwartet; jedes andere Element wurde als 0 übernommen."},
    Row{ReportKey::ExpectedValidLogicValueFor, "Error_ExpectedValidLogicValueFor", Errors::Error, Errors::Value,
        "A logical value, .T., .F. or .U., was expected for %1.",
        "Für %1 wurde ein logischer Wert, .T., .F. oder .U., erwartet."},
    Row{ReportKey::ExpectedValidRealInListFor, "Error_ExpectedValidRealInListFor", Errors::Error, Errors::Value,
        "A list of real numbers was expected for %1; every other item was stored as 0.",
        "Für %1 wurde eine Liste reeller Zahlen erwartet; jedes andere Element wurde als 0 übernommen."},
    Row{ReportKey::ExpectedValidRealValueFor, "Error_ExpectedValidRealValueFor", Errors::Error, Errors::Value,
        "A real number was expected for %1; 0 was stored.",
        "Für %1 wurde eine reelle Zahl erwartet; übernommen wurde 0."},
    Row{ReportKey::ExpectedValidSelectValueFor, "Error_ExpectedValidSelectValueFor", Errors::Error, Errors::Value,
        "A typed value, such as IFCLABEL('a'), or a reference was expected for %1; no value was stored.",
        "Für %1 wurde ein typisierter Wert wie IFCLABEL('a') oder ein Verweis erwartet; es wurde kein Wert "
        "übernommen."},
    Row{ReportKey::ExpectedValidStringValueFor, "Error_ExpectedValidStringValueFor", Errors::Error, Errors::Value,
        "A text in single quotes was expected for %1; an empty text was stored.",
        "Für %1 wurde ein Text in einfachen Anführungszeichen erwartet; übernommen wurde ein leerer Text."},
    Row{ReportKey::HeaderTypeNotImplemented, "Error_HeaderTypeNotImplemented", Errors::Error, Errors::Header,
        "The header statement is of an unknown kind and was skipped.",
        "Die Art dieser Kopfanweisung ist unbekannt; sie wurde übergangen."},
    Row{ReportKey::IllegalAttributeIndex, "Error_IllegalAttributeIndex", Errors::Fatal, Errors::Schema,
        "The entity type has no attribute at this position; the parameter was skipped.",
        "Der Entitätstyp hat an dieser Stelle kein Attribut; der Parameter wurde übergangen."},
    Row{ReportKey::InvalidEndOfFile, "Error_InvalidEndOfFile", Errors::Fatal, Errors::Syntax,
        "The file ends unexpectedly, right behind a \"/\".",
        "Die Datei endet unerwartet, unmittelbar hinter einem „/“."},
    Row{ReportKey::InvalidEntity, "Error_InvalidEntity", Errors::Fatal, Errors::Syntax,
        "\"(\" was expected behind the keyword; reading was stopped.",
        "Hinter dem Schlüsselwort wurde „(“ erwartet; das Lesen wurde abgebrochen."},
    Row{ReportKey::InvalidFile, "Error_InvalidFile", Errors::Fatal, Errors::Syntax,
        "This is no complete IFC file: the end of its data section, ENDSEC, was not found.",
        "Dies ist keine vollständige IFC-Datei: Das Ende des Datenabschnitts, ENDSEC, wurde nicht gefunden."},
    Row{ReportKey::InvalidNullAttribute, "Error_InvalidNullAttribute", Errors::Error, Errors::Null,
        "The mandatory attribute %1 has no value.", "Das Pflichtattribut %1 hat keinen Wert."},
    Row{ReportKey::ListTypeNotImplemented, "Error_ListTypeNotImplemented", Errors::Error, Errors::Schema,
        "Lists of the type of %1 are not supported; the value was skipped.",
        "Listen vom Typ von %1 werden nicht unterstützt; der Wert wurde übergangen."},
    Row{ReportKey::MissingEntityWithId, "Error_MissingEntityWithId", Errors::Error, Errors::Reference,
        "The instance #%1 is referred to, but not defined.",
        "Auf die Instanz #%1 wird verwiesen, sie ist aber nicht definiert."},
    Row{ReportKey::MissingSemicolon, "Error_MissingSemicolon", Errors::Error, Errors::Syntax,
        "\";\" is missing at the end of the header statement; it was skipped.",
        "Am Ende der Kopfanweisung fehlt „;“; sie wurde übergangen."},
    Row{ReportKey::NotValidEnumerationValue, "Error_NotValidEnumerationValue", Errors::Error, Errors::Value,
        "\"%1\" is no value of the enumeration.", "„%1“ ist kein Wert der Aufzählung."},
    Row{ReportKey::NumberWrittenTwice, "Error_NumberWrittenTwice", Errors::Error, Errors::Identifier,
        "The instance number #%1 is written twice: an instance of the file has it, and this one got it, too.",
        "Die Instanznummer #%1 wird zweimal geschrieben: Eine Instanz der Datei hat sie, und diese hat sie auch "
        "bekommen."},
    Row{ReportKey::TooFewAttributesFor, "Error_TooFewAttributesFor", Errors::Error, Errors::Value,
        "There are too few parameters for %1.", "Für %1 sind zu wenige Parameter angegeben."},
    Row{ReportKey::TooManyAttributesFor, "Error_TooManyAttributesFor", Errors::Error, Errors::Value,
        "There are too many parameters for %1; the surplus was ignored.",
        "Für %1 sind zu viele Parameter angegeben; die überzähligen wurden ignoriert."},
    Row{ReportKey::UnexpectedEqualOperator, "Error_UnexpectedEqualOperator", Errors::Fatal, Errors::Syntax,
        "There is a second \"=\" in the statement, probably because a \";\" is missing; reading was stopped.",
        "Die Anweisung enthält ein zweites „=“, wahrscheinlich weil ein „;“ fehlt; das Lesen wurde abgebrochen."},
    Row{ReportKey::UnexpectedNewlineInString, "Error_UnexpectedNewlineInString", Errors::Fatal, Errors::Syntax,
        "A text contains a line break behind a backslash; reading was stopped.",
        "Ein Text enthält hinter einem Backslash einen Zeilenumbruch; das Lesen wurde abgebrochen."},
    Row{ReportKey::UnexpectedNullGuid, "Error_UnexpectedNullGuid", Errors::Error, Errors::Value,
        "The GlobalId is missing or zero; the entity was kept, but can't be found by it.",
        "Die GlobalId fehlt oder ist null; die Entität wurde behalten, ist aber darüber nicht zu finden."},
    Row{ReportKey::UnknownAttributeType, "Error_UnknownAttributeType", Errors::Fatal, Errors::Schema,
        "The type of an attribute could not be used (%1); its value was skipped.",
        "Der Typ eines Attributs war nicht verwendbar (%1); sein Wert wurde übergangen."},
    Row{ReportKey::UnknownEntityType, "Error_UnknownEntityType", Errors::Error, Errors::Value,
        "The schema has no entity type of this name; the statement was skipped.",
        "Das Schema kennt keinen Entitätstyp dieses Namens; die Anweisung wurde übergangen."},
    Row{ReportKey::UnknownSchemaName, "Error_UnknownSchemaName", Errors::Fatal, Errors::Model,
        "The schema \"%1\" is not known; reading was stopped.",
        "Das Schema „%1“ ist nicht bekannt; das Lesen wurde abgebrochen."},
};

constexpr bool boInPlace() {
    for (std::size_t i = 0; i < g_rows.size(); ++i)
        if (g_rows[i].eKey != static_cast<ReportKey>(i) || (i > 0 && g_rows[i - 1].key >= g_rows[i].key)) return false;
    return true;
}
static_assert(boInPlace(), "one row for each enumerator, in their order, keys ascending");

// As the platform takes them.
constexpr auto g_texts = [] {
    std::array<LocalizedText, g_rows.size()> texts{};
    std::ranges::transform(g_rows, texts.begin(), [](const Row& row) {
        return LocalizedText{row.key, row.english, row.german};
    });
    return texts;
}();

}   // namespace

std::span<const Row> report::keyRows() noexcept { return g_rows; }

const Row& report::keyRow(ReportKey eKey) { return g_rows.at(static_cast<std::size_t>(eKey)); }

std::string_view reportKeyText(ReportKey eKey) { return report::keyRow(eKey).key; }

std::optional<ReportKey> reportKeyFromText(std::string_view text) noexcept {
    const auto row = std::ranges::lower_bound(g_rows, text, {}, &Row::key);
    if (row == g_rows.end() || row->key != text) return std::nullopt;
    return row->eKey;
}

std::string reportText(ReportKey eKey) { return localize("Ifc", reportKeyText(eKey)); }

// Static objects without a destructor, so that texts can be asked for up to the end of the process.
void details::vReportTextsRegister() {
    static constinit LocalizedTexts s_texts("Ifc", g_texts);
    static const bool s_boDone = (registerTexts(s_texts), true);
    static_cast<void>(s_boDone);
}

}   // namespace oxa::ifc
