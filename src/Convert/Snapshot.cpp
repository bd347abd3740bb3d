// SPDX-License-Identifier: Apache-2.0
// Values as hashes, an attribute each, so that what changed is known to the parameter of a statement.
#include "Convert/Snapshot.h"

#include <algorithm>
#include <array>
#include <bit>
#include <functional>
#include <string_view>

#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcValueVisit.h"

namespace oxa::convert {

namespace schema = ifc::def::schema;
namespace visit = ifc::visit;

namespace {

// The values of one cell in their order, with what keeps values of different sorts apart. Entities stand where they are
// in memory as long as the model lives, so a reference is an address.
class ValueHash {
public:
    [[nodiscard]] std::uint64_t hash() const noexcept { return m_uHash; }

    void operator()(visit::Null null) { vAdd(1, null.boDerived); }
    void operator()(visit::Nothing) { vAdd(2, 0); }
    void operator()(double value) { vAdd(3, std::bit_cast<std::uint64_t>(value)); }
    void operator()(long long iValue) { vAdd(4, static_cast<std::uint64_t>(iValue)); }
    void operator()(bool boValue) { vAdd(5, boValue); }
    void operator()(LogicalValue value) { vAdd(6, static_cast<std::uint64_t>(value)); }
    void operator()(const Guid& guid) {
        const auto words = std::bit_cast<std::array<std::uint64_t, 2>>(guid);
        vAdd(7, words[0]);
        vAdd(7, words[1]);
    }
    void operator()(visit::Text text) { vText(8, text.pText); }
    void operator()(visit::Enumerator enumerator) { vText(9, enumerator.pText); }
    void operator()(visit::Binary binary) {
        vBytes(10, {reinterpret_cast<const char*>(binary.pBytes), binary.pBytes ? binary.iCount : 0});
    }
    void operator()(const ifc::Entity* pEntity) { vAdd(11, reinterpret_cast<std::uintptr_t>(pEntity)); }
    void operator()(visit::ListBegin) { vAdd(12, 0); }
    void operator()(visit::ListEnd) { vAdd(13, 0); }
    void operator()(visit::TypeBegin begin) { vAdd(14, reinterpret_cast<std::uintptr_t>(&begin.type)); }
    void operator()(visit::TypeEnd) { vAdd(15, 0); }

private:
    // Two rounds of multiplication by odd numbers of many bits, with rotations that carry high bits down.
    void vAdd(std::uint64_t uSort, std::uint64_t uValue) noexcept {
        m_uHash = std::rotl((m_uHash ^ uValue) * 0x9E3779B97F4A7C15U, 31) + uSort;
        m_uHash = std::rotl(m_uHash * 0xC2B2AE3D27D4EB4FU, 29);
    }
    void vBytes(std::uint64_t uSort, std::string_view bytes) noexcept {
        vAdd(uSort, bytes.size());
        vAdd(uSort, std::hash<std::string_view>{}(bytes));
    }
    void vText(std::uint64_t uSort, const char* pText) noexcept {
        if (pText)
            vBytes(uSort, pText);
        else
            vAdd(uSort, 0);
    }

    std::uint64_t m_uHash = 0;
};

void vHashesAdd(const ifc::Entity& entity, std::vector<std::uint64_t>& hashes) {
    hashes.push_back(reinterpret_cast<std::uintptr_t>(entity.pSchemaEntity()));
    entity.boForEachAttribute([&hashes](const schema::Attribute& attribute, const ifc::AttributeBase& cell) {
        ValueHash value;
        ifc::visitValues(cell, attribute.pType(), value);
        hashes.push_back(value.hash());
        return false;
    });
}

// Each once, by address: a number that stands twice in a file may have brought one twice.
std::vector<const ifc::Entity*> byAddress(const ifc::Data& data) {
    std::vector<const ifc::Entity*> entities;
    entities.reserve(data.entities().size());
    for (const ifc::Entity* pEntity : data.entities())
        if (pEntity->pSchemaEntity()) entities.push_back(pEntity);
    std::sort(entities.begin(), entities.end(), std::less<>());
    entities.erase(std::unique(entities.begin(), entities.end()), entities.end());
    return entities;
}

}   // namespace

Snapshot::Snapshot(const ifc::Data& data) : m_data(data) {
    const std::vector<const ifc::Entity*> entities = byAddress(data);
    m_known.reserve(entities.size());
    for (const ifc::Entity* pEntity : entities) {
        m_known.push_back({pEntity, m_hashes.size()});
        vHashesAdd(*pEntity, m_hashes);
    }
}

// What of an entity is another; no attribute where nothing is. "now" is scratch.
Edits::Changed Snapshot::compared(const Known& known, std::size_t iEnd, std::vector<std::uint64_t>& now) const {
    Edits::Changed changed{known.pEntity, {}, false};
    now.clear();
    vHashesAdd(*known.pEntity, now);
    changed.boType = now.front() != m_hashes[known.iFirst];
    const std::size_t iBefore = iEnd - known.iFirst;
    for (std::size_t i = 1; i < now.size(); ++i)
        if (changed.boType || i >= iBefore || now[i] != m_hashes[known.iFirst + i])
            changed.attributes.push_back(static_cast<unsigned>(i - 1));
    return changed;
}

Edits Snapshot::edits() const {
    Edits edits;
    std::vector<std::uint64_t> scratch;
    const std::vector<const ifc::Entity*> now = byAddress(m_data);
    auto it = now.begin();
    for (std::size_t i = 0; i < m_known.size(); ++i) {
        const Known& known = m_known[i];
        for (; it != now.end() && std::less<>()(*it, known.pEntity); ++it) edits.added.push_back(*it);
        if (it == now.end() || *it != known.pEntity) {
            edits.removed.push_back(m_data.iIdFromEntity(*known.pEntity));
            continue;
        }
        ++it;
        const std::size_t iEnd = i + 1 < m_known.size() ? m_known[i + 1].iFirst : m_hashes.size();
        Edits::Changed changed = compared(known, iEnd, scratch);
        if (changed.boType || !changed.attributes.empty()) edits.changed.push_back(std::move(changed));
    }
    edits.added.insert(edits.added.end(), it, now.end());
    const auto iNumber = [this](const ifc::Entity* pEntity) { return m_data.iIdFromEntity(*pEntity); };
    std::ranges::sort(edits.changed, {}, [&](const Edits::Changed& changed) { return iNumber(changed.pEntity); });
    std::ranges::sort(edits.added, {}, iNumber);
    std::ranges::sort(edits.removed);
    return edits;
}

}   // namespace oxa::convert
