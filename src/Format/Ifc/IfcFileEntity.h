// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcFileEntity: one instance of a model, "#n=NAME(...)" in a file.
///
/// No IFC class exists in the system: an instance is three pointers, of which the first says, through the
/// schema, what the bytes behind the second mean. Its number lives in its Data, its memory in that Data's pool.
///
/// - Threads: an instance belongs to one thread at a time: the parser thread of its statement while a file is read,
///   then the owner of the model.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/Memory/List.h"
#include "platform/Export.h"
#include "schema/Schema.h"

namespace oxa::ifc {

class Data;
struct StepReadInfoData;
struct StepWriteInfo;

/// How the attribute block of a type is laid out: cells packed in parameter order, no alignment between them.
/// One for each schema::Entity, made on first use and kept in its pDataSize slot.
struct DataSizeEntity {
    /// What the parser needs to know of one attribute, resolved once.
    struct Cell {
        const def::schema::Attribute* pAttribute;        ///< the attribute itself, which is the schema's
        std::uint32_t iOffset;                           ///< of the cell in the block, in bytes
        CellClass eClass;                                ///< what the cell is
        bool boOptional = false;                         ///< the attribute may be without a value
        AttributeType eItems = AttributeType::Unknown;   ///< of a list: what its items are, where it can have any
    };

    /// An inverse attribute of other types that an attribute of this one feeds.
    struct Feed {
        static constexpr std::size_t g_iNone = static_cast<std::size_t>(-1);   ///< no place

        std::size_t iCell;                   ///< the attribute; g_iNone where the schema names one that is not there
        const def::schema::Entity* pOwner;   ///< its instances and those of its subtypes have the list; may be null
        std::size_t iPosition;               ///< of the list in their inverse blocks; g_iNone where the owner has none
    };

    std::uint32_t iSize = 0;              ///< bytes of the block: the sum of the cell sizes
    std::uint32_t iInverses = 0;          ///< inverse attributes, each of which has a list behind the block
    std::vector<std::uint32_t> offsets;   ///< for each attribute the position of its cell in the block
    std::vector<Cell> cells;              ///< the same with more to each attribute
    std::vector<Cell> outside;            ///< selects and lists among them, whose values lie elsewhere
    std::vector<Cell> texts;              ///< and texts
    std::vector<Feed> feeds;              ///< in the order of inverseTargets
};

/// An instance of an entity type: its values by attribute name, and what refers to it. Its memory is its Data's.
class OXA_IFC_API Entity {
public:
    /// Empty: a place that a forward reference reserved. Data makes filled ones.
    Entity() noexcept = default;
    /// Filled, every cell undefined. Throws the text "illegal type" for an attribute of a kind outside the twelve.
    Entity(Data& data, const def::schema::Entity& schema);
    ~Entity() = default;
    Entity(const Entity&) = delete;
    Entity& operator=(const Entity&) = delete;

    /// The instance's type; null until the instance is filled.
    [[nodiscard]] const def::schema::Entity* pSchemaEntity() const noexcept { return m_pSchemaEntity; }
    /// The same, and MissingType is thrown where there is none.
    [[nodiscard]] const def::schema::Entity& schemaEntity() const;
    /// The layout of a type's attribute block, built on demand. Any number of threads.
    [[nodiscard]] static const DataSizeEntity& getDataSize(const def::schema::Entity& schema) {
        return schema.pDataSize.boReady() ? *schema.pDataSize.value() : dataSizeBuilt(schema);
    }

    /// With boInit: fresh blocks, every cell undefined, whatever the instance was before. Without: stores the type
    /// and allocates nothing, for a caller whose blocks are already right.
    void vSchemaEntitySet(Data& data, const def::schema::Entity& schema, bool boInit);

    ///@{
    /// Type, cells and inverse lists for callers that assemble or move instances themselves: no check, no allocation.
    /// Who asks for the inverse lists of an instance that is not const may change them, so all models count as changed.
    void unsafeSetSchemaEntity(const def::schema::Entity* pSchema) noexcept { m_pSchemaEntity = pSchema; }
    [[nodiscard]] void*& unsafeAttributesRaw() noexcept { return m_pAttributes; }
    [[nodiscard]] EntityList**& unsafeAttributesInverseRaw() noexcept;
    [[nodiscard]] EntityList** unsafeAttributesInverseRaw() const noexcept { return m_ppAttributesInverse; }
    ///@}

    /// True when "pWanted" is the instance's type or one of its supertypes; false without a type.
    [[nodiscard]] bool boIsCompatible(const def::schema::Entity* pWanted) const noexcept;

    /// Position among the STEP parameters, from 0; -1 for an unknown name and for an instance without attributes.
    [[nodiscard]] int indexFromName(const def::schema::AttributeName& name) const;
    /// Position among all inverse attributes; -1 for an unknown name, and also when the type has no forward
    /// attribute: such an instance has no inverse attribute that can be reached by name.
    [[nodiscard]] int inverseIndexFromName(const def::schema::AttributeName& name) const;
    /// The attribute and its cell; two nulls at or beyond the count and for an instance without attributes.
    [[nodiscard]] std::pair<const def::schema::Attribute*, AttributeBase*> pAttributeFromIndex(unsigned iIndex) const;

    ///@{
    /// Whether the attribute has that flag, "$" or "*" in a file; true for an unknown name too.
    [[nodiscard]] bool boIsUndefined(const def::schema::AttributeName& name) const;
    [[nodiscard]] bool boIsDerived(const def::schema::AttributeName& name) const;
    ///@}
    /// Sets or takes away the flag "$", and the value stays behind it. False for an unknown name. A mandatory attribute
    /// can't be made undefined: assertion and false.
    bool boUndefinedSet(const def::schema::AttributeName& name, bool boUndefined);
    /// Sets or takes away the flag "*", and the value stays behind it. False for an unknown name; nothing else is
    /// checked.
    bool boDerivedSet(const def::schema::AttributeName& name, bool boDerived);

    /// Typed access by attribute name. A request for the wrong kind gives false and leaves "value" as it was: nothing
    /// is converted. False also for an unknown name and for a cell without a value; boIsUndefined and boIsDerived tell
    /// these apart. Each family has one instance for each type that its comment lists, and no other.
    ///
    /// T: double, long long, unsigned long long (which no attribute holds), bool, LogicalValue, Guid, const char*
    /// (good while the model lives), std::string, std::vector<unsigned char>, Entity*, 2D and 3D Point and Vector,
    /// types::IfcSelectBase. A select gives the value that it holds.
    template <class T>
    bool boValueGet(const def::schema::AttributeName& name, T& value) const;
    /// The items of a list; "values" is cleared in any case, for an unknown name too.
    /// T: double, long long, char, unsigned char, const char*, std::string, std::vector<unsigned char>, Entity*,
    /// types::IfcSelectBase; rows of a list of lists: IfcArray of 2 or 3 long long or double, 2D and 3D Point, and
    /// std::vector of long long, double, char, Entity*.
    template <class T>
    bool boListValueGet(const def::schema::AttributeName& name, std::vector<T>& values) const;
    /// Fills the array from a list, and answers false whatever the list's length: with N items or more the walk was
    /// stopped, with fewer the array is not full. Kept for callers who look at the array alone.
    /// T: long long, double, Entity*; N: 2, 3.
    template <class T, std::size_t N>
    bool boFixedArrayValueGet(const def::schema::AttributeName& name, IfcArray<T, N>& value) const;

    /// Stores a value and makes the cell defined. Only the kind is checked: neither a range, nor the type of a
    /// referenced entity, nor whether the attribute is optional. T as in boValueGet, with const Entity* for Entity*.
    template <class T>
    bool boValueSet(const def::schema::AttributeName& name, const T& value, Data& data) {
        return boValueSet2(name, value, data);
    }
    /// Stores a list; an empty one is a value. T as in boListValueGet, with const Entity* beside Entity*, and
    /// std::vector<std::string>, std::vector<const Entity*> as rows. For unsigned char: the bytes of a binary.
    template <class T>
    bool boListValueSet(const def::schema::AttributeName& name, const std::vector<T>& values, Data& data);
    /// Appends one item, which makes an undefined list defined. T: char, long long, double, std::string, const char*,
    /// types::IfcSelectBase, the IfcArrays, 3D Point, std::vector of unsigned char, char, long long, double, Entity*,
    /// and const Entity*.
    template <class T>
    bool boListValuePushBack(const def::schema::AttributeName& name, const T& value, Data& data);
    /// As boListValuePushBack for a reference.
    bool boValuePushBack(const def::schema::AttributeName& name, const Entity* pEntity, Data& data);
    /// Removes the first occurrence of an entity from a list of entities; false when there is none.
    bool boValueRemove(const def::schema::AttributeName& name, const Entity* pEntity, Data& data);
    /// Not to be used: stops a debug build. T: long long, double, const Entity*.
    template <class T, std::size_t N>
    bool boFixedArrayValueSet(const def::schema::AttributeName& name, const IfcArray<T, N>& value, Data& data);

    ///@{
    /// The text that ifcXML has for a value, and back: the operations of AttributeBase by the same names, for the
    /// attribute of that name. False for an unknown name.
    bool boValueAsXmlStringSet(const def::schema::AttributeName& name, const std::string& text, Data& data,
                               const std::vector<const def::schema::ObjectBase*>& path);
    bool boValueAsXmlStringsSet(const def::schema::AttributeName& name, const std::vector<std::string>& texts,
                                Data& data, const std::vector<const def::schema::ObjectBase*>& path);
    bool boValueAsXmlStringGet(const def::schema::AttributeName& name, std::string& text, const Data* data) const;
    bool boValueAsXmlStringsGet(const def::schema::AttributeName& name, std::vector<std::string>& texts,
                                const Data* data) const;
    ///@}

    /// Whether both are of one type and every attribute has an equal value, references followed (see
    /// AttributeBase::boIsEqual). Inverse lists don't count. An instance of a type without attributes is equal to
    /// nothing, itself included. Any number of threads on a stable model.
    [[nodiscard]] bool boIsEqual(const Entity& other) const;

    /// Calls fn for each attribute in parameter order until it answers true; true when stopped that way.
    bool boForEachAttribute(std::function<bool(const def::schema::Attribute&, const AttributeBase&)> fn) const;
    /// The same for each inverse attribute whose list is not empty.
    bool boForEachInverseAttribute(
        std::function<bool(const def::schema::AttributeInverse&, const EntityList&)> fn) const;

    /// Raises the assertion "Missing schema entity" on an empty instance.
    void sanityCheck() const;

    /// Fills an empty instance from the parameter list of a statement: iLength characters from the opening
    /// parenthesis at iStart up to and with the closing one (ISO 10303-21, 11.2). All findings go to the errors of
    /// the read. Parameters left out stay undefined without a report.
    void vAttributesRead(Data& data, const def::schema::Entity& schema, StepReadInfoData& info, std::size_t iStart,
                         std::size_t iLength);

    /// Composes the statement "#n=NAME(...);" and hands it to the line writer of the run. An empty instance has none.
    void vWrite(StepWriteInfo& info) const;
    /// The same for display, outside of any run; empty for an empty instance.
    [[nodiscard]] std::string sWriteLine(const Data& data) const;
    /// What is wanted of an instance.
    enum class Wanted : std::uint8_t {
        Statement,   ///< its statement, and which entities it leads to
        Named,       ///< which entities it leads to
        Text         ///< its statement
    };
    ///@{
    /// Has the processor fetch what that is found in: the values, and once these have come what lies elsewhere: selects,
    /// lists, texts, and who refers to the instance.
    void vFetchValues() const noexcept;
    void vFetchOutside(Wanted eWanted) const noexcept;
    ///@}

    /// Announces this instance to everything that it refers to. Once, when all instances are in place; a second
    /// run without attributeInverseClear doubles every entry.
    void vAttributeInverseInit(Data& data);
    /// Appends an entity to the inverse list of that name; nothing for an unknown one. Like the three that follow
    /// it leaves the forward attributes alone: keeping both in step is the caller's task.
    void vEntityInverseAdd(Data& data, Entity* pEntity, const def::schema::AttributeName& name);
    /// Makes the inverse list of that name hold this entity and no other; nothing for an unknown name.
    void vEntityInverseSet(Data& data, Entity* pEntity, const def::schema::AttributeName& name);
    /// Makes the inverse list of that name hold these entities in their order; nothing for an unknown name.
    void vEntitiesInverseSet(Data& data, const std::vector<Entity*>& entities, const def::schema::AttributeName& name);
    /// Takes the first entry of the entity out of that inverse list; false when there is none, and for an unknown name.
    bool boEntityInverseRemove(Data& data, Entity* pEntity, const def::schema::AttributeName& name);
    ///@{
    /// The referrers in list order; empty at or beyond the count of inverse attributes.
    [[nodiscard]] std::vector<Entity*> entitiesInverseFromIndex(unsigned iIndex);
    [[nodiscard]] std::vector<const Entity*> entitiesInverseFromIndex(unsigned iIndex) const;
    ///@}
    /// Empties every inverse list of the instance, where its type takes part in inverse relations.
    void attributeInverseClear();

protected:
    /// What boValueSet does: one instance for each type that it lists.
    template <class T>
    bool boValueSet2(const def::schema::AttributeName& name, const T& value, Data& data);

private:
    friend class Data;
    friend class InverseBuilder;
    friend class ReachWalk;
    friend struct EntityComparison;
    using InverseEntry = Unaligned<EntityList*>;

    static const DataSizeEntity& dataSizeBuilt(const def::schema::Entity& schema);
    // Takes both blocks from the pool; "alloc" gives zeroed memory.
    template <class Allocate>
    const DataSizeEntity* pBlocksAllocate(const def::schema::Entity& schema, Allocate&& alloc);
    // Fills an empty instance; a filled one stays as it is.
    void vFill(Data& data, const def::schema::Entity& schema, bool boInit);
    // Calls visit(const Entity&) for each entity that the statement leads to; see Write/EntityNamed.h.
    template <class Visit>
    void vForEachNamedEntity(Visit&& visit) const;
    // The statement, in info.m_line or at the end of info.m_block; false, with no text, for an empty instance.
    bool boCompose(StepWriteInfo& info) const;
    // Brings cells iFirst and following to the undefined state. Throws the text "illegal type".
    void vCellsUndefined(const DataSizeEntity& size, std::size_t iFirst);
    // An attribute of the instance: its cell, and its place in the layout, which says what the cell is.
    struct Found {
        const DataSizeEntity::Cell* pPlace = nullptr;
        AttributeBase* pCell = nullptr;   // null for an unknown name, and for an instance without attributes
    };
    [[nodiscard]] Found find(const def::schema::AttributeName& name) const;
    // The same for a setter: throws for an attribute without a type. The model of "data" is no longer as it was read.
    [[nodiscard]] Found findToSet(const def::schema::AttributeName& name, Data& data) const;
    // The list head of one inverse attribute; null for an unknown name.
    [[nodiscard]] InverseEntry* pInverseEntry(const def::schema::AttributeName& name) const;
    // The same for a setter.
    [[nodiscard]] InverseEntry* pInverseEntryToSet(const def::schema::AttributeName& name) const;
    [[nodiscard]] InverseEntry* pInverseEntries() const noexcept {
        return reinterpret_cast<InverseEntry*>(m_ppAttributesInverse);
    }

    const def::schema::Entity* m_pSchemaEntity = nullptr;
    void* m_pAttributes = nullptr;                  // the cells; null for a type without attributes
    EntityList** m_ppAttributesInverse = nullptr;   // one list a inverse attribute; the entries may stand unaligned
};
static_assert(sizeof(Entity) == 24);

}   // namespace oxa::ifc
