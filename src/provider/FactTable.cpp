// SPDX-License-Identifier: Apache-2.0
// The text form of a schema's declarations, a line each, and its difference to the table of a related schema.
#include "provider/FactTable.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <unordered_set>
#include <utility>

#include "provider/ExpressParser.h"

namespace oxa::ifc::def::express {

namespace {

// ---- Reading

// Of a UNIQUE rule that has none.
constexpr std::string_view g_noLabel = "-";

// Characters of a table, all told, for each of its types, entities and attributes: 350, 175 and 90 of the published
// schemas. Of tables with fewer, lists grow.
constexpr std::size_t g_iLeastSizeOfType = 256;
constexpr std::size_t g_iLeastSizeOfEntity = 128;
constexpr std::size_t g_iLeastSizeOfAttribute = 64;

// One line after the other, and in it one word after the other. Lines and columns count from 1.
class LineCursor {
public:
    explicit LineCursor(std::span<const std::string_view> pieces) : m_pieces(pieces) {}

    // The next line that is neither empty nor a remark; false at the end.
    bool boNextLine() {
        while (boMore()) {
            const std::size_t iLength = std::min(m_rest.find('\n'), m_rest.size());
            m_line = m_rest.substr(0, iLength);
            m_rest.remove_prefix(std::min(iLength + 1, m_rest.size()));
            m_place = {m_place.iLine + 1, 1};
            if (!m_line.empty() && m_line.front() != '#') return true;
        }
        return false;
    }

    // Up to the next blank; empty at the end of the line.
    Name word() {
        const Name name{m_line.substr(0, m_line.find(' ')), m_place};
        vDrop(name.text.size());
        if (!m_line.empty()) vDrop(1);
        return name;
    }

    void vDrop(std::size_t iCount) {
        m_line.remove_prefix(iCount);
        m_place.iColumn += static_cast<unsigned>(iCount);
    }

    [[nodiscard]] std::string_view rest() const { return m_line; }
    [[nodiscard]] std::size_t iBlanks() const {
        return static_cast<std::size_t>(std::count(m_line.begin(), m_line.end(), ' '));
    }
    [[nodiscard]] Place place() const { return m_place; }

private:
    // Whether there is a line more.
    bool boMore() {
        for (; m_rest.empty() && !m_pieces.empty(); m_pieces = m_pieces.subspan(1)) m_rest = m_pieces.front();
        return !m_rest.empty();
    }

    std::span<const std::string_view> m_pieces;   // behind the current one
    std::string_view m_rest;                      // of the current piece, behind the current line
    std::string_view m_line;                      // what is left of the current line
    Place m_place{0, 1};
};

template <class Declaration>
void vSortByName(std::vector<Declaration>& declarations) {
    const auto boBefore = [](const Declaration& a, const Declaration& b) { return a.name.text < b.name.text; };
    if (!std::is_sorted(declarations.begin(), declarations.end(), boBefore))
        std::sort(declarations.begin(), declarations.end(), boBefore);
}

// Takes the declarations of the base whose names are in "touched" out of "to", and puts in those of the table.
//
// Related schemas share a table: IFC4X1 is IFC4 and some lines. What a table declares or drops replaces the declaration
// of the base with that name, as a whole; there is no merging inside of a type. Declarations are sorted by name, so
// that tables and schemas compare equal whatever the order in which a published text has them.
template <class Declaration>
void vMerge(std::vector<Declaration>& to, std::vector<Declaration>& from,
            const std::unordered_set<std::string_view>& touched) {
    std::erase_if(to, [&](const Declaration& old) { return touched.contains(old.name.text); });
    std::move(from.begin(), from.end(), std::back_inserter(to));
    vSortByName(to);
}

class FactTableReader {
public:
    FactTableReader(std::span<const std::string_view> pieces, SchemaDeclaration& schema,
                    std::vector<SchemaMessage>& messages)
        : m_lines(pieces),
          m_schema(schema),
          m_messages(messages) {
        std::size_t iSize = 0;
        for (const std::string_view piece : pieces) iSize += piece.size();
        m_types.reserve(iSize / g_iLeastSizeOfType);
        m_entities.reserve(iSize / g_iLeastSizeOfEntity);
        m_schema.attributes.reserve(m_schema.attributes.size() + iSize / g_iLeastSizeOfAttribute);
    }

    bool boRead() {
        while (m_lines.boNextLine())
            if (!boReadLine()) return false;
        if (m_name.text.empty()) return boFault({}, "a table begins with its schema's name");
        m_schema.name = m_name;
        if (m_schema.types.empty() && m_schema.entities.empty()) {
            m_schema.types = std::move(m_types);
            m_schema.entities = std::move(m_entities);
            vSortByName(m_schema.types);
            vSortByName(m_schema.entities);
            return true;
        }
        for (const auto& type : m_types) m_touched.insert(type.name.text);
        for (const auto& entity : m_entities) m_touched.insert(entity.name.text);
        vMerge(m_schema.types, m_types, m_touched);
        vMerge(m_schema.entities, m_entities, m_touched);
        return true;
    }

private:
    bool boFault(Place place, std::string sText) {
        m_messages.push_back({place.iLine, place.iColumn, std::move(sText)});
        return false;
    }

    bool boReadWord(Name& name) {
        name = m_lines.word();
        return !name.text.empty() || boFault(name.place, "a name expected, the end of the line found");
    }

    bool boReadLine() {
        switch (m_lines.rest().front()) {
        case '.':
        case '?': return boReadAttribute();
        case '<': return boReadInverse();
        case '*':
        case '=':
        case '~': return boReadRedeclared();
        case '!': return boReadUnique();
        default: break;
        }
        const Name keyword = m_lines.word();
        if (keyword.text == "schema") return boReadWord(m_name);
        if (keyword.text == "base") return boReadWord(m_base);
        if (keyword.text == "drop") return boReadDropped();
        if (keyword.text == "type") return boReadType(TypeForm::Reference);
        if (keyword.text == "enum") return boReadType(TypeForm::Enumeration);
        if (keyword.text == "select") return boReadType(TypeForm::Select);
        if (keyword.text == "entity") return boReadEntity(false);
        if (keyword.text == "abstract") return boReadEntity(true);
        return boFault(keyword.place, '"' + std::string(keyword.text) + "\" begins no line of a fact table");
    }

    bool boReadDropped() {
        while (!m_lines.rest().empty()) m_touched.insert(m_lines.word().text);
        return true;
    }

    // Mostly a name, which needs no parser.
    bool boReadTypeText(TypeReference& type) {
        if (boIsName(m_lines.rest())) {
            type.name = {m_lines.rest(), m_lines.place()};
            return true;
        }
        return ExpressParser(m_lines.rest(), m_messages, m_lines.place()).boReadType(type);
    }

    bool boReadType(TypeForm form) {
        TypeDeclaration& type = m_types.emplace_back();
        type.form = form;
        if (!boReadWord(type.name)) return false;
        if (form == TypeForm::Reference) return boReadTypeText(type.type);
        type.items.reserve(m_lines.iBlanks() + 1);
        while (!m_lines.rest().empty()) type.items.push_back(m_lines.word());
        return true;
    }

    bool boReadEntity(bool boAbstract) {
        EntityDeclaration& entity = m_entities.emplace_back();
        entity.boAbstract = boAbstract;
        if (!boReadWord(entity.name)) return false;
        entity.supertype = m_lines.word();
        return true;
    }

    // Null after a message when no entity stands above the line.
    EntityDeclaration* pCurrentEntity() {
        if (!m_entities.empty()) return &m_entities.back();
        boFault(m_lines.place(), "an attribute stands below its entity");
        return nullptr;
    }

    bool boReadAttribute() {
        EntityDeclaration* pEntity = pCurrentEntity();
        if (!pEntity) return false;
        AttributeDeclaration& attribute = m_schema.attributeAdd(*pEntity);
        attribute.boOptional = m_lines.rest().front() == '?';
        m_lines.vDrop(1);
        return boReadWord(attribute.name) && boReadTypeText(attribute.type);
    }

    bool boReadInverse() {
        EntityDeclaration* pEntity = pCurrentEntity();
        if (!pEntity) return false;
        InverseDeclaration& inverse = pEntity->inverses.emplace_back();
        m_lines.vDrop(1);
        if (!boReadWord(inverse.name) || !boReadWord(inverse.forEntity) || !boReadWord(inverse.forAttribute))
            return false;
        inverse.boAggregate = m_lines.word().text == "SET";
        inverse.sBounds = m_lines.rest();
        return true;
    }

    bool boReadRedeclared() {
        EntityDeclaration* pEntity = pCurrentEntity();
        if (!pEntity) return false;
        RedeclaredAttribute& again = pEntity->redeclared.emplace_back();
        again.boDerived = m_lines.rest().front() == '*';
        again.boOptional = m_lines.rest().front() == '~';
        m_lines.vDrop(1);
        return boReadWord(again.attribute) && (again.boDerived || boReadTypeText(again.type));
    }

    bool boReadUnique() {
        EntityDeclaration* pEntity = pCurrentEntity();
        if (!pEntity) return false;
        UniqueDeclaration& rule = pEntity->unique.emplace_back();
        m_lines.vDrop(1);
        if (!boReadWord(rule.label) || !boReadWord(rule.attributes.emplace_back())) return false;
        if (rule.label.text == g_noLabel) rule.label.text = {};
        while (!m_lines.rest().empty()) rule.attributes.push_back(m_lines.word());
        return true;
    }

    LineCursor m_lines;
    SchemaDeclaration& m_schema;
    std::vector<SchemaMessage>& m_messages;
    // What the table itself declares; attributes are with m_schema at once.
    Name m_name;
    std::vector<TypeDeclaration> m_types;
    std::vector<EntityDeclaration> m_entities;
    Name m_base;
    std::unordered_set<std::string_view> m_touched;   // names of the base that the table drops or gives anew
};

// ---- Writing

void vAppendAttributes(std::string& sText, const schema::Entity& entity) {
    for (const schema::Attribute& attribute : entity.ownAttributes) {
        sText += attribute.boOptional ? '?' : '.';
        sText.append(attribute.sName).append(" ").append(schema::sTypeText(attribute.types.front())) += '\n';
    }
    for (const schema::AttributeInverse& inverse : entity.ownInverseAttributes) {
        sText.append("<").append(inverse.sName).append(" ").append(inverse.pForEntity->sName);
        sText.append(" ").append(inverse.sForAttribute);
        if (inverse.boAggregate) sText.append(" SET");
        if (!inverse.sBounds.empty()) sText.append(" ").append(inverse.sBounds);
        sText += '\n';
    }
    for (const schema::Redeclaration& again : entity.redeclared) {
        sText += again.boDerived ? '*' : again.boOptional ? '~' : '=';
        sText += again.pAttribute->sName;
        if (again.pType) sText.append(" ").append(schema::sTypeText(again.pType));
        sText += '\n';
    }
    for (const schema::UniqueRule& rule : entity.uniqueRules) {
        sText.append("!").append(rule.sLabel.empty() ? std::string(g_noLabel) : rule.sLabel);
        for (const std::string& sName : rule.names) sText.append(" ").append(sName);
        sText += '\n';
    }
}

std::string sEntityLines(const schema::Entity& entity) {
    std::string sText = (entity.boAbstract ? "abstract " : "entity ") + entity.sName;
    if (entity.pParent) sText.append(" ").append(entity.pParent->sName);
    sText += '\n';
    vAppendAttributes(sText, entity);
    return sText;
}

std::string sTypeLine(const schema::Type& type) {
    if (type.pDeclared) return "type " + type.sName + ' ' + type.pDeclared->sName + '\n';
    std::string sText = ' ' + type.sName;
    if (const auto* pEnum = dynamic_cast<const schema::DataTypeEnum*>(type.pDataType)) {
        for (const std::string& sItem : pEnum->declared) sText.append(" ").append(sItem);
        return "enum" + sText + '\n';
    }
    if (const auto* pSelect = dynamic_cast<const schema::DataTypeSelect*>(type.pDataType)) {
        for (const schema::ObjectBase* pMember : pSelect->members) sText.append(" ").append(pMember->sName);
        return "select" + sText + '\n';
    }
    return "type" + sText + ' ' + schema::sTypeText(type.pDataType) + '\n';
}

// The lines of each type and each entity, by name.
struct Blocks {
    std::map<std::string, std::string> types;
    std::map<std::string, std::string> entities;

    Blocks() = default;
    explicit Blocks(const schema::Schema& schema) {
        for (const schema::Schema::Record& record : schema.objects) {
            if (const schema::Entity* pEntity = schema::pAsEntity(record.pObject))
                entities[pEntity->sName] = sEntityLines(*pEntity);
            else if (const schema::Type* pType = schema::pAsType(record.pObject))
                types[pType->sName] = sTypeLine(*pType);
        }
    }
};

using BlockMap = std::map<std::string, std::string>;

// " name" for each block of "base" that "blocks" has no longer.
std::string sDropped(const BlockMap& blocks, const BlockMap& base) {
    std::string sText;
    for (const auto& [sName, sLines] : base)
        if (!blocks.contains(sName)) sText.append(" ").append(sName);
    return sText;
}

// The blocks that "base" lacks or has otherwise.
std::string sChanged(const BlockMap& blocks, const BlockMap& base) {
    std::string sText;
    for (const auto& [sName, sLines] : blocks) {
        const auto pOld = base.find(sName);
        if (pOld == base.end() || pOld->second != sLines) sText += sLines;
    }
    return sText;
}

}   // namespace

std::string_view sFactTableBase(std::string_view table) {
    LineCursor lines({&table, 1});
    while (lines.boNextLine()) {
        const std::string_view keyword = lines.word().text;
        if (keyword == "base") return lines.word().text;
        if (keyword != "schema") break;
    }
    return {};
}

bool boReadFactTable(std::string_view table, SchemaDeclaration& schema, std::vector<SchemaMessage>& messages) {
    return boReadFactTable({&table, 1}, schema, messages);
}

bool boReadFactTable(std::span<const std::string_view> pieces, SchemaDeclaration& schema,
                     std::vector<SchemaMessage>& messages) {
    return FactTableReader(pieces, schema, messages).boRead();
}

std::string sFactTable(const schema::Schema& schema, const std::string& sName, const schema::Schema* pBase) {
    const Blocks blocks(schema);
    const Blocks base = pBase ? Blocks(*pBase) : Blocks();
    std::string sText = "schema " + sName + '\n';
    if (pBase) {
        sText.append("base ").append(pBase->sName) += '\n';
        const std::string sNames = sDropped(blocks.types, base.types) + sDropped(blocks.entities, base.entities);
        if (!sNames.empty()) sText.append("drop").append(sNames) += '\n';
    }
    return sText + sChanged(blocks.types, base.types) + sChanged(blocks.entities, base.entities);
}

}   // namespace oxa::ifc::def::express
