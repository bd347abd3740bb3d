// SPDX-License-Identifier: Apache-2.0
// From the parameter list of a statement to the cells of an instance: the innermost loop of reading a file.
#include <exception>
#include <new>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcMissingType.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/Read/ReadThread.h"
#include "Format/Ifc/Store/EntityBlocks.h"
#include "Format/Ifc/Text/Parameters.h"

namespace oxa::ifc {

namespace {

using Info = AttributeBase::StepReadInfoAttribute;

// Constructs the cell of one token in place. Throws what its constructor throws, the text "illegal type" for a kind
// outside the twelve, and for an attribute without a type the exception that says so.
//
// A switch beside that of visitCellClass: it stands in the innermost loop of a read, where one parser serves reals and
// numbers and the two classes without a cell are cases like the others, with no test in front.
void vCellRead(CellClass eClass, void* pCell, Info& info) {
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

}   // namespace

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
    Info token{&info, &data, this, nullptr, nullptr, 0, 0, 0};
    std::size_t iToken = 0;
    // The layout of the type has, for the n-th parameter, its attribute, the offset of its cell and the class of that
    // cell, so the loop asks the schema nothing. The cell is constructed in place; an exception of its constructor is
    // reported, and the next token is read. Surplus tokens are reported one by one.
    const auto tokenRead = [&](const char* pBegin, const char* pEnd) {
        if (iToken >= pSize->cells.size()) {
            // A layout shorter than the type is an inside fault, and the file can't be trusted any further.
            if (iToken++ < schema.allAttributes().size())
                report(ReportKey::IllegalAttributeIndex, {});
            else
                report(ReportKey::TooManyAttributesFor, schema.sName);
            return;
        }
        const DataSizeEntity::Cell& cell = pSize->cells[iToken++];
        token.m_pAttribute = cell.pAttribute;
        token.m_iStart = static_cast<std::size_t>(pBegin - pLine);
        token.m_iLength = static_cast<std::size_t>(pEnd - pBegin);
        try {
            vCellRead(cell.eClass, static_cast<char*>(m_pAttributes) + cell.iOffset, token);
        } catch (const std::exception&) {
            report(ReportKey::UnknownAttributeType, cell.pAttribute->sName);
        }
    };
    try {
        if (iLength > 2) details::vForEachItem(pLine, pLine + iStart + 1, pLine + iStart + iLength - 1, tokenRead);
    } catch (...) {
        vCellsUndefined(*pSize, iToken);   // references to it must find cells without a value
        throw;
    }
    // What the statement leaves out stays undefined, mandatory attributes too, and nothing is said about it:
    // exporters shorten lists, and their files shall load.
    vCellsUndefined(*pSize, iToken);
}

}   // namespace oxa::ifc
