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

}   // namespace

bool details::boCellReadQuick(CellClass eClass, void* pCell, const Token& token) {
    const char* const pText = pTextOf(token);
    return boReadQuick({token.m_pAttribute, 0, eClass}, pCell, token, pText, pText + token.m_iLength);
}

// Fills an instance that has no type yet; one that has a type is reported and left as it is.
void Entity::vAttributesRead(Data& data, const def::schema::Entity& schema, StepReadInfoData& info, std::size_t iStart,
                             std::size_t iLength) {
    const auto report = [&](ReportKey eKey, const std::string& sArgument) {
        info.m_pCommon->m_pError->add(this, eKey, sArgument, info.sourceText(), info.m_iLine);
    };
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
            report(ReportKey::AttributeSizeNotFound, schema.sName);
            return;
        }
        pSize = schema.pDataSize.value().get();
    }

    const char* const pLine = info.m_line.data();
    Token token{&info, &data, this, nullptr, nullptr, 0, 0, 0};
    std::size_t iSurplus = 0;
    // Surplus tokens are reported one by one.
    const auto surplus = [&] {
        // A layout shorter than the type is an inside fault, and the file can't be trusted any further.
        if (pSize->cells.size() + iSurplus++ < schema.allAttributes().size())
            report(ReportKey::IllegalAttributeIndex, {});
        else
            report(ReportKey::TooManyAttributesFor, schema.sName);
    };
    // The layout of the type has, for the n-th parameter, its attribute, the offset of its cell and the class of that
    // cell, so the loop asks the schema nothing. The cell is constructed in place; an exception of its constructor is
    // reported, and the next token is read.
    const DataSizeEntity::Cell* const pCells = pSize->cells.data();
    const DataSizeEntity::Cell* const pCellsEnd = pCells + pSize->cells.size();
    const DataSizeEntity::Cell* pPlace = pCells;   // of the next token
    try {
        const char* const first = pLine + iStart + 1;
        details::ItemCut<> cut(pLine, first, iLength > 2 ? first + iLength - 2 : first);
        details::CutItems tokens;
        for (bool boMore = true; boMore;) {
            boMore = cut.boNext(tokens);
            const char* pNext = tokens.pBegin;
            for (std::size_t i = 0; i < tokens.iCount; ++i) {
                const char* const pBegin = pNext;
                const char* const pEnd = tokens.items[i].pEnd;
                pNext = pEnd + 1;
                if (pPlace == pCellsEnd) {
                    surplus();
                    continue;
                }
                const DataSizeEntity::Cell& cell = *pPlace++;
                void* const pCell = static_cast<char*>(m_pAttributes) + cell.iOffset;
                try {
                    if (boReadQuick(cell, pCell, token, pBegin, pEnd)) continue;
                    token.m_pAttribute = cell.pAttribute;
                    details::vPlace(token, pBegin, pEnd);
                    const details::ItemEnds items = tokens.endsInside(i);
                    if (items.pEnds && cell.eItems != AttributeType::Unknown)   // which lists alone have
                        ::new (pCell) AttributeList(token, cell.eItems, items);
                    else
                        vCellRead(cell.eClass, pCell, token);
                } catch (const std::exception&) {
                    report(ReportKey::UnknownAttributeType, cell.pAttribute->sName);
                }
            }
        }
    } catch (...) {
        vCellsUndefined(*pSize, static_cast<std::size_t>(pPlace - pCells));   // references to it must find no value
        throw;
    }
    // What the statement leaves out stays undefined, mandatory attributes too, and nothing is said about it:
    // exporters shorten lists, and their files shall load.
    if (pPlace != pCellsEnd) vCellsUndefined(*pSize, static_cast<std::size_t>(pPlace - pCells));
}

}   // namespace oxa::ifc
