// SPDX-License-Identifier: Apache-2.0
// From the parameter list of a statement to the cells of an instance: the innermost loop of reading a file.
#include <exception>
#include <new>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcGuid.h"
#include "Format/Ifc/IfcMissingType.h"
#include "Format/Ifc/Read/CellReading.h"
#include "Format/Ifc/Read/DirectRead.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/Read/ReadThread.h"
#include "Format/Ifc/Store/EntityBlocks.h"
#include "Format/Ifc/Text/Parameters.h"
#include "Format/Ifc/Text/RealRead.h"
#include "platform/Compiler.h"

namespace oxa::ifc {

namespace {

using details::Token;

// Constructs the cell of one token in place. Throws what its constructor throws, the text "illegal type" for a kind
// outside the twelve, and for an attribute without a type the exception that says so.
//
// A switch beside that of visitCellClass: it stands in the innermost loop of a read, where one parser serves reals and
// numbers and the two classes without a cell are cases like the others, with no test in front.
void vCellRead(CellClass eClass, void* pCell, Token& info) {
    switch (eClass) {
    case CellClass::Entity: ::new (pCell) AttributeEntity(info); return;
    case CellClass::Real:
    case CellClass::Number: ::new (pCell) AttributeReal(info); return;
    case CellClass::Integer: ::new (pCell) AttributeInteger(info); return;
    case CellClass::Boolean: ::new (pCell) AttributeBoolean(info); return;
    case CellClass::Guid: ::new (pCell) AttributeGuid(info); return;
    case CellClass::String: ::new (pCell) AttributeString(info); return;
    case CellClass::Logical: ::new (pCell) AttributeLogical(info); return;
    case CellClass::Binary: ::new (pCell) AttributeBinary(info); return;
    case CellClass::Enumeration: ::new (pCell) AttributeEnumeration(info); return;
    case CellClass::Select: ::new (pCell) AttributeSelect(info); return;
    case CellClass::List: ::new (pCell) AttributeList(info); return;
    case CellClass::Unresolved: throw MissingType();
    case CellClass::Illegal: break;
    }
    throw "illegal type";
}

// A cell with nothing but its flags; the memory behind them is zero.
void vCellEmpty(const DataSizeEntity::Cell& cell, void* pCell, bool boDerived) {
    auto* pBase = ::new (pCell) AttributeBase;
    pBase->m_boDerived = boDerived;
    pBase->m_boUndefined = !boDerived;
    pBase->m_boGuid = cell.eClass == CellClass::Guid;
}

// What nearly all tokens of a file are but lists, in their usual form. False, with the cell untouched, for all else, and
// for whatever there is something to say about: the cell's own constructor knows every form.
OXA_ALWAYS_INLINE bool boReadQuick(const DataSizeEntity::Cell& cell, void* pCell, const Token& token,
                                   const char* pBegin, const char* pEnd) {
    const std::ptrdiff_t iLength = pEnd - pBegin;
    if (iLength <= 1) {
        const char c = iLength ? *pBegin : '\0';
        if ((c != '*' && (c != '$' || !cell.boOptional)) || cell.eClass >= CellClass::Unresolved) return false;
        if (cell.eClass == CellClass::Logical) return false;   // the only one with a value behind its flags
        vCellEmpty(cell, pCell, c == '*');
        return true;
    }
    switch (cell.eClass) {
    case CellClass::Entity: {
        Entity* const pEntity = details::pReferenced(token, pBegin, pEnd);
        if (pEntity) (::new (pCell) AttributeEntity)->m_value = pEntity;
        return pEntity;
    }
    case CellClass::Real:
    case CellClass::Number: {
        double value = 0;
        const bool boRead = details::boReadReal(token.m_pInfo->m_line.data(), pBegin, pEnd, value);
        if (boRead) (::new (pCell) AttributeReal)->m_value = value;
        return boRead;
    }
    case CellClass::String: {
        if (*pBegin != '\'' || pEnd[-1] != '\'') return false;
        char* const pText = details::pTextRead(token, pBegin + 1, static_cast<std::size_t>(iLength - 2));
        (::new (pCell) AttributeString)->m_value = pText;
        return true;
    }
    case CellClass::Guid: {
        Guid guid;
        if (iLength != IfcGuid::Length + 2 || !IfcGuid::boIfcStringToGuid(guid, pBegin + 1)) return false;
        (::new (pCell) AttributeGuid)->m_value = guid;
        // On one thread it is entered as soon as the other values are read.
        if (!token.m_pInfo->m_pCommon->m_boParallel) token.m_pData->guidEntityMap().vFetch(guid);
        return true;
    }
    case CellClass::Select:
        // Its cell is zero but for the flags until there is a value.
        return *pBegin == '#' && details::boSelectReference(*::new (pCell) AttributeSelect, token, pBegin, pEnd);
    case CellClass::List:
    case CellClass::Boolean:
    case CellClass::Integer:
    case CellClass::Logical:
    case CellClass::Binary:
    case CellClass::Enumeration:
    case CellClass::Unresolved:
    case CellClass::Illegal: break;
    }
    return false;
}

// The parameters of one statement on their way into the cells of its instance.
//
// The layout of the type has, for the n-th parameter, its attribute, the offset of its cell and the class of that cell, so
// this asks the schema nothing. A cell is constructed in place; an exception of its constructor is reported, and the next
// token is read.
class ParameterRead {
public:
    // pBlock: of the instance, by that layout.
    ParameterRead(Entity& entity, void* pBlock, const DataSizeEntity& size, Data& data, StepReadInfoData& info) noexcept
        : m_entity(entity),
          m_pBlock(static_cast<char*>(pBlock)),
          m_info(info),
          m_pCells(size.cells.data()),
          m_pCellsEnd(m_pCells + size.cells.size()),
          m_pPlace(m_pCells),
          m_token{&info, &data, &entity, nullptr, nullptr, 0, 0, 0} {}

    // Cells that have been begun.
    [[nodiscard]] std::size_t iBegun() const noexcept { return static_cast<std::size_t>(m_pPlace - m_pCells); }
    [[nodiscard]] bool boAll() const noexcept { return m_pPlace == m_pCellsEnd; }

    void vRead(const char* first, const char* last) {
        first = pDirect(first, last);
        if (first != last) vCut(first, last);
    }

private:
    // All tokens from there on.
    OXA_NEVER_INLINE void vCut(const char* first, const char* last) {
        details::ItemCut<> cut(m_info.m_line.data(), first, last);
        details::CutItems tokens;
        for (bool boMore = true; boMore;) {
            boMore = cut.boNext(tokens);
            tokens.vEach([&](const char* pBegin, const char* pEnd, std::size_t i) {
                if (boAll())
                    vSurplus();
                else
                    vTake(*m_pPlace++, pBegin, pEnd, tokens.endsInside(i));
            });
        }
    }

    // As many tokens as show by themselves where they end. Where the next one begins, "last" where there is none.
    const char* pDirect(const char* first, const char* last) {
        if (last - m_info.m_line.data() < details::g_iLeastDirect) return first;
        while (first != last && !boAll()) {
            const DataSizeEntity::Cell& cell = *m_pPlace++;
            const char* const pEnd = pDirectOne(cell, first, last);
            if (!pEnd) {
                --m_pPlace;
                break;
            }
            if (pEnd == last) return last;
            first = pEnd + 1;
        }
        return first;
    }

    // Where the token ends, which has been read then; or null.
    OXA_ALWAYS_INLINE const char* pDirectOne(const DataSizeEntity::Cell& cell, const char* first, const char* last) {
        if (*first == '(') return cell.eClass == CellClass::List ? pInPassing(cell, first, last) : nullptr;
        if (*first == '#' && cell.eClass == CellClass::Entity) return pInPassing(cell, first, last);
        const bool boNoValue = (*first == '$' || *first == '*') && first[1] == ',';
        const char* const pEnd = boNoValue ? first + 1 : details::pTokenEnd(first, last);
        if (pEnd) vTake(cell, first, pEnd, {0, nullptr});
        return pEnd;
    }

    // A list, or a reference.
    OXA_ALWAYS_INLINE const char* pInPassing(const DataSizeEntity::Cell& cell, const char* first,
                                             const char* last) try {
        if (*first == '(') return details::pShortListRead(cell.eItems, pCell(cell), m_token, first, last);
        std::uint32_t iNumber = 0;
        const char* const pEnd = details::pReferenceEnd(m_token, first, iNumber);
        if (!pEnd || (pEnd != last && *pEnd != ',')) return nullptr;
        (::new (pCell(cell)) AttributeEntity)->m_value = details::pNamed(m_token, iNumber);
        return pEnd;
    } catch (const std::exception&) {
        return nullptr;   // without memory it is cut and read once more, where that is reported
    }

    OXA_ALWAYS_INLINE void vTake(const DataSizeEntity::Cell& cell, const char* pBegin, const char* pEnd,
                                 const details::ItemEnds& items) {
        try {
            if (boReadQuick(cell, pCell(cell), m_token, pBegin, pEnd)) return;
            m_token.m_pAttribute = cell.pAttribute;
            details::vPlace(m_token, pBegin, pEnd);
            if (items.pEnds && cell.eItems != AttributeType::Unknown)   // which lists alone have
                ::new (pCell(cell)) AttributeList(m_token, cell.eItems, items);
            else
                vCellRead(cell.eClass, pCell(cell), m_token);
        } catch (const std::exception&) {
            vReport(ReportKey::UnknownAttributeType, cell.pAttribute->sName);
        }
    }

    [[nodiscard]] void* pCell(const DataSizeEntity::Cell& cell) const noexcept { return m_pBlock + cell.iOffset; }

    // Surplus tokens are reported one by one.
    OXA_NEVER_INLINE void vSurplus() {
        // A layout shorter than the type is an inside fault, and the file can't be trusted any further.
        const def::schema::Entity& schema = m_entity.schemaEntity();
        if (static_cast<std::size_t>(m_pCellsEnd - m_pCells) + m_iSurplus++ < schema.allAttributes().size())
            vReport(ReportKey::IllegalAttributeIndex, {});
        else
            vReport(ReportKey::TooManyAttributesFor, schema.sName);
    }

    OXA_NEVER_INLINE void vReport(ReportKey eKey, const std::string& sArgument) {
        m_info.m_pCommon->m_pError->add(&m_entity, eKey, sArgument, m_info.sourceText(), m_info.m_iLine);
    }

    Entity& m_entity;
    char* m_pBlock;
    StepReadInfoData& m_info;
    const DataSizeEntity::Cell* m_pCells;
    const DataSizeEntity::Cell* m_pCellsEnd;
    const DataSizeEntity::Cell* m_pPlace;   // of the next token
    Token m_token;
    std::size_t m_iSurplus = 0;
};

}   // namespace

bool details::boCellReadQuick(CellClass eClass, void* pCell, const Token& token) {
    const char* const pText = pTextOf(token);
    return boReadQuick({token.m_pAttribute, 0, eClass}, pCell, token, pText, pText + token.m_iLength);
}

// Fills an instance that has no type yet; one that has a type is reported and left as it is.
void Entity::vAttributesRead(Data& data, const def::schema::Entity& schema, StepReadInfoData& info, std::size_t iStart,
                             std::size_t iLength) {
    if (m_pSchemaEntity) {
        info.m_pCommon->m_pError->add(this, ReportKey::DuplicateEntity, info.sourceText(), info.m_iLine);
        return;
    }
    m_pSchemaEntity = &schema;
    const DataSizeEntity* pSize = pBlocksAllocate(schema, [&](std::size_t iBytes) {
        return info.m_pThread ? info.m_pThread->m_arena.pAllocate(iBytes) : data.pool().pAllocate(iBytes);
    });
    // A type without attributes has no layout, unless a caller asked for one; each of its statements is told.
    if (!pSize) {
        if (!schema.pDataSize.boReady()) {
            info.m_pCommon->m_pError->add(this, ReportKey::AttributeSizeNotFound, schema.sName, info.sourceText(),
                                          info.m_iLine);
            return;
        }
        pSize = schema.pDataSize.value().get();
    }
    ParameterRead parameters(*this, m_pAttributes, *pSize, data, info);
    const char* const first = info.m_line.data() + iStart + 1;
    try {
        parameters.vRead(first, iLength > 2 ? first + iLength - 2 : first);
    } catch (...) {
        vCellsUndefined(*pSize, parameters.iBegun());   // references to it must find no value
        throw;
    }
    // What the statement leaves out stays undefined, mandatory attributes too, and nothing is said about it:
    // exporters shorten lists, and their files shall load.
    if (!parameters.boAll()) vCellsUndefined(*pSize, parameters.iBegun());
}

}   // namespace oxa::ifc
