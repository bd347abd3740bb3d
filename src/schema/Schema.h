// SPDX-License-Identifier: Apache-2.0
/// @file
/// Schema: the object graph that says what every line of a file means.
///
/// For      the provider, which builds a graph, and the library, which reads it. Library users meet it when
///          they walk a schema by themselves.
/// Owner    a Schema owns all objects reached from it and must outlive every model that points into it.
/// Threads  a finished graph is read-only and shared by any number of threads; the four caches of an
///          Entity are built under locks of their own.
/// Terms    ISO 10303-11 (EXPRESS): entity, defined type, enumeration, select, aggregate, inverse attribute.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"
#include "schema/SchemaCache.h"
#include "schema/SchemaName.h"

namespace oxa::ifc {
struct DataSizeEntity;
}   // namespace oxa::ifc
namespace oxa::ifc::def::xmlschema {
struct Attribute;
struct Defaults;
}   // namespace oxa::ifc::def::xmlschema

/// The graph of a schema: entities, types, attributes (ISO 10303-11).
namespace oxa::ifc::def::schema {

/// The twelve kinds of a data type. A BAG takes the kind Set.
enum class DataKind : std::int32_t {
    Real = 0,
    Boolean = 1,
    Integer = 2,
    Number = 3,
    String = 4,
    Logical = 5,
    Binary = 6,
    Enumeration = 7,
    Select = 8,
    Array = 9,
    List = 10,
    Set = 11,
};

/// Whether values of that kind have items: ARRAY, LIST, SET and BAG.
[[nodiscard]] constexpr bool boIsAggregate(DataKind kind) noexcept {
    return kind == DataKind::Array || kind == DataKind::List || kind == DataKind::Set;
}

/// The exact class of an object, so that a class test is one comparison.
enum class ClassTag : std::uint32_t { DataType = 0, Type = 1, Entity = 2 };

/// The text with a to z in upper case, as names of EXPRESS become STEP keywords. Other bytes stay.
[[nodiscard]] OXA_SCHEMA_API std::string sUpper(std::string_view text);

/// What a schema has a name for: an entity, a defined type, or a data type.
struct OXA_SCHEMA_API ObjectBase {
    ClassTag eClassTag;        ///< the class
    std::string sName;         ///< the schema's own mixed case, as in IfcWall; empty for an anonymous data type
    std::string sNameUpper;    ///< the STEP keyword, as in IFCWALL
    std::uint32_t uNameHash;   ///< NameHash(sNameUpper)

    virtual ~ObjectBase();
    ObjectBase(const ObjectBase&) = delete;
    ObjectBase& operator=(const ObjectBase&) = delete;

protected:
    ObjectBase(ClassTag tag, std::string name);   ///< derives the other two fields
};

/// A data type: a base type, an aggregate, and through the derived classes an enumeration or a select.
/// Anonymous, except that it takes the name of the defined type that declares it.
struct OXA_SCHEMA_API DataTypeBase : ObjectBase {
    /// What values are; of an aggregate what holds the items.
    DataKind kind;

    /// Of that kind; the name is empty for an anonymous one.
    explicit DataTypeBase(DataKind eKind, std::string name = {});
    ~DataTypeBase() override;

    /// The element type of an aggregate: an Entity, a Type, or a further DataTypeBase. Null for all else.
    [[nodiscard]] virtual const ObjectBase* pElementGet() const noexcept;
};

/// STRING(22) FIXED, BINARY(32): base types that carry a width. 0 where none is given.
struct OXA_SCHEMA_API DataTypeSimple final : DataTypeBase {
    /// Characters of a STRING, bits of a BINARY, at the most.
    std::uint32_t iWidth = 0;
    /// FIXED: the width is that of every value.
    bool boFixed = false;

    using DataTypeBase::DataTypeBase;
    ~DataTypeSimple() override;
};

/// ARRAY, BAG, LIST or SET.
struct OXA_SCHEMA_API DataTypeAggregate final : DataTypeBase {
    /// The element type, of whichever class.
    const ObjectBase* pElement = nullptr;
    /// As declared, as in "[1:?]"; empty where none are.
    std::string sBounds;
    /// LIST OF UNIQUE.
    bool boUnique = false;
    /// ARRAY OF OPTIONAL.
    bool boOptional = false;
    /// Declared as BAG; the kind is Set.
    bool boBag = false;

    using DataTypeBase::DataTypeBase;
    ~DataTypeAggregate() override;
    [[nodiscard]] const ObjectBase* pElementGet() const noexcept override { return pElement; }
};

/// An ENUMERATION.
struct OXA_SCHEMA_API DataTypeEnum final : DataTypeBase {
    /// A set of enumerators that are kept elsewhere, ascending by bytes; each text once.
    class OXA_SCHEMA_API Items {
    public:
        ///@{
        /// As of a set of pointers, of which none is null.
        using value_type = const std::string*;
        using const_iterator = std::vector<value_type>::const_iterator;
        using iterator = const_iterator;
        ///@}

        Items() = default;
        /// Those of the texts, which stay where they are.
        explicit Items(const std::vector<std::string>& texts);

        ///@{
        /// All, in order.
        [[nodiscard]] const_iterator begin() const noexcept { return m_sorted.begin(); }
        [[nodiscard]] const_iterator end() const noexcept { return m_sorted.end(); }
        [[nodiscard]] std::size_t size() const noexcept { return m_sorted.size(); }
        [[nodiscard]] bool empty() const noexcept { return m_sorted.empty(); }
        ///@}
        /// The one with that text; end() where there is none.
        [[nodiscard]] const_iterator find(std::string_view text) const noexcept;
        /// Whether there is one with that text.
        [[nodiscard]] bool contains(std::string_view text) const noexcept { return find(text) != end(); }

    private:
        std::vector<value_type> m_sorted;
    };

    std::vector<std::string> declared;   ///< in the order of the declaration; upper case, without dots; owner
    Items items;                         ///< the same texts

    /// With its enumerators, as declared.
    explicit DataTypeEnum(std::vector<std::string> enumerators, std::string name = {});
    ~DataTypeEnum() override;
};

/// A SELECT.
struct OXA_SCHEMA_API DataTypeSelect final : DataTypeBase {
    std::vector<const ObjectBase*> members;   ///< as declared: entities and types, nested selects as Types
    bool boAllEntities = false;               ///< every member is an entity, nested selects looked through

    /// Without members, which its maker adds.
    explicit DataTypeSelect(std::string name = {});
    ~DataTypeSelect() override;

    /// True when "object" is a member, directly or through nested selects, or an entity with a supertype
    /// that is one. Any number of threads. "members" is final from the first call on.
    [[nodiscard]] bool isCompatible(const ObjectBase& object) const;

private:
    SchemaCache<std::vector<const ObjectBase*>> m_reachable;   // nested selects looked through; by address
};

/// A defined type such as IfcLabel.
struct OXA_SCHEMA_API Type final : ObjectBase {
    const DataTypeBase* pDataType = nullptr;   ///< followed through any chain of defined types
    const Type* pDeclared = nullptr;           ///< the next link of that chain; null where there is none

    /// By the name of the declaration, as in IfcLabel.
    explicit Type(std::string name);
    ~Type() override;
};

/// A forward attribute: one that has a place among the parameters of a statement.
struct Attribute {
    /// The entity that declares it.
    const Entity* pOwner = nullptr;
    std::string sName;   ///< as the schema spells it, as in GlobalId
    /// NameHash(sName).
    std::uint32_t uNameHash = 0;
    /// OPTIONAL: it may be without a value.
    bool boOptional = false;
    std::vector<const ObjectBase*> types;            ///< [0] the type, one further element a nesting level
    std::vector<const AttributeInverse*> inverses;   ///< whose FOR clause names this attribute
    const xmlschema::Attribute* pXml = nullptr;      ///< ifcXML mapping; null where the default holds
    std::string sTypeName;                           ///< declared type by name; see sTypeText() for display

    /// The type; null for an attribute that a faulty graph gives none.
    [[nodiscard]] const ObjectBase* pType() const noexcept { return types.empty() ? nullptr : types.front(); }
};

/// An inverse attribute: who refers to an instance over one forward attribute.
struct AttributeInverse {
    /// The entity that declares it.
    const Entity* pOwner = nullptr;
    /// As the schema spells it, as in ContainedInStructure.
    std::string sName;
    /// NameHash(sName).
    std::uint32_t uNameHash = 0;
    const Entity* pForEntity = nullptr;   ///< the referring entity named behind FOR's type
    std::string sForAttribute;            ///< the forward attribute's name
    /// The forward attribute; its owner is "pForEntity" or a supertype of it.
    const Attribute* pForAttribute = nullptr;
    const std::uint32_t* pXmlInverse = nullptr;   ///< ifcXML mode; null means 0
    bool boAggregate = false;                     ///< declared as SET OF or BAG OF
    std::string sBounds;                          ///< as declared, as in "[0:1]"
};

/// An attribute of a supertype that a subtype declares again (ISO 10303-11, 9.2.3.4). Its place among the parameters
/// of a statement stays; what may stand there gets narrower.
struct Redeclaration {
    const Attribute* pAttribute = nullptr;   ///< the one of the supertype
    bool boDerived = false;                  ///< under DERIVE: "*" stands in its place
    bool boOptional = false;                 ///< OPTIONAL, where it is explicit
    const ObjectBase* pType = nullptr;       ///< the type, where it is explicit; null where it is derived
};

/// A UNIQUE rule: no two instances have equal values for all of its attributes (ISO 10303-11, 9.2.2.1).
struct UniqueRule {
    std::string sLabel;                         ///< as in UR1; empty where it has none
    std::vector<std::string> names;             ///< of the attributes, as the schema spells them
    std::vector<const Attribute*> attributes;   ///< the same; empty where one of them is no forward attribute
};

/// An ENTITY: its attributes, and its place among supertypes and subtypes.
struct OXA_SCHEMA_API Entity final : ObjectBase {
    /// Forward attributes in an order.
    using AttributeList = std::vector<const Attribute*>;
    /// Inverse attributes in an order.
    using InverseList = std::vector<const AttributeInverse*>;

    /// The direct supertype; null for a root.
    const Entity* pParent = nullptr;
    /// ABSTRACT: only subtypes have instances.
    bool boAbstract = false;
    bool boHasInverse = false;                            ///< has an inverse attribute, or is the target side of one
    std::vector<Attribute> ownAttributes;                 ///< declared here, in order
    std::vector<AttributeInverse> ownInverseAttributes;   ///< declared here, in order
    std::vector<Redeclaration> redeclared;                ///< attributes of supertypes that are declared here again
    std::vector<UniqueRule> uniqueRules;                  ///< declared here, in order
    std::uint16_t iTypeOrdinal = 0;                       ///< depth-first number, unique in the schema
    std::uint16_t iTypeOrdinalLast = 0;                   ///< highest number in the subtree
    std::vector<const Entity*> subtypes;                  ///< direct ones

    /// By the name of the declaration, as in IfcWall; all else is its maker's to fill in.
    explicit Entity(std::string name);
    ~Entity() override;

    /// All attributes in STEP parameter order: those of the root supertype first. Built on first use.
    [[nodiscard]] const AttributeList& allAttributes() const;
    /// All inverse attributes, those of the root supertype first. Built on first use.
    [[nodiscard]] const InverseList& allInverseAttributes() const;
    /// The inverse attributes that any of allAttributes() feeds, in order. Empty unless boHasInverse.
    [[nodiscard]] const InverseList& inverseTargets() const;

    ///@{
    /// Null when absent; with boSupertypes the supertypes are searched too.
    [[nodiscard]] const Attribute* pAttributeFromName(const AttributeName& name, bool boSupertypes) const;
    [[nodiscard]] const AttributeInverse* pAttributeInverseFromName(const std::string& sInverse,
                                                                    bool boSupertypes) const;
    ///@}

    /// A slot that the library fills with the block layout of this type; the schema only keeps and frees it.
    SchemaCache<std::shared_ptr<const DataSizeEntity>> pDataSize;

private:
    SchemaCache<AttributeList> m_allAttributes;
    SchemaCache<InverseList> m_allInverseAttributes;
    SchemaCache<InverseList> m_inverseTargets;
};

/// All objects of one schema, by name.
class OXA_SCHEMA_API Schema {
public:
    /// One object, with its key.
    struct Record {
        std::string key;   ///< sNameUpper
        /// Owned by the schema.
        const ObjectBase* pObject;
    };

    /// Without objects: pAdopt() takes them, vFinish() ends the building.
    explicit Schema(std::string name);
    virtual ~Schema();
    Schema(const Schema&) = delete;
    Schema& operator=(const Schema&) = delete;

    std::string sName;             ///< as in FILE_SCHEMA, for instance "IFC4"
    std::vector<Record> objects;   ///< every named object, ascending by hash, length and bytes of the key

    /// Any case. Null when absent.
    [[nodiscard]] const ObjectBase* pObjectFromName(std::string_view name) const;
    /// Exact upper-case keyword; about one probe of a hash table. Null when absent.
    [[nodiscard]] const ObjectBase* pObjectFromName(const ObjectName& name) const noexcept;

    ///@{
    /// The same, and null unless the object is of that class.
    [[nodiscard]] const Entity* pEntityFromName(const ObjectName& name) const noexcept;
    [[nodiscard]] const Type* pTypeFromName(const ObjectName& name) const noexcept;
    ///@}

    /// Room for that many objects. Building only.
    void vReserve(std::size_t iCount) { m_owned.reserve(iCount); }
    /// Takes an object over. Building only; vFinish ends it.
    template <class Object>
    Object* pAdopt(std::unique_ptr<Object> pObject) {
        Object* pRaw = pObject.get();
        m_owned.push_back(std::move(pObject));
        return pRaw;
    }
    /// Sorts "objects" and builds the look-up table. The graph is read-only from here on.
    void vFinish();

private:
    std::vector<std::unique_ptr<ObjectBase>> m_owned;
    std::vector<std::uint32_t> m_slots;   // open addressing: index into "objects" plus 1, 0 empty
};

///@{
/// Null unless "pObject" is of that class; null stays null.
[[nodiscard]] inline const Entity* pAsEntity(const ObjectBase* pObject) noexcept {
    return pObject && pObject->eClassTag == ClassTag::Entity ? static_cast<const Entity*>(pObject) : nullptr;
}
[[nodiscard]] inline const Type* pAsType(const ObjectBase* pObject) noexcept {
    return pObject && pObject->eClassTag == ClassTag::Type ? static_cast<const Type*>(pObject) : nullptr;
}
///@}

/// The data type behind a Type, or the object itself when it is one; null for an entity and for null.
[[nodiscard]] OXA_SCHEMA_API const DataTypeBase* pDataTypeOf(const ObjectBase* pObject) noexcept;

/// What the items of this aggregate are, which a Type may name; null for all that is no aggregate, and for null.
[[nodiscard]] OXA_SCHEMA_API const ObjectBase* pElementOf(const ObjectBase* pObject) noexcept;

/// True when "pCandidate" is "pWanted" or has it among its supertypes. Two nulls are no match.
[[nodiscard]] inline bool boIsSubtype(const Entity* pCandidate, const Entity* pWanted) noexcept {
    if (!pWanted) return false;
    for (; pCandidate; pCandidate = pCandidate->pParent)
        if (pCandidate == pWanted) return true;
    return false;
}

/// How a type reads in a declaration, as in "LIST [1:?] OF IfcLabel": for display and comparison.
[[nodiscard]] OXA_SCHEMA_API std::string sTypeText(const ObjectBase* pObject);
/// The keyword of a base type, as REAL; "?" for the other kinds.
[[nodiscard]] OXA_SCHEMA_API std::string_view baseTypeText(DataKind kind) noexcept;

inline ObjectName::ObjectName(const Entity& entity) noexcept : HashedName(entity.sNameUpper, entity.uNameHash) {}
inline AttributeName::AttributeName(const Attribute& attribute) noexcept
    : HashedName(attribute.sName, attribute.uNameHash) {}
inline AttributeName::AttributeName(const AttributeInverse& attribute) noexcept
    : HashedName(attribute.sName, attribute.uNameHash) {}

}   // namespace oxa::ifc::def::schema

/// Schemas, with what their providers add to them.
namespace oxa::ifc::def {

/// A schema with what its provider hangs on it.
class OXA_SCHEMA_API SchemaPset final : public schema::Schema {
public:
    using schema::Schema::Schema;
    ~SchemaPset() override;

    const xmlschema::Defaults* pXmlDefaults = nullptr;   ///< default ifcXML modes; null without ifcXML
    std::string sExpress;   ///< the text that it was read from, whose rules no graph holds; empty for a built-in one
};

}   // namespace oxa::ifc::def
