// SPDX-License-Identifier: Apache-2.0
// EXPRESS declarations by descent, a function for each rule; its comment is the syntax that it takes. No rule calls
// itself: what nests, aggregates and passed-over blocks, is read in loops, so no text can exhaust the stack.
//
// After a fault the current token is the end of the text for good. So every loop and every rule above ends by itself,
// and functions need to test for faults only where the end of the text would be taken for a success.
#include "provider/ExpressParser.h"

#include <charconv>
#include <optional>
#include <utility>

namespace oxa::ifc::def::express {

namespace {

using schema::DataKind;

constexpr std::size_t g_iMaxAggregateLevels = 16;   // the published schemas nest two deep
constexpr std::size_t g_iMaxFoundText = 40;         // of a token, in a message

std::optional<DataKind> baseKindOf(Keyword keyword) noexcept {
    switch (keyword) {
    case Keyword::Real: return DataKind::Real;
    case Keyword::Boolean: return DataKind::Boolean;
    case Keyword::Integer: return DataKind::Integer;
    case Keyword::Number: return DataKind::Number;
    case Keyword::String: return DataKind::String;
    case Keyword::Logical: return DataKind::Logical;
    case Keyword::Binary: return DataKind::Binary;
    default: return std::nullopt;
    }
}

std::optional<DataKind> aggregateKindOf(Keyword keyword) noexcept {
    switch (keyword) {
    case Keyword::Array: return DataKind::Array;
    case Keyword::List: return DataKind::List;
    case Keyword::Set:
    case Keyword::Bag: return DataKind::Set;
    default: return std::nullopt;
    }
}

// Words that begin or end a declaration, so that no expression or statement holds one of them.
bool boEndsStatement(Keyword keyword) noexcept {
    switch (keyword) {
    case Keyword::EndEntity:
    case Keyword::EndSchema:
    case Keyword::EndType:
    case Keyword::Entity:
    case Keyword::Function:
    case Keyword::Procedure:
    case Keyword::Rule:
    case Keyword::Type: return true;
    default: return false;
    }
}

// The parts of a declaration that no graph holds.
struct SkippedBlock {
    Keyword begin;
    Keyword end;
    const char* sWhat;
};
constexpr SkippedBlock g_skippedBlocks[] = {
    {Keyword::Function, Keyword::EndFunction, "FUNCTION"},
    {Keyword::Procedure, Keyword::EndProcedure, "PROCEDURE"},
    {Keyword::Rule, Keyword::EndRule, "RULE"},
    {Keyword::Constant, Keyword::EndConstant, "CONSTANT"},
    {Keyword::SubtypeConstraint, Keyword::EndSubtypeConstraint, "SUBTYPE_CONSTRAINT"},
};

}   // namespace

ExpressParser::ExpressParser(std::string_view text, std::vector<SchemaMessage>& messages, Place place)
    : m_messages(messages),
      m_lexer(text, place) {
    vNext();
}

// ---- Tokens

void ExpressParser::vNext() {
    m_token = m_lexer.next();
    if (m_token.kind == TokenKind::Fault) boFaultAt(m_token.place, std::string(m_token.text));
}

bool ExpressParser::boAt(char cSymbol) const noexcept {
    return m_token.kind == TokenKind::Symbol && m_token.text.size() == 1 && m_token.text[0] == cSymbol;
}

bool ExpressParser::boAtName() const noexcept {
    return m_token.kind == TokenKind::Word && m_token.keyword == Keyword::None;
}

bool ExpressParser::boTake(char cSymbol) {
    if (!boAt(cSymbol)) return false;
    vNext();
    return true;
}

bool ExpressParser::boTake(Keyword keyword) {
    if (!boAt(keyword)) return false;
    vNext();
    return true;
}

bool ExpressParser::boExpect(char cSymbol) {
    const char sWhat[] = {'"', cSymbol, '"', '\0'};
    return boTake(cSymbol) || boExpected(sWhat);
}

bool ExpressParser::boExpect(Keyword keyword, const char* sSpelled) { return boTake(keyword) || boExpected(sSpelled); }

bool ExpressParser::boReadName(Name& name, const char* sWhat) {
    if (!boAtName()) return boExpected(sWhat);
    name = {m_token.text, m_token.place};
    vNext();
    return !m_boFault;
}

// The first fault is the message; the current token is the end of the text from then on.
bool ExpressParser::boFaultAt(Place place, std::string sText) {
    if (!m_boFault) m_messages.push_back({place.iLine, place.iColumn, std::move(sText)});
    m_boFault = true;
    m_token = {TokenKind::End, Keyword::None, {}, m_token.place};
    return false;
}

bool ExpressParser::boExpected(const char* sWhat) {
    std::string sFound = "the end of the text";
    if (m_token.kind != TokenKind::End) {
        sFound = '"' + std::string(m_token.text.substr(0, g_iMaxFoundText)) + '"';
    }
    return boFaultAt(m_token.place, std::string(sWhat) + " expected, " + sFound + " found");
}

// ---- Schema

// "SCHEMA" name [ version ] ";" { declaration } "END_SCHEMA" ";"
bool ExpressParser::boReadSchema(SchemaDeclaration& schema) {
    if (!boExpect(Keyword::Schema, "SCHEMA") || !boReadName(schema.name, "the schema's name")) return false;
    if (m_token.kind == TokenKind::String) vNext();
    if (!boExpect(';')) return false;
    while (!boAt(Keyword::EndSchema))
        if (!boReadDeclaration(schema)) return false;
    vNext();
    if (!boExpect(';')) return false;
    return (m_token.kind == TokenKind::End && !m_boFault) || boExpected("the end of the text");
}

bool ExpressParser::boReadDeclaration(SchemaDeclaration& schema) {
    if (boAt(Keyword::Type)) return boReadTypeDeclaration(schema.types.emplace_back());
    if (boAt(Keyword::Entity)) return boReadEntityDeclaration(schema);
    for (const SkippedBlock& block : g_skippedBlocks)
        if (boAt(block.begin)) return boSkipBlock(block.sWhat, block.begin, block.end);
    if (boAt(Keyword::Use) || boAt(Keyword::Reference))
        return boFaultAt(m_token.place, "refers to another schema; only the long form is read");
    return boExpected("a declaration or END_SCHEMA");
}

// From "begin" to its own "end" and the ";" behind it; blocks of one kind may stand in each other.
bool ExpressParser::boSkipBlock(const char* sWhat, Keyword begin, Keyword end) {
    const Place start = m_token.place;
    std::size_t iDepth = 0;
    do {
        if (boAt(begin)) ++iDepth;
        if (boAt(end)) --iDepth;
        if (m_token.kind == TokenKind::End) return boFaultAt(start, std::string(sWhat) + " not closed");
        vNext();
    } while (iDepth);
    return boExpect(';');
}

// Up to and with the next ";".
bool ExpressParser::boSkipStatement() {
    while (!boAt(';')) {
        if (m_token.kind == TokenKind::End || boEndsStatement(m_token.keyword)) return boExpected("\";\"");
        vNext();
    }
    vNext();
    return !m_boFault;
}

bool ExpressParser::boSkipParentheses() {
    const Place start = m_token.place;
    if (!boExpect('(')) return false;
    for (std::size_t iDepth = 1; iDepth;) {
        if (m_token.kind == TokenKind::End || boAt(';')) return boFaultAt(start, "\"(\" not closed");
        if (boAt('(')) ++iDepth;
        if (boAt(')')) --iDepth;
        vNext();
    }
    return !m_boFault;
}

// Where another word of an entity's or a type's frame begins.
bool ExpressParser::boAtClauseEnd() const noexcept {
    return m_token.kind == TokenKind::End || boEndsStatement(m_token.keyword) || boAt(Keyword::Inverse) ||
           boAt(Keyword::Unique) || boAt(Keyword::Where);
}

// A clause of statements that no graph holds: WHERE.
bool ExpressParser::boSkipClause(Keyword clause) {
    if (!boTake(clause)) return true;
    while (!boAtClauseEnd())
        if (!boSkipStatement()) return false;
    return !m_boFault;
}

// ---- Types

// "TYPE" name "=" underlying type ";" [ where clause ] "END_TYPE" ";"
bool ExpressParser::boReadTypeDeclaration(TypeDeclaration& type) {
    vNext();
    return boReadName(type.name, "the type's name") && boExpect('=') && boReadUnderlyingType(type) && boExpect(';') &&
           boSkipClause(Keyword::Where) && boExpect(Keyword::EndType, "END_TYPE") && boExpect(';');
}

bool ExpressParser::boReadUnderlyingType(TypeDeclaration& type) {
    const bool boExtensible = boTake(Keyword::Extensible);
    if (boExtensible && boTake(Keyword::GenericEntity) && !boAt(Keyword::Select)) return boExpected("SELECT");
    if (boTake(Keyword::Enumeration)) {
        type.form = TypeForm::Enumeration;
        return boReadExtendableItems(type, boExtensible);
    }
    if (boTake(Keyword::Select)) {
        type.form = TypeForm::Select;
        return boReadExtendableItems(type, boExtensible);
    }
    if (boExtensible) return boExpected("ENUMERATION or SELECT");
    return boReadTypeReference(type.type);
}

// [ "OF" ] items | "BASED_ON" name [ "WITH" items ] | nothing, which only an extensible type may leave so.
bool ExpressParser::boReadExtendableItems(TypeDeclaration& type, bool boExtensible) {
    if (boTake(Keyword::BasedOn)) {
        if (!boReadName(type.basedOn, "the name of a type")) return false;
        return !boTake(Keyword::With) || boReadItems(type);
    }
    if (boExtensible && boAt(';')) return true;
    if (type.form == TypeForm::Enumeration && !boExpect(Keyword::Of, "OF")) return false;
    return boReadItems(type);
}

// "(" name { "," name } ")"
bool ExpressParser::boReadItems(TypeDeclaration& type) {
    const char* sWhat = type.form == TypeForm::Enumeration ? "an enumerator" : "the name of a type or entity";
    if (!boExpect('(')) return false;
    do {
        if (!boReadName(type.items.emplace_back(), sWhat)) return false;
    } while (boTake(','));
    return boExpect(')');
}

// { aggregate "OF" } ( base type | name )
bool ExpressParser::boReadTypeReference(TypeReference& type) {
    while (aggregateKindOf(m_token.keyword))
        if (!boReadAggregate(type)) return false;
    if (baseKindOf(m_token.keyword)) return boReadBaseType(type);
    return boReadName(type.name, "a type");
}

// ( "ARRAY" | "LIST" | "SET" | "BAG" ) [ bounds ] "OF" [ "OPTIONAL" ] [ "UNIQUE" ]
bool ExpressParser::boReadAggregate(TypeReference& type) {
    if (type.levels.size() == g_iMaxAggregateLevels)
        return boFaultAt(m_token.place,
                         "aggregates nest deeper than " + std::to_string(g_iMaxAggregateLevels) + " levels");
    AggregateLevel& level = type.levels.emplace_back();
    level.kind = *aggregateKindOf(m_token.keyword);
    level.boBag = boAt(Keyword::Bag);
    vNext();
    if ((boAt('[') || level.kind == DataKind::Array) && !boReadBounds(level.sBounds)) return false;
    if (!boExpect(Keyword::Of, "OF")) return false;
    level.boOptional = boTake(Keyword::Optional);
    level.boUnique = boTake(Keyword::Unique);
    return !m_boFault;
}

// "[" expression ":" expression "]", of which the text is kept without its blanks.
bool ExpressParser::boReadBounds(std::string& sBounds) {
    if (!boExpect('[')) return false;
    sBounds.assign(1, '[');
    bool boColon = false;
    bool boWord = false;
    std::size_t iDepth = 0;
    while (!boAt(']') || iDepth) {
        if (m_token.kind == TokenKind::End || boAt(';')) return boExpected("\"]\"");
        if (boAt('[')) ++iDepth;
        if (boAt(']')) --iDepth;
        if (boAt(':')) boColon = true;
        const bool boWordNow = m_token.kind == TokenKind::Word || m_token.kind == TokenKind::Number;
        if (boWord && boWordNow) sBounds += ' ';
        boWord = boWordNow;
        sBounds += m_token.text;
        vNext();
    }
    if (!boColon) return boExpected("\":\" of the bounds");
    sBounds += ']';
    vNext();
    return !m_boFault;
}

bool ExpressParser::boReadBaseType(TypeReference& type) {
    type.kind = *baseKindOf(m_token.keyword);
    vNext();
    const bool boHasWidth =
        type.kind == DataKind::String || type.kind == DataKind::Binary || type.kind == DataKind::Real;
    return !m_boFault && (!boHasWidth || !boAt('(') || boReadWidth(type));
}

// "(" number ")" [ "FIXED" ]
bool ExpressParser::boReadWidth(TypeReference& type) {
    if (!boExpect('(')) return false;
    const std::string_view text = m_token.text;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), type.iWidth);
    if (m_token.kind != TokenKind::Number || result.ec != std::errc() || result.ptr != text.data() + text.size() ||
        type.iWidth == 0)
        return boExpected("a width");
    vNext();
    if (!boExpect(')')) return false;
    type.boFixed = boTake(Keyword::Fixed);
    return !m_boFault;
}

bool ExpressParser::boReadType(TypeReference& type) {
    return boReadTypeReference(type) &&
           ((m_token.kind == TokenKind::End && !m_boFault) || boExpected("the end of the type"));
}

// ---- Entities

// "ENTITY" name head ";" { attribute } clauses "END_ENTITY" ";"
bool ExpressParser::boReadEntityDeclaration(SchemaDeclaration& schema) {
    EntityDeclaration& entity = schema.entities.emplace_back();
    vNext();
    if (!boReadName(entity.name, "the entity's name") || !boReadEntityHead(entity)) return false;
    while (boAtName() || boAt(Keyword::Self))
        if (!boReadAttribute(schema, entity)) return false;
    if (!boReadDerived(entity)) return false;
    if (boTake(Keyword::Inverse))
        while (boAtName() || boAt(Keyword::Self))
            if (!boReadInverse(entity)) return false;
    return boReadUnique(entity) && boSkipClause(Keyword::Where) && boExpect(Keyword::EndEntity, "END_ENTITY") &&
           boExpect(';');
}

// [ "ABSTRACT" ] [ "SUPERTYPE" [ "OF" "(" ... ")" ] ] [ "SUBTYPE" "OF" "(" name ")" ] ";"
bool ExpressParser::boReadEntityHead(EntityDeclaration& entity) {
    entity.boAbstract = boTake(Keyword::Abstract);
    if (boTake(Keyword::Supertype)) {
        if (boTake(Keyword::Of)) {
            if (!boSkipParentheses()) return false;
        } else if (!entity.boAbstract) {
            return boExpected("OF");
        }
    }
    if (boTake(Keyword::Subtype) && !boReadSupertype(entity)) return false;
    return boExpect(';');
}

bool ExpressParser::boReadSupertype(EntityDeclaration& entity) {
    if (!boExpect(Keyword::Of, "OF") || !boExpect('(') || !boReadName(entity.supertype, "the supertype's name"))
        return false;
    if (boAt(','))
        return boFaultAt(m_token.place,
                         std::string(entity.name.text) + " has more than one supertype, which is not supported");
    return boExpect(')');
}

// name { "," name } ":" [ "OPTIONAL" ] type ";" where a name may be "SELF\supertype.name". Such a
// redeclaration refines the type of an inherited parameter, and adds none.
bool ExpressParser::boReadAttribute(SchemaDeclaration& schema, EntityDeclaration& entity) {
    AttributeDeclaration attribute;
    std::vector<RedeclaredAttribute> redeclared;
    do {
        if (boAt(Keyword::Self)) {
            RedeclaredAttribute& again = redeclared.emplace_back();
            if (!boReadQualifiedName(again.supertype, again.attribute)) return false;
        } else if (!boReadName(attribute.name.text.empty() ? attribute.name : attribute.others.emplace_back(),
                               "an attribute's name")) {
            return false;
        }
    } while (boTake(','));
    if (!boExpect(':')) return false;
    attribute.boOptional = boTake(Keyword::Optional);
    if (!boReadTypeReference(attribute.type) || !boExpect(';')) return false;
    for (RedeclaredAttribute& again : redeclared) {
        again.boOptional = attribute.boOptional;
        again.type = attribute.type;
        entity.redeclared.push_back(std::move(again));
    }
    if (!attribute.name.text.empty()) schema.attributeAdd(entity) = std::move(attribute);
    return true;
}

// "SELF\supertype.attribute" [ "RENAMED" name ]
bool ExpressParser::boReadQualifiedName(Name& supertype, Name& attribute) {
    Name ignored;
    vNext();
    if (!boExpect('\\') || !boReadName(supertype, "the supertype's name") || !boExpect('.') ||
        !boReadName(attribute, "an attribute's name"))
        return false;
    return !boTake(Keyword::Renamed) || boReadName(ignored, "an attribute's name");
}

// [ "DERIVE" { name ":" type ":=" expression ";" } ], of which only those are kept that redeclare an attribute.
bool ExpressParser::boReadDerived(EntityDeclaration& entity) {
    if (!boTake(Keyword::Derive)) return true;
    while (!boAtClauseEnd()) {
        if (boAt(Keyword::Self)) {
            RedeclaredAttribute& derived = entity.redeclared.emplace_back();
            derived.boDerived = true;
            if (!boReadQualifiedName(derived.supertype, derived.attribute)) return false;
        }
        if (!boSkipStatement()) return false;
    }
    return !m_boFault;
}

// [ "UNIQUE" { rule ";" } ]
bool ExpressParser::boReadUnique(EntityDeclaration& entity) {
    if (!boTake(Keyword::Unique)) return true;
    while (!boAtClauseEnd())
        if (!boReadUniqueRule(entity.unique.emplace_back()) || !boExpect(';')) return false;
    return !m_boFault;
}

// [ label ":" ] attribute { "," attribute }, where an attribute may be "SELF\supertype.name".
bool ExpressParser::boReadUniqueRule(UniqueDeclaration& rule) {
    Name supertype;
    do {
        Name& name = rule.attributes.emplace_back();
        if (boAt(Keyword::Self)) {
            if (!boReadQualifiedName(supertype, name)) return false;
            continue;
        }
        if (!boReadName(name, "an attribute's name")) return false;
        if (rule.attributes.size() == 1 && rule.label.text.empty() && boTake(':')) {
            rule.label = name;
            rule.attributes.clear();
            if (!boAt(Keyword::Self)) {
                if (!boReadName(rule.attributes.emplace_back(), "an attribute's name")) return false;
            } else if (!boReadQualifiedName(supertype, rule.attributes.emplace_back())) {
                return false;
            }
        }
    } while (boTake(','));
    return true;
}

// name ":" [ ( "SET" | "BAG" ) [ bounds ] "OF" ] entity "FOR" [ entity "." ] attribute ";"
bool ExpressParser::boReadInverse(EntityDeclaration& entity) {
    InverseDeclaration inverse;
    const bool boRedeclared = boAt(Keyword::Self);
    Name supertype;
    if (!(boRedeclared ? boReadQualifiedName(supertype, inverse.name)
                       : boReadName(inverse.name, "an inverse attribute's name")) ||
        !boExpect(':'))
        return false;
    inverse.boAggregate = boAt(Keyword::Set) || boAt(Keyword::Bag);
    if (inverse.boAggregate) {
        vNext();
        if (boAt('[') && !boReadBounds(inverse.sBounds)) return false;
        if (!boExpect(Keyword::Of, "OF")) return false;
    }
    if (!boReadName(inverse.forEntity, "the referring entity's name") || !boExpect(Keyword::For, "FOR") ||
        !boReadName(inverse.forAttribute, "an attribute's name"))
        return false;
    if (boTake('.') && !boReadName(inverse.forAttribute, "an attribute's name")) return false;
    if (!boExpect(';')) return false;
    if (!boRedeclared) entity.inverses.push_back(std::move(inverse));
    return true;
}

}   // namespace oxa::ifc::def::express
