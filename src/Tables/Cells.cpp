// SPDX-License-Identifier: Apache-2.0
#include "Tables/Cells.h"

#include <cmath>

#include "platform/String.h"

namespace oxa::tables::detail {

namespace {

using ifc::Entity;
namespace visit = ifc::visit;

std::string sHexadecimal(const visit::Binary& binary) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string sText;
    for (std::size_t i = 0; binary.pBytes && i < binary.iCount; ++i) {
        sText += digits[binary.pBytes[i] >> 4U];
        sText += digits[binary.pBytes[i] & 15U];
    }
    return sText;
}

const Entity* pDefined(const Entity* pEntity) { return pEntity && pEntity->pSchemaEntity() ? pEntity : nullptr; }

std::string sReference(const Context& context, const Entity& entity) {
    return "#" + std::to_string(context.iNumber(entity));
}

// The one value of a cell, or that there are several.
struct ScalarVisitor {
    Scalar scalar{};
    int iValues = 0;
    int iDepth = 0;
    const schema::ObjectBase* pWrapped = nullptr;

    Scalar* pNext(Scalar::Kind eKind) {
        if (++iValues > 1) {
            scalar.eKind = Scalar::Kind::Several;
            return nullptr;
        }
        scalar.eKind = eKind;
        if (pWrapped) scalar.pType = pWrapped;
        return &scalar;
    }
    void operator()(double value) {
        if (Scalar* pScalar = pNext(Scalar::Kind::Number)) pScalar->number = value;
    }
    void operator()(long long iValue) {
        if (Scalar* pScalar = pNext(Scalar::Kind::Integer)) pScalar->iInteger = iValue;
    }
    void operator()(bool boValue) {
        if (Scalar* pScalar = pNext(Scalar::Kind::Boolean)) pScalar->iInteger = boValue ? 1 : 0;
    }
    void operator()(LogicalValue eValue) {
        if (Scalar* pScalar = pNext(Scalar::Kind::Logical)) pScalar->iInteger = static_cast<std::int64_t>(eValue);
    }
    void operator()(const Guid& guid) {
        if (Scalar* pScalar = pNext(guid.boIsNull() ? Scalar::Kind::Null : Scalar::Kind::Guid)) pScalar->guid = guid;
    }
    void operator()(visit::Text text) {
        if (Scalar* pScalar = pNext(text.pText ? Scalar::Kind::Text : Scalar::Kind::Null)) pScalar->pText = text.pText;
    }
    void operator()(visit::Enumerator text) {
        if (Scalar* pScalar = pNext(text.pText ? Scalar::Kind::Enumerator : Scalar::Kind::Null))
            pScalar->pText = text.pText;
    }
    void operator()(visit::Binary binary) {
        if (Scalar* pScalar = pNext(Scalar::Kind::Binary)) pScalar->binary = binary;
    }
    void operator()(const Entity* pEntity) {
        pEntity = pDefined(pEntity);
        if (Scalar* pScalar = pNext(pEntity ? Scalar::Kind::Reference : Scalar::Kind::Null)) {
            pScalar->pEntity = pEntity;
            if (pEntity) pScalar->pType = pEntity->pSchemaEntity();
        }
    }
    void operator()(visit::Null) { ++iValues; }
    void operator()(visit::Nothing) { ++iValues; }
    // A list in a list is told as several, so that its shape is not lost.
    void operator()(visit::ListBegin) {
        if (++iDepth > 1) iValues = 2;
    }
    void operator()(visit::ListEnd) {
        --iDepth;
        if (iValues != 1) scalar.eKind = Scalar::Kind::Several;
    }
    void operator()(const visit::TypeBegin& type) {
        if (iValues == 0) pWrapped = &type.type;
    }
    void operator()(visit::TypeEnd) {}
};

struct JsonVisitor {
    const Context& context;
    std::string& sJson;
    JsonTypes eTypes;
    bool boFirst = true;

    void vSeparate() {
        if (!std::exchange(boFirst, false)) sJson += ',';
    }
    void vPlain(std::string_view text) {
        vSeparate();
        sJson += text;
    }
    void vText(std::string_view text) {
        vSeparate();
        appendJsonText(sJson, text);
    }
    void operator()(double value) {
        const std::string sNumber = str::Manip::valueFormatDefault(value);
        std::isfinite(value) ? vPlain(sNumber) : vText(sNumber);
    }
    void operator()(long long iValue) { vPlain(std::to_string(iValue)); }
    void operator()(bool boValue) { vPlain(boValue ? "true" : "false"); }
    void operator()(LogicalValue eValue) {
        vPlain(eValue == LogicalValue::Unknown ? "\"UNKNOWN\"" : eValue == LogicalValue::True ? "true" : "false");
    }
    void operator()(const Guid& guid) { guid.boIsNull() ? vPlain("null") : vText(ifc::IfcGuid::toIfcGuid(guid)); }
    void operator()(visit::Text text) { text.pText ? vText(text.pText) : vPlain("null"); }
    void operator()(visit::Enumerator text) { text.pText ? vText(text.pText) : vPlain("null"); }
    void operator()(visit::Binary binary) { vText(sHexadecimal(binary)); }
    void operator()(const Entity* pEntity) {
        pEntity = pDefined(pEntity);
        if (!pEntity) return vPlain("null");
        if (eTypes == JsonTypes::Hidden) return vText(sReference(context, *pEntity));
        vPlain("{\"ref\":" + std::to_string(context.iNumber(*pEntity)) + "}");
    }
    void operator()(visit::Null null) {
        vPlain(null.boDerived && eTypes == JsonTypes::Shown ? "{\"derived\":true}" : "null");
    }
    void operator()(visit::Nothing) { vPlain("null"); }
    void operator()(visit::ListBegin) {
        vPlain("[");
        boFirst = true;
    }
    void operator()(visit::ListEnd) {
        sJson += ']';
        boFirst = false;
    }
    void operator()(const visit::TypeBegin& type) {
        if (eTypes == JsonTypes::Hidden) return;
        vPlain("{\"type\":\"" + type.type.sName + "\",\"value\":");
        boFirst = true;
    }
    void operator()(visit::TypeEnd) {
        if (eTypes == JsonTypes::Hidden) return;
        sJson += '}';
        boFirst = false;
    }
};

}   // namespace

std::optional<double> Scalar::numberValue() const {
    if (eKind == Kind::Number) return number;
    if (eKind == Kind::Integer) return static_cast<double>(iInteger);
    return std::nullopt;
}

std::optional<bool> Scalar::booleanValue() const {
    if ((eKind != Kind::Boolean && eKind != Kind::Logical) || iInteger < 0) return std::nullopt;
    return iInteger != 0;
}

std::string Scalar::sText(const Context& context) const {
    switch (eKind) {
    case Kind::Null:
    case Kind::Several: break;
    case Kind::Text:
    case Kind::Enumerator: return pText;
    case Kind::Number: return str::Manip::valueFormatDefault(number);
    case Kind::Integer: return std::to_string(iInteger);
    case Kind::Boolean:
    case Kind::Logical: return iInteger < 0 ? "unknown" : iInteger ? "true" : "false";
    case Kind::Guid: return ifc::IfcGuid::toIfcGuid(guid);
    case Kind::Binary: return sHexadecimal(binary);
    case Kind::Reference: return sReference(context, *pEntity);
    }
    return {};
}

void Scalar::vTextTell(const Context& context, RowWriter& row) const {
    if (eKind == Kind::Null || !row.boWanted()) return row.vNull();
    if (eKind == Kind::Text || eKind == Kind::Enumerator) return row.vText(pText);
    row.vText(sText(context));
}

Scalar scalarOf(const ifc::AttributeBase& cell, const schema::ObjectBase* pType) {
    ScalarVisitor visitor;
    visitor.scalar.pType = pType;
    if (const schema::DataTypeBase* pData = schema::pDataTypeOf(pType); pData && schema::boIsAggregate(pData->kind))
        visitor.scalar.pType = pData->pElementGet();
    ifc::visitValues(cell, pType, visitor);
    return visitor.scalar;
}

void vJsonAdd(const Context& context, const CellPlace& place, JsonTypes eTypes, std::string& sJson) {
    JsonVisitor visitor{context, sJson, eTypes};
    ifc::visitValues(*place.pCell, place.pAttribute->pType(), visitor);
}

}   // namespace oxa::tables::detail
