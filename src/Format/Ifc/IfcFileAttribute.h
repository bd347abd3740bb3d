// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcFileAttribute: the cells in which attribute values lie.
///
/// A cell is a small plain record without virtual table and without a type of its own: the schema object that
/// describes the attribute says what it is. Cells stand packed, at any byte address.
///
///     class                       bytes  fields behind the four flag bytes
///     AttributeReal, ~Number      16     4 unused, double
///     AttributeBoolean             5     one byte, 0 or 1
///     AttributeInteger            16     4 unused, signed 64 bit
///     AttributeString             16     4 unused, pointer to NUL-terminated UTF-8
///     AttributeGuid               20     16-byte Guid
///     AttributeLogical             8     signed 32 bit: 0, 1, -1 unknown
///     AttributeBinary             24     4 unused, pointer to bytes, unsigned 64-bit count
///     AttributeEnumeration        16     4 unused, pointer to NUL-terminated text
///     AttributeSelect             32     4 unused, pointer to the value's cell, AttributeType, 4 unused, schema Type
///     AttributeList               16     AttributeType of the items, pointer to them
///     AttributeEntity             16     4 unused, pointer to the Entity
///
/// - Memory: what a cell points to lies in the pool of its Data and is never given back singly, except where m_boPooled
///   is false.
/// - Threads: a cell belongs to the thread that parses its statement, later to the one that owns the model.
/// - Errors: a bad token gives a record in the errors of the read and a well-formed cell; reading goes on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcArray.h"
#include "Format/Ifc/IfcReportKey.h"
#include "Format/Ifc/Memory/List.h"
#include "Format/Ifc/Memory/SimplePool.h"
#include "Format/Ifc/Memory/Unaligned.h"
#include "platform/Export.h"
#include "platform/Id.h"
#include "schema/Schema.h"

namespace oxa::ifc {

class Data;
class Entity;
struct StepReadInfoData;
struct StepWriteInfo;
namespace details {
struct ItemEnds;
}   // namespace details
namespace types {
class IfcSelectBase;
}   // namespace types

/// What a cell holds: the kind of its data type plus one, or 13 for an entity reference. 0: not known yet.
enum class AttributeType : std::int32_t {
    Unknown = 0,
    Real = 1,
    Boolean = 2,
    Integer = 3,
    Number = 4,
    String = 5,
    Logical = 6,
    Binary = 7,
    Enumeration = 8,
    Select = 9,
    Array = 10,
    List = 11,
    Set = 12,
    Entity = 13,
};

/// The value tag of a kind of data type.
[[nodiscard]] constexpr AttributeType attributeType(def::schema::DataKind kind) noexcept {
    return static_cast<AttributeType>(static_cast<std::int32_t>(kind) + 1);
}

/// The class of a cell, settled once per type and attribute (see DataSizeEntity).
enum class CellClass : std::uint8_t {
    Real,
    Boolean,
    Integer,
    Number,
    String,
    Guid,
    Logical,
    Binary,
    Enumeration,
    Select,
    List,
    Entity,
    Unresolved,   ///< the schema gives the attribute no type
    Illegal,      ///< the schema gives it a kind outside the twelve
};

/// What every cell begins with: four flags of one byte each. Its operations work on cells of any class, which the
/// schema tells them. Cells are never destroyed through this class.
class OXA_IFC_API AttributeBase {
public:
    bool m_boDerived = false;     ///< "*" in the file: derived by the schema, no value stored
    bool m_boUndefined = false;   ///< "$" or absent: no value stored
    bool m_boPooled = true;       ///< what the cell points to lies in the pool
    bool m_boGuid = false;        ///< on a cell of kind String: it is an AttributeGuid

    /// What a parsing constructor gets: one token of one statement. Tokens are never copied.
    struct StepReadInfoAttribute {
        StepReadInfoData* m_pInfo;                    ///< the statement
        Data* m_pData;                                ///< the model, whose pool the value goes to
        const Entity* m_pEntity;                      ///< the entity being read, for reports
        const def::schema::Attribute* m_pAttribute;   ///< the attribute that the token is a value of
        const def::schema::ObjectBase* m_pType;       ///< inside a typed select value: the type named there
        std::size_t m_iStart;                         ///< the token in the statement's text
        std::size_t m_iLength;                        ///< of the token in bytes
        std::uint32_t m_iDepth;                       ///< aggregate and select levels above the token

        /// One byte of the token or of the text behind it; NUL behind the statement's end.
        [[nodiscard]] char cAt(std::size_t i) const noexcept;
    };

    /// Where the text of one value goes, and how.
    struct StepWriteInfoAttribute {
        StepWriteInfo* m_pLine;                       ///< the statement that the text is appended to
        const def::schema::Attribute* m_pAttribute;   ///< the attribute of the cell
        const def::schema::Type* m_pType = nullptr;   ///< of a value inside a select
        bool m_boInList = false;                      ///< the value is an item of a list
        bool m_boPlainText = false;                   ///< text as it is, for display
    };

    /// Appends the text of this cell (ISO 10303-21, 6.4). Faults are records in the errors of the write.
    void vWriteAttribute(StepWriteInfoAttribute& info) const;
    /// The same for a caller who knows the class of the cell.
    void vWriteAttribute(StepWriteInfoAttribute& info, CellClass eClass) const;
    /// The text of this one cell, for display: boPlainText leaves text unencoded and GUIDs in their long form.
    [[nodiscard]] std::string sWriteLine(const def::schema::Attribute& attribute, const Data& data,
                                         bool boPlainText) const;

    /// True when the cell is neither derived nor undefined.
    [[nodiscard]] bool boHasValue() const noexcept { return !m_boDerived && !m_boUndefined; }
    /// A value was stored: the cell is neither derived nor undefined any more.
    void vDefined() noexcept { m_boDerived = m_boUndefined = false; }

    /// Size of the cell for "object", an attribute's type. Throws the text "Illegal value" (const char*) for a
    /// kind outside the twelve, oxa::exception for a null or unresolvable object.
    [[nodiscard]] static unsigned int iAttributeSizeFromSchemaAttribute(const def::schema::ObjectBase& object,
                                                                        const def::schema::Attribute& attribute);
    /// The value tag of the attribute's type. Throws the text "illegal type" for a kind outside the twelve.
    [[nodiscard]] static AttributeType TypeFromSchemaAttribute(const def::schema::Attribute& attribute);
    /// The class of the cell that an attribute of type "object" gets.
    [[nodiscard]] static CellClass cellClass(const def::schema::ObjectBase* pObject,
                                             const def::schema::Attribute& attribute) noexcept;
    /// The same as far as the type tells: String for a GUID too, which the flag of the cell tells from a text.
    [[nodiscard]] static CellClass cellClass(const def::schema::ObjectBase* pObject) noexcept;

    /// Constructs a cell of zeroed memory in place: in its default state without "pInfo", else from the token.
    /// Writes the value tag to *pType unless that is null. Throws the text "illegal type".
    static void vAttributeNew(const def::schema::ObjectBase& object, const def::schema::Attribute& attribute,
                              void* pCell, StepReadInfoAttribute* pInfo, AttributeType* pType);
    /// The cell of a value inside a select, in pool memory, from a token. Null after an exception derived from
    /// std::exception, which is reported (Fatal, "Error_UnknownAttributeType").
    [[nodiscard]] static AttributeBase* pAttributeNew(const def::schema::Type& type, StepReadInfoAttribute& info,
                                                      AttributeType* pType);
    /// Brings a cell of zeroed memory to the state of an attribute that no statement mentions: undefined, no value.
    /// An attribute without a type has no cell and stays as it is. Throws the text "illegal type".
    static void vAttributeUndefined(CellClass eClass, void* pCell);

    /// Walks the values of type T that a cell holds, singly (boSingle) or in lists (boList), until the function
    /// answers false. False without a value, for a kind that holds no T, and when the function stopped the walk.
    template <class T>
    [[nodiscard]] static bool boForEach(const AttributeBase& cell, const def::schema::Attribute& attribute,
                                        std::function<bool(T&)> function, bool boSingle, bool boList);

    /// How a copy finds its way from one model into another: an empty function leaves what it gets as it is.
    ///
    /// From an entity of the source to the one that stands for it in the target; null for none.
    using MapEntity = std::function<Entity*(Entity*)>;
    /// From a type of the source's schema to one of the target's; null for none.
    using MapType = std::function<const def::schema::Type*(const def::schema::Type*)>;

    /// Whether two attribute values are the same. False unless both stand under one and the same schema object.
    /// With boSameEntity two references are equal when they are the same pointer; without, when the instances they
    /// lead to have equal content, however deep. Comparison of a cyclic model ends: a pair already being compared
    /// counts as equal. Strings are compared by bytes, reals exactly. Values held by selects, and rows of lists,
    /// are told apart more strictly: see Store/Compare.cpp. Any number of threads on a stable model.
    [[nodiscard]] bool boIsEqual(const def::schema::ObjectBase& object, const AttributeBase& other,
                                 const def::schema::ObjectBase& otherObject, bool boSameEntity) const;
    /// Moves the value into a cell of another instance, of this model or another, of this schema or another.
    /// "data" owns the target; "source" and "destination" are the two attributes. False: the value can't be
    /// moved, and the target is undefined or as it was.
    bool copyTo(AttributeBase& target, const def::schema::Attribute& source, const def::schema::Attribute& destination,
                Data& data, const MapEntity& mapEntity, const MapType& mapType) const;

    ///@{
    /// The text that ifcXML has for the value, and back (ISO 10303-28). "object" is the attribute's type; "path" says
    /// what type a select's value has, and what a list's items are. A list is one text with blanks between the items,
    /// or one text an item.
    /// Set: false, with the flags as they were, where the text can't be taken. Nothing is reported.
    /// Get: false without a value and where it has no text. Without "data" a reference has none.
    bool boValueAsXmlStringSet(const def::schema::ObjectBase& object, const std::string& text,
                               const def::schema::Attribute& attribute, Data& data,
                               const std::vector<const def::schema::ObjectBase*>& path);
    bool boValueAsXmlStringsSet(const def::schema::ObjectBase& object, const std::vector<std::string>& texts,
                                const def::schema::Attribute& attribute, Data& data,
                                const std::vector<const def::schema::ObjectBase*>& path);
    bool boValueAsXmlStringGet(const def::schema::ObjectBase& object, std::string& text,
                               const def::schema::Attribute& attribute, const Data* data) const;
    bool boValueAsXmlStringsGet(const def::schema::ObjectBase& object, std::vector<std::string>& texts,
                                const def::schema::Attribute& attribute, const Data* data) const;
    ///@}

protected:
    /// Copies the flags, m_boPooled aside. True exactly when this cell has a value.
    bool copyBaseTo(AttributeBase& target) const noexcept;
    /// Recognises "$" and "*", the tokens of one character that every parser looks for first. True: done.
    bool boReadNull(const StepReadInfoAttribute& info);
    /// One report on the attribute in hand.
    static void vReport(const StepReadInfoAttribute& info, ReportKey eKey);
};
static_assert(sizeof(AttributeBase) == 4 && alignof(AttributeBase) == 1);

/// Where the value would not stand at its natural alignment directly behind the flags.
template <class Value>
class PaddedCell : public AttributeBase {
    std::byte m_unused[4] = {};

public:
    Unaligned<Value> m_value = Value{};   ///< the value; meaningless in a cell without one
};

/// A cell of type REAL (ISO 10303-11, 8.1.2).
class OXA_IFC_API AttributeReal : public PaddedCell<double> {
public:
    AttributeReal() = default;
    /// REAL (ISO 10303-21, 6.4.2), looser: what toDouble accepts. "Error_ExpectedValidRealValueFor", then 0.0.
    explicit AttributeReal(StepReadInfoAttribute& info);

    ///@{
    /// The value as printf's "%f" writes it, and what strtod makes of a text: what follows the number is ignored, and
    /// false is for a text without one. The decimal point is "." in every locale.
    bool boValueAsXmlStringGet(std::string& text) const;
    bool boValueAsXmlStringSet(const std::string& text);
    ///@}
};

/// A cell of type NUMBER (ISO 10303-11, 8.1.1), stored as a real.
class OXA_IFC_API AttributeNumber final : public AttributeReal {
public:
    /// Made as an AttributeReal, whose reports it has as well.
    using AttributeReal::AttributeReal;

    /// As AttributeReal, but a text without a number stores 0.
    bool boValueAsXmlStringSet(const std::string& text);
};

/// A cell of type INTEGER (ISO 10303-11, 8.1.3).
class OXA_IFC_API AttributeInteger final : public PaddedCell<long long> {
public:
    AttributeInteger() = default;
    /// A signed 32-bit number. "Error_ExpectedValidIntegerValueFor", then 0.
    explicit AttributeInteger(StepReadInfoAttribute& info);

    ///@{
    /// Decimal digits; of a text what strtoll makes of it, 0 included.
    bool boValueAsXmlStringGet(std::string& text) const;
    bool boValueAsXmlStringSet(const std::string& text);
    ///@}
};

/// A cell of type BOOLEAN (ISO 10303-11, 8.1.5).
class OXA_IFC_API AttributeBoolean final : public AttributeBase {
public:
    std::uint8_t m_value = 0;   ///< 0 or 1

    AttributeBoolean() = default;
    /// ".T." or ".F."; up to three reports "Error_ExpectedValidBooleanValueFor" for one token.
    explicit AttributeBoolean(StepReadInfoAttribute& info);

    ///@{
    /// "true" or "false"; every text but "true" stores false.
    bool boValueAsXmlStringGet(std::string& text) const;
    bool boValueAsXmlStringSet(const std::string& text);
    ///@}
};

/// A cell of type LOGICAL (ISO 10303-11, 8.1.4).
class OXA_IFC_API AttributeLogical final : public AttributeBase {
public:
    Unaligned<LogicalValue> m_value = LogicalValue::False;   ///< the value; meaningless in a cell without one

    AttributeLogical() = default;
    /// ".T.", ".F." or ".U."; reports as AttributeBoolean, "Error_ExpectedValidLogicValueFor".
    explicit AttributeLogical(StepReadInfoAttribute& info);

    ///@{
    /// "true", "false" or "unknown"; every other text stores unknown.
    bool boValueAsXmlStringGet(std::string& text) const;
    bool boValueAsXmlStringSet(const std::string& text);
    ///@}

    /// Copies flags and value. Always true.
    bool copyTo(AttributeLogical& target, const def::schema::Attribute& destination, Data& data) const;
};

/// A cell of type STRING (ISO 10303-11, 8.1.6) that is no GlobalId. The text is UTF-8 with a NUL behind it.
class OXA_IFC_API AttributeString final : public PaddedCell<char*> {
public:
    AttributeString() = default;
    /// A quoted text, decoded to UTF-8. "Error_ExpectedValidStringValueFor", then an empty text.
    explicit AttributeString(StepReadInfoAttribute& info);

    /// Stores "size" bytes, the terminating NUL among them. Reuses the present block when that holds a longer
    /// text. Always true; an assertion tells a text that is not UTF-8.
    bool boValueSet(const char* text, std::size_t size, Pool& pool);

    ///@{
    /// The text as it stands, either way: neither encoded nor checked.
    bool boValueAsXmlStringGet(std::string& text) const;
    bool boValueAsXmlStringSet(const std::string& text, Pool& pool);
    ///@}

    /// Copies the flags, and the text into the pool of "data"; undefined in the target where there is none. Always
    /// true.
    bool copyTo(AttributeString& target, Data& data) const;

private:
    void vStore(const char* text, std::size_t size, Pool& pool);
};

/// A cell of the type IfcGloballyUniqueId, whose 22 characters are kept as the 128 bits that they stand for.
class OXA_IFC_API AttributeGuid final : public AttributeBase {
public:
    Unaligned<Guid> m_value = Guid{};   ///< the 128 bits, which may be any

    AttributeGuid() { m_boGuid = true; }
    /// 22 characters between quotes. "Error_ExpectedValidGuidValueFor", then a new random Guid.
    explicit AttributeGuid(StepReadInfoAttribute& info);

    ///@{
    /// 22 characters, on the way out between quotes as in a STEP file, on the way in without.
    bool boValueAsXmlStringGet(std::string& text) const;
    bool boValueAsXmlStringSet(const std::string& text);
    ///@}

    /// Copies flags and value. Always true.
    bool copyTo(AttributeGuid& target) const;
};

/// A cell of type BINARY (ISO 10303-11, 8.1.7), in whole bytes.
class OXA_IFC_API AttributeBinary final : public PaddedCell<unsigned char*> {
public:
    Unaligned<std::uint64_t> m_iCount = std::uint64_t{0};   ///< of the bytes that m_value points to

    AttributeBinary() = default;
    /// A quote, the digit of unused bits (not kept), pairs of hexadecimal digits, a quote.
    /// "Error_ExpectedValidBinaryValueFor", then no bytes.
    explicit AttributeBinary(StepReadInfoAttribute& info);

    /// Copies the bytes; the present block is reused when its count is large enough. Always true.
    bool boValueSet(const unsigned char* bytes, std::size_t size, Pool& pool);

    ///@{
    /// Base64; false for no bytes, either way.
    bool boValueAsXmlStringGet(std::string& text) const;
    bool boValueAsXmlStringSet(const std::string& text, Pool& pool);
    ///@}

    /// Copies the flags, and the bytes into the pool of "data"; undefined in the target where there are none. Always
    /// true.
    bool copyTo(AttributeBinary& target, Data& data) const;
};

/// After a read the text is the schema's own; after a setter it is a copy in the pool.
class OXA_IFC_API AttributeEnumeration final : public PaddedCell<const char*> {
public:
    AttributeEnumeration() = default;
    /// "Error_ExpectedValidEnumerationValueFor" or "Error_NotValidEnumerationValue", then null.
    explicit AttributeEnumeration(StepReadInfoAttribute& info);

    /// The enumeration behind "pType", or behind the attribute when that is null; null where there is none.
    [[nodiscard]] static const def::schema::DataTypeEnum* pEnumOf(const def::schema::ObjectBase* pType,
                                                                  const def::schema::Attribute& attribute) noexcept;

    ///@{
    /// The text must be an enumerator, else the pointer is cleared and the result false. Nothing is reported.
    bool boValueSet(const char* text, const def::schema::Attribute& attribute, Data& data);
    bool boValueSet(const char* text, const def::schema::DataTypeEnum& type, Pool& pool);
    ///@}

    ///@{
    /// The enumerator in lower case; one of the attribute's, in any case, on the way in.
    bool boValueAsXmlStringGet(std::string& text) const;
    bool boValueAsXmlStringSet(const std::string& text, const def::schema::Attribute& attribute, Pool& pool);
    ///@}

    /// False, with a null target, for a text that the destination's enumeration does not have.
    bool copyTo(AttributeEnumeration& target, const def::schema::Attribute& destination, Data& data) const;
};

/// A reference to an entity of the same model, which the cell does not own.
class OXA_IFC_API AttributeEntity final : public PaddedCell<Entity*> {
public:
    AttributeEntity() = default;
    /// "#" and a number: the slot of that number, marked as referenced, whether or not it is ever defined.
    /// "Error_ExpectedValidEntityValueFor", then null.
    explicit AttributeEntity(StepReadInfoAttribute& info);

    /// "i" and the number that the instance has in "data".
    bool boValueAsXmlStringGet(std::string& text, const Data* data) const;

    /// What maps to null is undefined in the target, and that is a success. What is not of the destination's type or
    /// a subtype is undefined too, and the result false.
    bool copyTo(AttributeEntity& target, const def::schema::Attribute& destination, Data& data,
                const MapEntity& mapEntity) const;
};

/// A cell of a SELECT type (ISO 10303-11, 8.4.2): a reference, or a cell of its own for a value with its type.
class OXA_IFC_API AttributeSelect final : public AttributeBase {
    std::byte m_unused[4] = {};

public:
    Unaligned<AttributeBase*> m_pValue = static_cast<AttributeBase*>(nullptr);   ///< the value's cell; null without one
    Unaligned<AttributeType> m_eType = AttributeType::Unknown;                   ///< what that cell holds

private:
    std::byte m_unused2[4] = {};

public:
    /// The type that the value was given with, as IFCLABEL; null for a reference.
    Unaligned<const def::schema::Type*> m_pType = static_cast<const def::schema::Type*>(nullptr);

    AttributeSelect() = default;
    /// "#5", or a type's keyword and a value in parentheses. "Error_ExpectedValidSelectValueFor", then empty.
    /// Typed values nest at most g_iDepthLimit levels deep; what lies deeper gets that report.
    explicit AttributeSelect(StepReadInfoAttribute& info);
    /// Frees what does not lie in the pool.
    ~AttributeSelect();
    AttributeSelect(const AttributeSelect&) = delete;
    AttributeSelect& operator=(const AttributeSelect&) = delete;

    /// How deep typed values may nest in a file that is read.
    static constexpr std::uint32_t g_iDepthLimit = 1000;

    /// Stores a caller's value; false when its type does not fit its holder, and the type stays as it was. "pObject" is
    /// the schema object that an aggregate inside needs; it may be null.
    bool boValueSet(const types::IfcSelectBase& value, const def::schema::ObjectBase* pObject, Pool& pool);
    /// False when there is no value, or one that IfcSelectBase can't hold.
    bool boValueGet(types::IfcSelectBase& value) const;
    /// Prepares the nested cell for the type that an import names: a path of exactly one object.
    void vTypeCreate(const std::vector<const def::schema::ObjectBase*>& path, Pool& pool);

    /// The same from a cell that need not be a select: a reference, a real, a number, an integer or a text too.
    /// Throws MissingType for a value of an attribute without a type.
    static bool boValueGetFromCell(const AttributeBase& cell, const def::schema::Attribute& attribute,
                                   types::IfcSelectBase& value);

    ///@{
    /// The text of the value, which the path says the type of on the way in; references are not set. With "Strings"
    /// the value is a list. The flags of the nested cell are neither looked at nor changed.
    bool boValueAsXmlStringGet(std::string& text, const def::schema::Attribute& attribute, const Data* data) const;
    bool boValueAsXmlStringsGet(std::vector<std::string>& texts, const def::schema::Attribute& attribute,
                                const Data* data) const;
    bool boValueAsXmlStringSet(const std::string& text, const def::schema::Attribute& attribute, Data& data,
                               const std::vector<const def::schema::ObjectBase*>& path);
    bool boValueAsXmlStringsSet(const std::vector<std::string>& texts, const def::schema::Attribute& attribute,
                                Data& data, const std::vector<const def::schema::ObjectBase*>& path);
    ///@}

    /// With boCompareFlags the flags of the two cells must agree as well. Two plain references never compare equal.
    [[nodiscard]] bool boIsEqual(const AttributeSelect& other, bool boSameEntity, bool boCompareFlags) const;
    /// "pObject": the type of the target's attribute. A typed value keeps its Type, whatever schema that is of.
    bool copyTo(AttributeSelect& target, const def::schema::ObjectBase* pObject, Data& data, const MapEntity& mapEntity,
                const MapType& mapType) const;

private:
    template <class Cell>
    Cell& cellOf(AttributeType eType, Pool& pool) const;
    void vCellTake(AttributeBase& cell, AttributeType eType, const def::schema::Type* pType) noexcept;
    bool boStored(AttributeBase& cell, AttributeType eType, const def::schema::Type* pType) noexcept;
    template <class Cell, class Value>
    bool boStore(AttributeType eType, const def::schema::Type* pType, const Value* pValue, Pool& pool);
    template <class Value>
    bool boStoreList(AttributeType eType, const def::schema::Type* pType, const Value* pValue, Pool& pool);
    bool boStoreText(const def::schema::Type* pType, const types::IfcSelectBase& value, Pool& pool);
};

class AttributeList;

/// An aggregate (ISO 10303-11, 8.2): LIST, SET or ARRAY, each stored as a block of items of one type, entities as a
/// chain.
class OXA_IFC_API AttributeListValueBase : public AttributeBase {
public:
    Unaligned<AttributeType> m_eItemType = AttributeType::Unknown;   ///< of the items; Unknown before it is settled
    Unaligned<void*> m_pItems = static_cast<void*>(nullptr);   ///< an Array of the items or an EntityList; may be null

    AttributeListValueBase() = default;
    /// "(a,b,c)". What is wrong with items is in the list of reports of the class of the items.
    explicit AttributeListValueBase(StepReadInfoAttribute& info);
    /// The same of "(a,b,c)" and nothing else, for a parser that knows the type of the items, which is not Unknown, and
    /// where they end.
    AttributeListValueBase(StepReadInfoAttribute& info, AttributeType eItemType, const details::ItemEnds& ends);
    AttributeListValueBase(const AttributeListValueBase&) = delete;
    AttributeListValueBase& operator=(const AttributeListValueBase&) = delete;

    /// The items as they lie; the item type must fit. Null for an empty list of entities or one never filled.
    template <class T>
    [[nodiscard]] Array<T>* pArray() const noexcept {
        return static_cast<Array<T>*>(m_pItems.load());
    }
    /// The items of a list of entities; the item type must be Entity. Null for an empty list.
    [[nodiscard]] EntityList* pEntities() const noexcept { return static_cast<EntityList*>(m_pItems.load()); }

    /// Makes the storage for an import; the last object of the path says what the items are.
    void vTypeListCreate(const std::vector<const def::schema::ObjectBase*>& path, std::size_t iCount, Pool& pool);

    ///@{
    /// Stores a caller's list. False for an item type that does not take Value, with an assertion where the item
    /// type is none at all. One instance for each Value of the list in Cells/ListSet.cpp.
    template <class Value>
    bool boValueSet(const Value& value, const def::schema::ObjectBase* pObject, Pool& pool);
    template <class Value>
    bool boValueSet(const Value& value, const def::schema::Attribute& attribute, Data& data);
    ///@}

    /// Appends one item; the items move to a new block.
    template <class Value>
    bool boPushBackValue(const Value& value, const def::schema::Attribute& attribute, Data& data);

    /// Walks the items as T until the function answers false; true when it never did.
    template <class T>
    bool boForEach(const def::schema::Attribute& attribute, std::function<bool(T&)> function) const;

    ///@{
    /// One text with a blank between the items, where the attribute's mapping lets a list have one; or a text an item.
    /// On the way in only reals are stored, and selects: see Xml/CellXmlText.cpp. "object" is the aggregate.
    bool boValueAsXmlStringGet(std::string& text, const def::schema::Attribute& attribute) const;
    bool boValueAsXmlStringsGet(std::vector<std::string>& texts, const def::schema::Attribute& attribute,
                                const Data* data) const;
    bool boValueAsXmlStringSet(const def::schema::ObjectBase& object, const std::string& text,
                               const def::schema::Attribute& attribute, Data& data,
                               const std::vector<const def::schema::ObjectBase*>& path);
    bool boValueAsXmlStringsSet(const def::schema::ObjectBase& object, const std::vector<std::string>& texts,
                                const def::schema::Attribute& attribute, Data& data,
                                const std::vector<const def::schema::ObjectBase*>& path);
    ///@}

    /// With boCompareFlags, as for rows and for lists in selects, two lists with the same flags are unequal.
    [[nodiscard]] bool boIsEqual(const AttributeListValueBase& other, bool boSameEntity, bool boCompareFlags) const;
    /// "pObject": the type of the target's attribute. References that map to null are dropped from the list.
    bool copyTo(AttributeListValueBase& target, const def::schema::ObjectBase* pObject, Data& data,
                const MapEntity& mapEntity, const MapType& mapType) const;

    /// The type of the items of an aggregate; Unknown for what is none, and for items that no list has. A select whose
    /// members all are entities has plain references, without a select cell and a nested cell for each item.
    [[nodiscard]] static AttributeType itemType(const def::schema::ObjectBase* pObject) noexcept;

protected:
    ~AttributeListValueBase();
    friend class AttributeSelect;

    /// Sets the item type from an aggregate object; false when no item type fits its element.
    bool boInitTypeFromAttribute(const def::schema::ObjectBase* pObject) noexcept;

    struct Reader;   // the parsing constructor's work
    friend struct ListSetter;
};

/// The cell of an aggregate, and a row of a list of lists.
class OXA_IFC_API AttributeList final : public AttributeListValueBase {
public:
    /// Made as an AttributeListValueBase.
    using AttributeListValueBase::AttributeListValueBase;
    ~AttributeList() = default;

    /// Appends one row to a list of lists of entities.
    bool boValuePushBack(const std::vector<Entity*>& row, const def::schema::Attribute& attribute, Data& data);
};

static_assert(sizeof(AttributeReal) == 16 && sizeof(AttributeNumber) == 16 && sizeof(AttributeInteger) == 16);
static_assert(sizeof(AttributeBoolean) == 5 && sizeof(AttributeLogical) == 8 && sizeof(AttributeGuid) == 20);
static_assert(sizeof(AttributeString) == 16 && sizeof(AttributeEnumeration) == 16 && sizeof(AttributeEntity) == 16);
static_assert(sizeof(AttributeBinary) == 24 && sizeof(AttributeSelect) == 32 && sizeof(AttributeList) == 16);
static_assert(alignof(AttributeBinary) == 1 && alignof(AttributeSelect) == 1 && alignof(AttributeList) == 1);

}   // namespace oxa::ifc
