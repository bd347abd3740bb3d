// SPDX-License-Identifier: Apache-2.0
// The text that ifcXML has for values (ISO 10303-28), from cells and back.
//
// Not the text of a STEP file: no quotes save those of a GUID, "true" and not ".T.", base64 and not hexadecimal.
// Documents are read leniently. A number is what stands at the start of its text; of lists only those of reals come
// back as a whole, and those of selects item by item, because an importer says by its path what the items are.
#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <span>
#include <string_view>
#include <type_traits>

#include "Format/Ifc/Cells/ItemBlock.h"
#include "Format/Ifc/IfcCellVisit.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcGuid.h"
#include "Format/Ifc/Text/LenientReal.h"
#include "Format/Ifc/Xml/CellXmlItems.h"
#include "platform/Assert.h"
#include "platform/XmlBase64.h"
#include "schema/XmlSchema.h"

namespace oxa::ifc {

using def::schema::Attribute;
using def::schema::DataKind;
using def::schema::ObjectBase;
using xml::utilities::Base64;

namespace {

using Path = std::vector<const ObjectBase*>;
using Texts = std::vector<std::string>;
using Views = std::vector<std::string_view>;

void vNotImplemented(const char* sFunction) {
    Assert::vTell("Format/Ifc/IfcFileAttribute", sFunction, "Not implemented");
}

double realOrZero(std::string_view text) { return lenientReal(text).value; }

// As printf's "%f" in the "C" locale.
void vRealAppend(std::string& sText, double value) {
    constexpr int g_iDecimals = 6;
    char digits[std::numeric_limits<double>::max_exponent10 + g_iDecimals + 3];   // sign, first digit, point
    const auto result =
        std::to_chars(std::begin(digits), std::end(digits), value, std::chars_format::fixed, g_iDecimals);
    sText.append(digits, result.ptr);
}

constexpr char cLower(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool boEqualAnyCase(std::string_view a, std::string_view b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return cLower(x) == cLower(y); });
}

// The parts between white space, as a stream extracts them.
Views words(std::string_view text) {
    constexpr std::string_view g_sBlanks = " \t\n\v\f\r";
    Views words;
    for (;;) {
        const std::size_t iStart = text.find_first_not_of(g_sBlanks);
        if (iStart == std::string_view::npos) return words;
        const std::size_t iEnd = std::min(text.find_first_of(g_sBlanks, iStart), text.size());
        words.emplace_back(text.substr(iStart, iEnd - iStart));
        text.remove_prefix(iEnd);
    }
}

}   // namespace

// One plain value.

bool AttributeReal::boValueAsXmlStringGet(std::string& text) const {
    text.clear();
    vRealAppend(text, m_value);
    return true;
}

bool AttributeReal::boValueAsXmlStringSet(const std::string& text) {
    const LenientReal real = lenientReal(text);
    if (!real.iLength) return false;
    m_value = real.value;
    return true;
}

bool AttributeNumber::boValueAsXmlStringSet(const std::string& text) {
    m_value = realOrZero(text);
    return true;
}

bool AttributeInteger::boValueAsXmlStringGet(std::string& text) const {
    text = std::to_string(m_value.load());
    return true;
}

bool AttributeInteger::boValueAsXmlStringSet(const std::string& text) {
    m_value = std::strtoll(text.c_str(), nullptr, 10);
    return true;
}

bool AttributeBoolean::boValueAsXmlStringGet(std::string& text) const {
    text = m_value ? "true" : "false";
    return true;
}

bool AttributeBoolean::boValueAsXmlStringSet(const std::string& text) {
    m_value = text == "true";
    return true;
}

bool AttributeLogical::boValueAsXmlStringGet(std::string& text) const {
    switch (m_value.load()) {
    case LogicalValue::False: text = "false"; break;
    case LogicalValue::True: text = "true"; break;
    case LogicalValue::Unknown: text = "unknown"; break;
    }
    return true;
}

bool AttributeLogical::boValueAsXmlStringSet(const std::string& text) {
    m_value = text == "true" ? LogicalValue::True : text == "false" ? LogicalValue::False : LogicalValue::Unknown;
    return true;
}

bool AttributeString::boValueAsXmlStringGet(std::string& text) const {
    const char* pText = m_value;
    if (!pText) return false;
    text = pText;
    return true;
}

bool AttributeString::boValueAsXmlStringSet(const std::string& text, Pool& pool) {
    vStore(text.c_str(), text.size() + 1, pool);
    return true;
}

bool AttributeGuid::boValueAsXmlStringGet(std::string& text) const {
    char characters[IfcGuid::Length + 1];
    if (!IfcGuid::boIfcStringFromGuid(characters, m_value)) return false;
    text.assign(1, '\'').append(characters, IfcGuid::Length).append(1, '\'');
    return true;
}

bool AttributeGuid::boValueAsXmlStringSet(const std::string& text) {
    // The codec reads all 22 characters, however short the text.
    char characters[IfcGuid::Length + 1] = {};
    text.copy(characters, IfcGuid::Length);
    Guid guid{};
    if (!IfcGuid::boIfcStringToGuid(guid, characters)) return false;
    m_value = guid;
    return true;
}

bool AttributeBinary::boValueAsXmlStringGet(std::string& text) const {
    if (m_iCount.load() == 0) return false;
    text = Base64::encode(m_value, m_iCount);
    return true;
}

bool AttributeBinary::boValueAsXmlStringSet(const std::string& text, Pool& pool) {
    const std::vector<unsigned char> bytes = Base64::decode(text);
    return !bytes.empty() && boValueSet(bytes.data(), bytes.size(), pool);
}

bool AttributeEnumeration::boValueAsXmlStringGet(std::string& text) const {
    const char* pText = m_value;
    if (!pText) return false;
    text = pText;
    std::transform(text.begin(), text.end(), text.begin(), cLower);
    return true;
}

bool AttributeEnumeration::boValueAsXmlStringSet(const std::string& text, const Attribute& attribute, Pool& pool) {
    const def::schema::DataTypeEnum* pEnum = pEnumOf(nullptr, attribute);
    if (!pEnum) return false;
    const auto itFound = std::find_if(pEnum->items.begin(), pEnum->items.end(),
                                      [&](const std::string* pItem) { return boEqualAnyCase(*pItem, text); });
    return itFound != pEnum->items.end() && boValueSet((*itFound)->c_str(), *pEnum, pool);
}

bool AttributeEntity::boValueAsXmlStringGet(std::string& text, const Data* data) const {
    const Entity* pEntity = m_value;
    const std::size_t iId = pEntity && data ? data->iIdFromEntity(*pEntity) : 0;
    if (iId == 0) return false;
    text = 'i' + std::to_string(iId);
    return true;
}

// Which operation a cell of some class has.

namespace {

struct GetText {
    std::string& text;
    const Attribute& attribute;
    const Data* data;

    template <class Cell>
    bool operator()(const Cell& cell) const {
        return cell.boValueAsXmlStringGet(text);
    }
    bool operator()(const AttributeSelect& cell) const { return cell.boValueAsXmlStringGet(text, attribute, data); }
    bool operator()(const AttributeList& cell) const { return cell.boValueAsXmlStringGet(text, attribute); }
    bool operator()(const AttributeEntity& cell) const { return cell.boValueAsXmlStringGet(text, data); }
};

struct SetText {
    const ObjectBase& object;
    const std::string& text;
    const Attribute& attribute;
    Data& data;
    const Path& path;

    template <class Cell>
    bool operator()(Cell& cell) const {
        if constexpr (requires { cell.boValueAsXmlStringSet(text, data.pool()); })
            return cell.boValueAsXmlStringSet(text, data.pool());
        else
            return cell.boValueAsXmlStringSet(text);
    }
    bool operator()(AttributeEnumeration& cell) const {
        return cell.boValueAsXmlStringSet(text, attribute, data.pool());
    }
    bool operator()(AttributeSelect& cell) const { return cell.boValueAsXmlStringSet(text, attribute, data, path); }
    bool operator()(AttributeList& cell) const {
        return cell.boValueAsXmlStringSet(object, text, attribute, data, path);
    }
    bool operator()(AttributeEntity&) const { return false; }   // set by the importer, which knows the instances
};

// Only selects and lists have their value in several texts.
struct GetTexts {
    Texts& texts;
    const Attribute& attribute;
    const Data* data;

    bool operator()(const AttributeSelect& cell) const { return cell.boValueAsXmlStringsGet(texts, attribute, data); }
    bool operator()(const AttributeList& cell) const { return cell.boValueAsXmlStringsGet(texts, attribute, data); }
    bool operator()(const AttributeBase&) const { return false; }
};

struct SetTexts {
    const ObjectBase& object;
    const Texts& texts;
    const Attribute& attribute;
    Data& data;
    const Path& path;

    bool operator()(AttributeSelect& cell) const { return cell.boValueAsXmlStringsSet(texts, attribute, data, path); }
    bool operator()(AttributeList& cell) const {
        return cell.boValueAsXmlStringsSet(object, texts, attribute, data, path);
    }
    bool operator()(const AttributeBase&) const { return false; }
};

}   // namespace

bool AttributeBase::boValueAsXmlStringGet(const ObjectBase& object, std::string& text, const Attribute& attribute,
                                          const Data* data) const {
    return boHasValue() && visitCell(*this, cellClass(&object), GetText{text, attribute, data});
}

bool AttributeBase::boValueAsXmlStringsGet(const ObjectBase& object, Texts& texts, const Attribute& attribute,
                                           const Data* data) const {
    return boHasValue() && visitCell(*this, cellClass(&object), GetTexts{texts, attribute, data});
}

bool AttributeBase::boValueAsXmlStringSet(const ObjectBase& object, const std::string& text, const Attribute& attribute,
                                          Data& data, const Path& path) {
    const bool boSet = visitCell(*this, cellClass(&object), SetText{object, text, attribute, data, path});
    if (boSet) vDefined();
    return boSet;
}

bool AttributeBase::boValueAsXmlStringsSet(const ObjectBase& object, const Texts& texts, const Attribute& attribute,
                                           Data& data, const Path& path) {
    const bool boSet = visitCell(*this, cellClass(&object), SetTexts{object, texts, attribute, data, path});
    if (boSet) vDefined();
    return boSet;
}

// Selects: down to the value, through selects inside of selects.

namespace {

// The select that holds the value itself, which no select is; null where there is none, and for a reference.
template <class Select, class Prepare>
Select* pInnermost(Select* pSelect, const Prepare& boPrepare) {
    while (boPrepare(*pSelect) && pSelect->m_pValue.load() && pSelect->m_eType.load() != AttributeType::Entity) {
        Select* pInside = pSelectInside(*pSelect);
        if (!pInside) return def::schema::pDataTypeOf(pSelect->m_pType) ? pSelect : nullptr;
        pSelect = pInside;
    }
    return nullptr;
}

// The same with each select prepared for the type that the path says.
AttributeSelect* pInnermostFor(AttributeSelect& select, const Path& path, Pool& pool) {
    return pInnermost(&select, [&](AttributeSelect& inner) {
        inner.vTypeCreate(path, pool);
        // A path that says a select once more would make a select inside of this one, and so on without an end.
        const def::schema::Type* pType = inner.m_pType;
        const bool boEndless = path.size() == 1 && pType && pType == path.front() && pType->pDataType &&
                               pType->pDataType->kind == DataKind::Select;
        return !boEndless;
    });
}

const AttributeSelect* pInnermost(const AttributeSelect& select) {
    return pInnermost(&select, [](const AttributeSelect&) { return true; });
}

}   // namespace

bool AttributeSelect::boValueAsXmlStringGet(std::string& text, const Attribute& attribute, const Data* data) const {
    const AttributeSelect* pHolder = this;
    while (const AttributeSelect* pInner = pSelectInside(*pHolder)) pHolder = pInner;
    return visitSelected(*pHolder, GetText{text, attribute, data});
}

bool AttributeSelect::boValueAsXmlStringsGet(Texts& texts, const Attribute& attribute, const Data* data) const {
    const AttributeSelect* pHolder = pInnermost(*this);
    return pHolder && visitSelected(*pHolder, GetTexts{texts, attribute, data});
}

bool AttributeSelect::boValueAsXmlStringSet(const std::string& text, const Attribute& attribute, Data& data,
                                            const Path& path) {
    AttributeSelect* pHolder = pInnermostFor(*this, path, data.pool());
    return pHolder && visitSelected(*pHolder, SetText{*pHolder->m_pType.load(), text, attribute, data, path});
}

bool AttributeSelect::boValueAsXmlStringsSet(const Texts& texts, const Attribute& attribute, Data& data,
                                             const Path& path) {
    AttributeSelect* pHolder = pInnermostFor(*this, path, data.pool());
    return pHolder && visitSelected(*pHolder, SetTexts{*pHolder->m_pType.load(), texts, attribute, data, path});
}

// Lists.

namespace {

// One text an item, by the item type; false for an item type that has none.
bool boItemTexts(const AttributeListValueBase& list, const Attribute& attribute, const Data* data, Texts& texts) {
    const auto boEach = [&texts](const auto* pItems, auto&& sText) {
        if (!pItems) return true;
        texts.reserve(pItems->size());
        for (const auto& item : *pItems) texts.push_back(sText(item));
        return true;
    };
    return visitItems(list,
                      Overloads{
                          [&](const Array<double>* pItems) {
                              return boEach(pItems, [](double value) {
                                  std::string sText;
                                  vRealAppend(sText, value);
                                  return sText;
                              });
                          },
                          [&](const Array<long long>* pItems) {
                              return boEach(pItems, [](long long iValue) { return std::to_string(iValue); });
                          },
                          [&](const Array<char*>* pItems) {
                              return boEach(pItems, [](const char* pText) { return std::string(pText ? pText : ""); });
                          },
                          [&](const Array<AttributeSelect>* pItems) {
                              return boEach(pItems, [&](const AttributeSelect& item) {
                                  std::string sText;
                                  return item.boValueAsXmlStringGet(sText, attribute, data) ? sText : std::string();
                              });
                          },
                          [](AnyItems) { return false; },
                      });
}

// What the item texts of a list become. "iStep" is how far the walk moves on behind each select: 1 or 0.
struct ItemsSetter {
    AttributeListValueBase& list;
    const ObjectBase& object;
    std::span<const std::string_view> texts;
    const Attribute& attribute;
    Data& data;
    const Path& path;
    std::size_t iStep;
    const char* sFunction;

    bool operator()(const Array<double>*) const {
        std::vector<double> values(texts.size());
        std::transform(texts.begin(), texts.end(), values.begin(), realOrZero);
        return list.boValueSet(values, &object, data.pool());
    }
    bool operator()(const Array<AttributeSelect>*) const {
        const auto [items, boNew] = itemBlock<AttributeSelect>(list, texts.size(), data.pool());
        if (boNew) ::new (items.begin()) AttributeSelect;   // the others stay zero until they are filled
        const Path itemPath(path.begin(), path.empty() ? path.end() : path.end() - 1);
        auto itText = texts.begin();
        for (AttributeSelect& item : items) {
            if (!item.m_pValue.load()) item.m_boPooled = true;
            if (!item.boValueAsXmlStringSet(std::string(*itText), attribute, data, itemPath)) return false;
            item.vDefined();
            itText += static_cast<std::ptrdiff_t>(iStep);
        }
        return true;
    }
    bool operator()(const Array<long long>*) const { return false; }
    bool operator()(const Array<char*>*) const { return false; }
    bool operator()(AnyItems) const {
        vNotImplemented(sFunction);
        return false;
    }
};

constexpr const char* g_sStringsSet = "oxa::ifc::AttributeListValueBase::boValueAsXmlStringsSet";

bool boItemsSet(const ItemsSetter& setter) {
    setter.list.vTypeListCreate(setter.path, setter.texts.size(), setter.data.pool());
    return visitItems(setter.list, setter);
}

}   // namespace

bool AttributeListValueBase::boValueAsXmlStringGet(std::string& text, const Attribute& attribute) const {
    text.clear();
    if (!attribute.pXml || !attribute.pXml->boListAsText) return false;
    Texts texts;
    if (m_eItemType.load() == AttributeType::Select || !boItemTexts(*this, attribute, nullptr, texts)) {
        vNotImplemented("oxa::ifc::AttributeListValueBase::boValueAsXmlStringGet");
        return true;
    }
    // No blank while the text is empty: empty items at the front leave no trace.
    for (const std::string& item : texts) text.append(text.empty() ? "" : " ").append(item);
    return true;
}

bool AttributeListValueBase::boValueAsXmlStringsGet(Texts& texts, const Attribute& attribute, const Data* data) const {
    texts.clear();
    if (!boItemTexts(*this, attribute, data, texts))
        vNotImplemented("oxa::ifc::AttributeListValueBase::boValueAsXmlStringsGet");
    return true;
}

bool AttributeListValueBase::boValueAsXmlStringSet(const ObjectBase& object, const std::string& text,
                                                   const Attribute& attribute, Data& data, const Path& path) {
    const Views views = words(text);
    return boItemsSet(
        {*this, object, views, attribute, data, path, 1, "oxa::ifc::AttributeListValueBase::boValueAsXmlStringSet"});
}

// Every item of a list of selects gets the first text; importers count on it.
bool AttributeListValueBase::boValueAsXmlStringsSet(const ObjectBase& object, const Texts& texts,
                                                    const Attribute& attribute, Data& data, const Path& path) {
    const Views views(texts.begin(), texts.end());
    return boItemsSet({*this, object, views, attribute, data, path, 0, g_sStringsSet});
}

bool boItemTextsSet(AttributeList& list, const ObjectBase& object, std::span<const std::string_view> texts,
                    const Attribute& attribute, Data& data, const Path& path) {
    const bool boSet = boItemsSet({list, object, texts, attribute, data, path, 0, g_sStringsSet});
    if (boSet) list.vDefined();
    return boSet;
}

}   // namespace oxa::ifc
