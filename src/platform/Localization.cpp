// SPDX-License-Identifier: Apache-2.0
#include "platform/Localization.h"

#include <algorithm>
#include <array>
#include <atomic>

namespace oxa {

namespace {

std::atomic<Language> g_language{Language::English};

struct Row {
    std::string_view key;
    std::string_view english;
    std::string_view german;
};

// Domain "Ifc", ascending by key. A text with an argument holds "%1": the number or the name that the report
// is about. It says what was found and, where that is the same for reading and writing, what was done about it.
constexpr std::array g_ifc{
    Row{"Error_AttributeSizeNotFound", "The schema gives %1 no attributes; the parameters were skipped.",
        "Das Schema nennt für %1 keine Attribute; die Parameter wurden übergangen."},
    Row{"Error_DuplicateEntity", "The entity has been filled already; this statement was skipped.",
        "Die Entität ist bereits gefüllt; diese Anweisung wurde übergangen."},
    Row{"Error_DuplicateGuids",
        "The GlobalId stands in the file already; the entity was kept, but the GlobalId leads to the "
        "first one.",
        "Die GlobalId kommt in der Datei schon vor; die Entität wurde behalten, die GlobalId führt aber "
        "zur ersten."},
    Row{"Error_EndOfCommentNotFound", "The file ends inside a comment; what stands behind its start was not read.",
        "Die Datei endet innerhalb eines Kommentars; was hinter dessen Anfang steht, wurde nicht gelesen."},
    Row{"Error_EntityIdReused", "The instance number #%1 is used again; the later statement replaces the earlier one.",
        "Die Instanznummer #%1 wird erneut verwendet; die spätere Anweisung ersetzt die frühere."},
    Row{"Error_EntityIsAbstract", "The entity type is abstract and can have no instances.",
        "Der Entitätstyp ist abstrakt und kann keine Instanzen haben."},
    Row{"Error_EntityNotConnected", "%1 is not connected with the project and was left out.",
        "%1 ist nicht mit dem Projekt verbunden und wurde ausgelassen."},
    Row{"Error_EntityWithoutForm",
        "%1 is connected with the project only by values that ifcXML has no form for; it was left out.",
        "%1 ist mit dem Projekt nur über Werte verbunden, für die ifcXML keine Form hat; ausgelassen."},
    Row{"Error_ExpectedEqualOperator", "\"=\" was expected behind the instance number; reading was stopped.",
        "Hinter der Instanznummer wurde „=“ erwartet; das Lesen wurde abgebrochen."},
    Row{"Error_ExpectedLeftParenthesis",
        "A statement of the form #12=KEYWORD(...) was expected, but the instance number is not valid; "
        "reading was stopped.",
        "Erwartet wurde eine Anweisung der Form #12=NAME(...), aber die Instanznummer ist ungültig; das "
        "Lesen wurde abgebrochen."},
    Row{"Error_ExpectedNumberSign", "\"#\" was expected at the start of the statement; reading was stopped.",
        "Am Anfang der Anweisung wurde „#“ erwartet; das Lesen wurde abgebrochen."},
    Row{"Error_ExpectedValidBinaryValueFor",
        "A binary value, such as \"0F\", was expected for %1; no value was stored.",
        "Für %1 wurde ein Binärwert wie \"0F\" erwartet; es wurde kein Wert übernommen."},
    Row{"Error_ExpectedValidBooleanValueFor", "A boolean value, .T. or .F., was expected for %1.",
        "Für %1 wurde ein boolescher Wert, .T. oder .F., erwartet."},
    Row{"Error_ExpectedValidEntityValueFor",
        "A reference to an instance, such as #12, was expected for %1; none was stored.",
        "Für %1 wurde ein Verweis auf eine Instanz wie #12 erwartet; es wurde keiner übernommen."},
    Row{"Error_ExpectedValidEnumerationValueFor",
        "An enumeration value, such as .VALUE., was expected for %1; no value was stored.",
        "Für %1 wurde ein Aufzählungswert wie .WERT. erwartet; es wurde kein Wert übernommen."},
    Row{"Error_ExpectedValidGuidValueFor", "A GlobalId of 22 characters was expected for %1.",
        "Für %1 wurde eine GlobalId aus 22 Zeichen erwartet."},
    Row{"Error_ExpectedValidIntegerValueFor", "An integer of 32 bits was expected for %1; 0 was stored.",
        "Für %1 wurde eine ganze Zahl mit 32 Bit erwartet; übernommen wurde 0."},
    Row{"Error_ExpectedValidIntegersInListFor",
        "A list of integers of 32 bits was expected for %1; every other item was stored as 0.",
        "Für %1 wurde eine Liste ganzer Zahlen mit 32 Bit erwartet; jedes andere Element wurde als 0 "
        "übernommen."},
    Row{"Error_ExpectedValidLogicValueFor", "A logical value, .T., .F. or .U., was expected for %1.",
        "Für %1 wurde ein logischer Wert, .T., .F. oder .U., erwartet."},
    Row{"Error_ExpectedValidRealInListFor",
        "A list of real numbers was expected for %1; every other item was stored as 0.",
        "Für %1 wurde eine Liste reeller Zahlen erwartet; jedes andere Element wurde als 0 übernommen."},
    Row{"Error_ExpectedValidRealValueFor", "A real number was expected for %1; 0 was stored.",
        "Für %1 wurde eine reelle Zahl erwartet; übernommen wurde 0."},
    Row{"Error_ExpectedValidSelectValueFor",
        "A typed value, such as IFCLABEL('a'), or a reference was expected for %1; no value was stored.",
        "Für %1 wurde ein typisierter Wert wie IFCLABEL('a') oder ein Verweis erwartet; es wurde kein "
        "Wert übernommen."},
    Row{"Error_ExpectedValidStringValueFor", "A text in single quotes was expected for %1; an empty text was stored.",
        "Für %1 wurde ein Text in einfachen Anführungszeichen erwartet; übernommen wurde ein leerer Text."},
    Row{"Error_HeaderTypeNotImplemented", "The header statement is of an unknown kind and was skipped.",
        "Die Art dieser Kopfanweisung ist unbekannt; sie wurde übergangen."},
    Row{"Error_IllegalAttributeIndex", "The entity type has no attribute at this position; the parameter was skipped.",
        "Der Entitätstyp hat an dieser Stelle kein Attribut; der Parameter wurde übergangen."},
    Row{"Error_InvalidEndOfFile", "The file ends unexpectedly, right behind a \"/\".",
        "Die Datei endet unerwartet, unmittelbar hinter einem „/“."},
    Row{"Error_InvalidEntity", "\"(\" was expected behind the keyword; reading was stopped.",
        "Hinter dem Schlüsselwort wurde „(“ erwartet; das Lesen wurde abgebrochen."},
    Row{"Error_InvalidFile", "This is no complete IFC file: the end of its data section, ENDSEC, was not found.",
        "Dies ist keine vollständige IFC-Datei: Das Ende des Datenabschnitts, ENDSEC, wurde nicht gefunden."},
    Row{"Error_InvalidNullAttribute", "The mandatory attribute %1 has no value.",
        "Das Pflichtattribut %1 hat keinen Wert."},
    Row{"Error_ListTypeNotImplemented", "Lists of the type of %1 are not supported; the value was skipped.",
        "Listen vom Typ von %1 werden nicht unterstützt; der Wert wurde übergangen."},
    Row{"Error_MissingEntityWithId", "The instance #%1 is referred to, but not defined.",
        "Auf die Instanz #%1 wird verwiesen, sie ist aber nicht definiert."},
    Row{"Error_MissingSemicolon", "\";\" is missing at the end of the header statement; it was skipped.",
        "Am Ende der Kopfanweisung fehlt „;“; sie wurde übergangen."},
    Row{"Error_NotValidEnumerationValue", "\"%1\" is no value of the enumeration.",
        "„%1“ ist kein Wert der Aufzählung."},
    Row{"Error_NumberWrittenTwice",
        "The instance number #%1 is written twice: an instance of the file has it, and this one got it, too.",
        "Die Instanznummer #%1 wird zweimal geschrieben: Eine Instanz der Datei hat sie, und diese hat sie auch "
        "bekommen."},
    Row{"Error_TooFewAttributesFor", "There are too few parameters for %1.",
        "Für %1 sind zu wenige Parameter angegeben."},
    Row{"Error_TooManyAttributesFor", "There are too many parameters for %1; the surplus was ignored.",
        "Für %1 sind zu viele Parameter angegeben; die überzähligen wurden ignoriert."},
    Row{"Error_UnexpectedEqualOperator",
        "There is a second \"=\" in the statement, probably because a \";\" is missing; reading was stopped.",
        "Die Anweisung enthält ein zweites „=“, wahrscheinlich weil ein „;“ fehlt; das Lesen wurde "
        "abgebrochen."},
    Row{"Error_UnexpectedNewlineInString", "A text contains a line break behind a backslash; reading was stopped.",
        "Ein Text enthält hinter einem Backslash einen Zeilenumbruch; das Lesen wurde abgebrochen."},
    Row{"Error_UnexpectedNullGuid", "The GlobalId is missing or zero; the entity was kept, but can't be found by it.",
        "Die GlobalId fehlt oder ist null; die Entität wurde behalten, ist aber darüber nicht zu finden."},
    Row{"Error_UnknownAttributeType", "The type of an attribute could not be used (%1); its value was skipped.",
        "Der Typ eines Attributs war nicht verwendbar (%1); sein Wert wurde übergangen."},
    Row{"Error_UnknownEntityType", "The schema has no entity type of this name; the statement was skipped.",
        "Das Schema kennt keinen Entitätstyp dieses Namens; die Anweisung wurde übergangen."},
    Row{"Error_UnknownSchemaName", "The schema \"%1\" is not known; reading was stopped.",
        "Das Schema „%1“ ist nicht bekannt; das Lesen wurde abgebrochen."},
};
static_assert(std::ranges::is_sorted(g_ifc, {}, &Row::key));

}   // namespace

void setLanguage(Language language) noexcept { g_language.store(language, std::memory_order_relaxed); }

Language language() noexcept { return g_language.load(std::memory_order_relaxed); }

std::string localize(std::string_view domain, std::string_view key) {
    if (domain != "Ifc") return std::string(key);
    const auto row = std::ranges::lower_bound(g_ifc, key, {}, &Row::key);
    if (row == g_ifc.end() || row->key != key) return std::string(key);
    return std::string(language() == Language::German ? row->german : row->english);
}

std::vector<std::string_view> localizationKeys(std::string_view domain) {
    std::vector<std::string_view> keys;
    if (domain == "Ifc")
        for (const Row& row : g_ifc) keys.push_back(row.key);
    return keys;
}

}   // namespace oxa
