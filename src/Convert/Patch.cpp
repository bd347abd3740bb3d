// SPDX-License-Identifier: Apache-2.0
// The text goes through statement by statement. Those of changed entities are known by their numbers; all other bytes
// pass as they come.
#include "Convert/Patch.h"

#include <algorithm>
#include <limits>
#include <ostream>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Convert/SourceStatements.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcValueVisit.h"

namespace oxa::convert {

namespace {

// From the numbers of new entities in the model to those in the text.
using NewNumbers = std::unordered_map<std::size_t, std::size_t>;

bool boDigit(char c) noexcept { return c >= '0' && c <= '9'; }

// A text of the writer's with other numbers; it has neither comments nor blanks between "#" and digits.
std::string sRenumbered(std::string_view text, const NewNumbers& numbers) {
    if (numbers.empty()) return std::string(text);
    std::string sText;
    bool boInText = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        sText += text[i];
        if (text[i] == '\'') boInText = !boInText;
        if (boInText || text[i] != '#') continue;
        std::size_t iNumber = 0;
        std::size_t iEnd = i + 1;
        while (iEnd < text.size() && boDigit(text[iEnd]))
            iNumber = iNumber * 10 + static_cast<unsigned>(text[iEnd++] - '0');
        const auto found = numbers.find(iNumber);
        sText.append(found == numbers.end() ? text.substr(i + 1, iEnd - i - 1) : std::string_view())
            .append(found == numbers.end() ? std::string() : std::to_string(found->second));
        i = iEnd - 1;
    }
    return sText;
}

// Whether a value refers to an instance that is named and not defined.
struct UndefinedVisitor {
    bool boFound = false;

    template <class Other>
    void operator()(const Other&) {}
    void operator()(const ifc::Entity* pEntity) { boFound = boFound || (pEntity && !pEntity->pSchemaEntity()); }
};

bool boNamesUndefined(const ifc::Entity& entity, unsigned iAttribute) {
    const auto [pAttribute, pCell] = entity.pAttributeFromIndex(iAttribute);
    if (!pCell) return false;
    UndefinedVisitor visitor;
    ifc::visitValues(*pCell, pAttribute->pType(), visitor);
    return visitor.boFound;
}

constexpr std::string_view g_blanks = " \t";

class Patcher {
public:
    Patcher(std::istream& source, std::ostream& out, const ifc::Data& data, const Edits& edits, std::size_t iHighest)
        : m_source(source),
          m_out(out),
          m_data(data),
          m_edits(edits) {
        for (const Edits::Changed& changed : edits.changed)
            m_wanted.try_emplace(data.iIdFromEntity(*changed.pEntity), Wanted{&changed});
        for (const std::size_t iNumber : edits.removed) m_wanted.try_emplace(iNumber, Wanted{nullptr});
        vNumbersDeal(iHighest);
    }

    Patched run() {
        bool boEnd = false;
        while (!m_result.refusal && m_source.boNext()) {
            const SourceStatements::Place ePlace = m_source.ePlace();
            boEnd = boEnd || ePlace == SourceStatements::Place::DataEnd;
            if (ePlace == SourceStatements::Place::DataEnd)
                vDataEnd();
            else if (ePlace != SourceStatements::Place::Instance || m_wanted.empty() || !boEdited())
                vPass(m_source.bytes());
        }
        if (m_result.refusal) return m_result;
        vPass(m_source.bytes());
        if (!boEnd) vRefuse({.eWhy = PatchRefusal::Why::NoEnd, .sReason = "its DATA section has no ENDSEC"});
        for (const auto& [iNumber, wanted] : m_wanted)
            if (!m_result.refusal && wanted.iLine == 0)
                vRefuse({.eWhy = PatchRefusal::Why::NotThere,
                         .iNumber = iNumber,
                         .sReason = "it has no statement #" + std::to_string(iNumber) + ", unlike the model"});
        return m_result;
    }

private:
    // A statement that is not to stay as it is.
    struct Wanted {
        const Edits::Changed* pChanged;   // null: it goes
        std::uint64_t iLine = 0;          // where it was found
    };

    void vRefuse(PatchRefusal refusal) { m_result.refusal = std::move(refusal); }

    void vNumbersDeal(std::size_t iHighest) {
        if (m_edits.added.empty()) return;
        const std::size_t iLowest = m_data.iIdFromEntity(*m_edits.added.front());
        const std::size_t iAbove = std::max(iHighest, iLowest - 1);
        if (iAbove + m_edits.added.size() > std::numeric_limits<std::uint32_t>::max())
            return vRefuse({.eWhy = PatchRefusal::Why::NumbersUsedUp,
                            .iNumber = iAbove,
                            .sReason = "it has #" + std::to_string(iAbove) + ", and no number is left above that"});
        for (std::size_t i = 0; i < m_edits.added.size(); ++i)
            if (const std::size_t iId = m_data.iIdFromEntity(*m_edits.added[i]); iId != iAbove + i + 1)
                m_numbers.emplace(iId, iAbove + i + 1);
    }

    // Bytes that stay. Behind a statement that went with its line the rest of the line goes as well.
    void vPass(std::string_view bytes) {
        if (std::exchange(m_boLineGone, false)) {
            const std::size_t iEnd = std::min(bytes.find_first_not_of(g_blanks), bytes.size());
            if (bytes.substr(iEnd).starts_with("\r\n"))
                bytes.remove_prefix(iEnd + 2);
            else if (iEnd < bytes.size() && (bytes[iEnd] == '\n' || bytes[iEnd] == '\r'))
                bytes.remove_prefix(iEnd + 1);
        }
        m_out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

    // False for a statement that stays.
    bool boEdited() {
        const auto number = m_source.number();
        const auto found = number ? m_wanted.find(*number) : m_wanted.end();
        if (found == m_wanted.end()) return false;
        Wanted& wanted = found->second;
        if (wanted.iLine) {
            vRefuse({.eWhy = PatchRefusal::Why::NumberTwice,
                     .iNumber = *number,
                     .iLine = wanted.iLine,
                     .iOtherLine = m_source.iLine(),
                     .sReason = "#" + std::to_string(*number) + " stands twice, in line " +
                                std::to_string(wanted.iLine) + " and in line " + std::to_string(m_source.iLine()) +
                                ", so it can't be changed"});
            return true;
        }
        wanted.iLine = m_source.iLine();
        if (wanted.pChanged)
            vChange(*wanted.pChanged);
        else
            vRemove();
        return true;
    }

    void vChange(const Edits::Changed& changed) {
        const ifc::Entity& entity = *changed.pEntity;
        for (const unsigned iAttribute : changed.attributes)
            if (boNamesUndefined(entity, iAttribute))
                return vRefuse({.eWhy = PatchRefusal::Why::Undefined,
                                .iNumber = m_data.iIdFromEntity(entity),
                                .iLine = m_source.iLine(),
                                .sReason = "#" + std::to_string(m_data.iIdFromEntity(entity)) + ": " +
                                           entity.schemaEntity().allAttributes()[iAttribute]->sName +
                                           " refers to an instance that is not defined, so it can't be written anew"});
        const std::string_view bytes = m_source.bytes();
        vPass(bytes.substr(0, m_source.iFirst()));
        const std::string sNew = entity.sWriteLine(m_data);
        const std::string sStatement = changed.boType
                                           ? sRenumbered(sNew, m_numbers)
                                           : sWithParameters(bytes.substr(m_source.iFirst()), sNew, changed.attributes);
        m_out.write(sStatement.data(), static_cast<std::streamsize>(sStatement.size()));
        ++m_result.iChanged;
    }

    // The statement with the new one's parameters at these positions.
    [[nodiscard]] std::string sWithParameters(std::string_view statement, std::string_view now,
                                              const std::vector<unsigned>& positions) const {
        const ParameterPlaces old = parameterPlaces(statement);
        const ParameterPlaces places = parameterPlaces(now);
        if (!old.boRegular) return sRenumbered(now, m_numbers);
        const auto sParameter = [&](std::size_t i) {
            const auto span = places.spans[i];
            return sRenumbered(now.substr(span.iBegin, span.iEnd - span.iBegin), m_numbers);
        };
        std::string sText;
        std::size_t iTaken = 0;
        for (const unsigned i : positions) {
            if (i >= old.spans.size()) continue;
            sText.append(statement, iTaken, old.spans[i].iBegin - iTaken).append(sParameter(i));
            iTaken = old.spans[i].iEnd;
        }
        // A statement that ends too early is told by the read; what it lacks up to the last change comes behind.
        sText.append(statement, iTaken, old.iClose - iTaken);
        for (std::size_t i = old.spans.size(); i <= positions.back(); ++i)
            sText.append(i ? "," : "").append(sParameter(i));
        return sText.append(statement.substr(old.iClose));
    }

    // With its line, where nothing else stands in front of it there.
    void vRemove() {
        std::string_view before = m_source.bytes().substr(0, m_source.iFirst());
        const std::size_t iLine = before.find_last_not_of(g_blanks) + 1;   // 0 where there is none
        const bool boBegins = iLine > 0 && (before[iLine - 1] == '\n' || before[iLine - 1] == '\r');
        vPass(boBegins ? before.substr(0, iLine) : before);
        m_boLineGone = boBegins;
        ++m_result.iRemoved;
    }

    // New statements in front of the ENDSEC, or of its line where it has that to itself.
    void vDataEnd() {
        const std::string_view bytes = m_source.bytes();
        if (m_edits.added.empty()) return vPass(bytes);
        const std::string_view before = bytes.substr(0, m_source.iFirst());
        const std::size_t iLine = before.find_last_not_of(g_blanks) + 1;
        const bool boBegins = iLine > 0 && (before[iLine - 1] == '\n' || before[iLine - 1] == '\r');
        const std::size_t iPlace = boBegins ? iLine : m_source.iFirst();
        vPass(bytes.substr(0, iPlace));
        if (!boBegins && m_source.boHasLineEnds()) m_out << m_source.lineEnd();
        for (const ifc::Entity* pEntity : m_edits.added) {
            m_out << sRenumbered(pEntity->sWriteLine(m_data), m_numbers) << m_source.lineEnd();
            ++m_result.iAdded;
        }
        vPass(bytes.substr(iPlace));
    }

    SourceStatements m_source;
    std::ostream& m_out;
    const ifc::Data& m_data;
    const Edits& m_edits;
    std::unordered_map<std::size_t, Wanted> m_wanted;   // by number
    NewNumbers m_numbers;
    Patched m_result;
    bool m_boLineGone = false;   // of the statement that was removed last
};

}   // namespace

std::size_t highestNumber(std::istream& source) {
    SourceStatements statements(source);
    while (statements.boNext()) {}
    return statements.iHighest();
}

Patched patch(std::istream& source, std::ostream& out, const ifc::Data& data, const Edits& edits,
              std::size_t iHighest) {
    return Patcher(source, out, data, edits, iHighest).run();
}

}   // namespace oxa::convert
