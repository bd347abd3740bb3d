// SPDX-License-Identifier: Apache-2.0
// IfcXmlExportWalk: the state of one walk over a model.
//
// Nested instances are kept on stacks of our own: a chain of references may be as long as the model.
//
// For      IfcXmlExport.cpp and IfcXmlExportValues.cpp.
// Threads  one.
#pragma once

#include <array>
#include <charconv>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "Format/Ifc/Memory/Fnv1a.h"
#include "Format/Ifc/Write/WriteContext.h"
#include "Format/Ifc/Xml/IfcXmlExport.h"
#include "platform/Xml.h"

namespace oxa::ifc::xml {

// A set of instances: a bit for each eight bytes of the memory that they stand in, a page of bits a MiB.
struct ExportCommon::Exported {
    // True the first time.
    bool boInsert(const Entity* pEntity) {
        const Place place(pEntity);
        Near& near = m_near[place.iPage % m_near.size()];
        if (!near.pPage || near.iPage != place.iPage) {
            std::unique_ptr<Page>& pPage = m_pages[place.iPage];
            if (!pPage) pPage = std::make_unique<Page>();
            near = {place.iPage, pPage.get()};
        }
        std::uint64_t& uWord = (*near.pPage)[place.iWord];
        const bool boNew = !(uWord & place.uBit);
        uWord |= place.uBit;
        return boNew;
    }
    [[nodiscard]] bool contains(const Entity* pEntity) const {
        const Place place(pEntity);
        const auto found = m_pages.find(place.iPage);
        return found != m_pages.end() && (*found->second)[place.iWord] & place.uBit;
    }

private:
    static constexpr unsigned g_iPageBits = 20;
    static constexpr unsigned g_iBytesOfBit = 8;
    using Page = std::array<std::uint64_t, (std::size_t{1} << g_iPageBits) / g_iBytesOfBit / 64>;

    struct Place {
        explicit Place(const Entity* pEntity) noexcept
            : iPage(reinterpret_cast<std::uintptr_t>(pEntity) >> g_iPageBits) {
            const std::size_t iBit =
                (reinterpret_cast<std::uintptr_t>(pEntity) & ((std::uintptr_t{1} << g_iPageBits) - 1)) / g_iBytesOfBit;
            iWord = iBit / 64;
            uBit = std::uint64_t{1} << iBit % 64;
        }
        std::uintptr_t iPage;
        std::size_t iWord;
        std::uint64_t uBit;
    };
    struct Near {
        std::uintptr_t iPage = 0;
        Page* pPage = nullptr;
    };

    std::unordered_map<std::uintptr_t, std::unique_ptr<Page>> m_pages;
    std::array<Near, 64> m_near;   // what was asked for last
};

// One attribute or inverse attribute of a type, with what is the same for all of its instances.
struct ExportCommon::Step {
    const def::schema::Attribute* pAttribute;        // null for an inverse attribute
    const def::schema::AttributeInverse* pInverse;   // null for an attribute
    std::uint32_t iPlace;   // of an attribute's cell in the block, in bytes; of an inverse attribute among all
    std::uint32_t mode;
    CellClass eClass;   // of the cell
    bool boExported;    // else its instances are noted, and no more
};

struct ExportCommon::Walk : WriteInfoCommon {
    using WriteInfoCommon::WriteInfoCommon;
    using Steps = std::vector<Step>;

    // An element that was appended and has to be filled.
    struct Pending {
        oxa::xml::Element element;
        const Entity* pEntity;
        const def::schema::Entity* pDeclared;
    };

    // An instance whose attributes are being written.
    struct Open {
        oxa::xml::Element element;
        const Entity* pEntity;
        const Steps* pSteps;
        std::size_t iNext;      // step
        std::size_t iPending;   // what m_pending holds above this comes before the next step
    };

    // The steps of a type: supertypes first, inverse attributes behind the attributes of their level. Made once a type.
    const Steps& stepsOf(const def::schema::Entity& type);

    std::vector<Pending> m_pending;   // the next one last
    std::vector<Open> m_open;         // the innermost one last

    const def::xmlschema::Defaults* m_pDefaults = nullptr;   // the modes of what has none of its own
    bool m_boLeftOutNoted = false;         // what attributes name that the mapping leaves out is put into m_leftOut
    std::deque<const Entity*> m_leftOut;   // in the order of the walk; an instance may be there more than once

    std::string m_sText;   // scratch for a value
    std::string m_sName;   // scratch for the name of an element

private:
    void vAttributeAdd(Steps& steps, const DataSizeEntity::Cell& cell) const;

    std::unordered_map<const def::schema::Entity*, Steps, memory::Fnv1a> m_steps;
};

// The text of an instance number in a document.
class IdText {
public:
    explicit IdText(std::size_t iId) noexcept {
        m_characters[0] = 'i';
        m_pEnd = std::to_chars(m_characters.data() + 1, m_characters.data() + m_characters.size(), iId).ptr;
    }
    [[nodiscard]] std::string_view text() const noexcept {
        return {m_characters.data(), static_cast<std::size_t>(m_pEnd - m_characters.data())};
    }

private:
    std::array<char, 24> m_characters;
    char* m_pEnd;
};

}   // namespace oxa::ifc::xml
