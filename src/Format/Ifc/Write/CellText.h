// SPDX-License-Identifier: Apache-2.0
// CellText: composes the text of cells (ISO 10303-21, 6.4) at the end of a string.
//
// For      the statement of an instance, and cells by themselves; inside this folder.
// Shape    a text grows by a pointer that each step takes and gives back: it stays in a register, where a string or a
//          member would be read and written with every byte.
// Room     a step finds TextRoom::g_iRoom bytes ahead of it, writes fewer than half of them without asking, and asks for
//          what has no fixed length. So there is room for the comma or the parenthesis behind it, whoever writes that.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/Text/DigitText.h"
#include "Format/Ifc/Text/TextRoom.h"
#include "Format/Ifc/Write/WriteContext.h"

namespace oxa::ifc {

class CellText {
public:
    // What a cell stands under.
    struct Place {
        const def::schema::Attribute* pAttribute;
        const def::schema::Type* pType = nullptr;   // of a value inside a select
        bool boInList = false;                      // the value is an item of a list
    };

    // Behind the first bytes of a string, so many as are to stay. The statement of the cells begins at iStatement, for
    // reports; with boPlainText text stays as it is, for display.
    CellText(StepWriteInfo& info, std::string& text, std::size_t iUsed, std::size_t iStatement,
             bool boPlainText = false)
        : m_info(info),
          m_room(text, iUsed),
          m_iStatement(iStatement),
          m_boPlainText(boPlainText) {}

    [[nodiscard]] details::TextRoom& room() noexcept { return m_room; }
    // The statement up to there.
    [[nodiscard]] std::string sSoFar(const char* p) const {
        const char* const pBegin = m_room.pAt(m_iStatement);
        return {pBegin, p};
    }

    // The cells of a block, with a comma between each two. "place" is that of a value inside a select, but for the
    // attribute, which each cell has.
    [[nodiscard]] char* pCells(char* p, std::span<const DataSizeEntity::Cell> cells, const void* pBlock,
                               const Place& place);

    // "#" and the number of an instance.
    [[nodiscard]] static char* pReference(char* p, std::size_t iId) noexcept {
        *p = '#';
        return details::pNumberText(p + 1, iId);
    }

private:
    struct Cells;
    struct Items;

    char* pNull(char* p, const AttributeBase& cell, const Place& place);
    char* pText(char* p, const char* pValue);
    char* pEncoded(char* p, std::string_view text);
    char* pGuid(char* p, const AttributeGuid& cell, const Place& place);
    char* pBinary(char* p, const AttributeBinary& cell);
    char* pEnumeration(char* p, const AttributeEnumeration& cell, const Place& place);
    char* pEntity(char* p, const AttributeEntity& cell, const Place& place);
    char* pSelect(char* p, const AttributeSelect& cell, const Place& place);
    char* pList(char* p, const AttributeListValueBase& list, const Place& place);
    char* pTexts(char* p, const Array<char*>& items);
    char* pEntities(char* p, const EntityList& items);
    template <class ItemsOfOneType, class Write>
    char* pEachItem(char* p, const ItemsOfOneType& items, Write&& write);

    void vReport(const char* p, ReportKey eKey, std::string_view sArgument) const;
    void vFatal(const char* p, Errors::Category eCategory, ReportKey eKey, const Place& place) const;

    StepWriteInfo& m_info;
    details::TextRoom m_room;
    std::size_t m_iStatement;
    bool m_boPlainText;
};

}   // namespace oxa::ifc
