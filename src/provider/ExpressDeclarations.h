// SPDX-License-Identifier: Apache-2.0
// ExpressDeclarations: what a schema text declares, as read and not yet resolved.
//
// For      the readers of this folder, which fill it, and GraphBuilder, which reads it.
// Owner    names are views into the text read, which must outlive them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "schema/Schema.h"

namespace oxa::ifc::def::express {

struct Place {
    unsigned iLine = 1;
    unsigned iColumn = 1;
};

// A name where it stands.
struct Name {
    std::string_view text;
    Place place;
};

// One "LIST [1:?] OF" in front of an element type.
struct AggregateLevel {
    schema::DataKind kind = schema::DataKind::List;
    bool boBag = false;
    bool boUnique = false;
    bool boOptional = false;
    std::string sBounds;   // as in "[1:?]", without blanks; empty where none are given
};

// Aggregate levels from the outside in, then a base type or a name. Flat, so that no depth of nesting
// costs stack.
struct TypeReference {
    std::vector<AggregateLevel> levels;
    Name name;                                        // empty text for a base type
    schema::DataKind kind = schema::DataKind::Real;   // the base type
    std::uint32_t iWidth = 0;
    bool boFixed = false;
};

enum class TypeForm { Reference, Enumeration, Select };

struct TypeDeclaration {
    Name name;
    TypeForm form = TypeForm::Reference;
    TypeReference type;        // of a Reference
    std::vector<Name> items;   // of an Enumeration or a Select, in order
    Name basedOn;              // the one that this one extends; empty text for none
};

// "name { , name } : [ OPTIONAL ] type;"
struct AttributeDeclaration {
    Name name;
    std::vector<Name> others;   // further ones of that type
    bool boOptional = false;
    TypeReference type;
};

struct InverseDeclaration {
    Name name;
    bool boAggregate = false;
    std::string sBounds;
    Name forEntity;      // the referring entity
    Name forAttribute;   // its attribute
};

// "SELF\supertype.attribute : [ OPTIONAL ] type;", or under DERIVE with a value in the place of OPTIONAL.
struct RedeclaredAttribute {
    Name supertype;
    Name attribute;
    bool boDerived = false;
    bool boOptional = false;
    TypeReference type;   // of one that is not derived
};

// "[ label : ] attribute { , attribute };" of a UNIQUE clause.
struct UniqueDeclaration {
    Name label;   // empty text for none
    std::vector<Name> attributes;
};

struct EntityDeclaration {
    Name name;
    bool boAbstract = false;
    Name supertype;                    // empty text for a root
    std::size_t iFirstAttribute = 0;   // explicit ones; redeclared ones add no parameter.
    std::size_t iAttributes = 0;       // See SchemaDeclaration::attributesOf
    std::vector<RedeclaredAttribute> redeclared;
    std::vector<InverseDeclaration> inverses;
    std::vector<UniqueDeclaration> unique;
};

struct SchemaDeclaration {
    Name name;
    std::vector<TypeDeclaration> types;        // in the order of the text
    std::vector<EntityDeclaration> entities;   // in the order of the text
    // Of all entities, each with its own in a row, in the order of the text.
    std::vector<AttributeDeclaration> attributes;

    [[nodiscard]] std::span<const AttributeDeclaration> attributesOf(const EntityDeclaration& entity) const {
        return std::span(attributes).subspan(entity.iFirstAttribute, entity.iAttributes);
    }
    // A further one, of the entity whose attributes came last or of one that has none yet.
    AttributeDeclaration& attributeAdd(EntityDeclaration& entity) {
        if (entity.iAttributes++ == 0) entity.iFirstAttribute = attributes.size();
        return attributes.emplace_back();
    }
};

}   // namespace oxa::ifc::def::express
