// SPDX-License-Identifier: Apache-2.0
#include "Model/Columns.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "Model/ElementKey.h"
#include "Model/Error.h"
#include "Model/SelectorParser.h"
#include "platform/String.h"

namespace oxa {

using detail::BoundKey;
using detail::ModelState;
using detail::RelationWalk;

std::string toText(const Cell& cell) {
    struct Text {
        std::string operator()(std::monostate) const { return {}; }
        std::string operator()(bool boValue) const { return boValue ? "true" : "false"; }
        std::string operator()(std::int64_t iValue) const { return std::to_string(iValue); }
        std::string operator()(double value) const { return str::Manip::valueFormatDefault(value); }
        std::string operator()(const std::string& sText) const { return sText; }
    };
    return std::visit(Text(), cell);
}

struct Columns::State {
    State(ModelState& state, std::span<const std::string> columns)
        : model(state),
          names(columns.begin(), columns.end()) {
        const RelationWalk walk(state);
        for (const std::string& sName : names)
            keys.push_back(std::make_unique<BoundKey>(walk, detail::columnParse(sName), true));
    }

    // What a key tells of an element, as one value.
    Cell cell(BoundKey& key, ifc::Entity& entity) {
        values.clear();
        key.vRead(entity, values);
        if (values.empty()) return {};
        if (values.size() == 1) return std::move(values.front());
        std::string sText = toText(values.front());
        for (std::size_t i = 1; i < values.size(); ++i) sText += ", " + toText(values[i]);
        return sText;
    }

    ModelState& model;
    std::vector<std::string> names;
    std::vector<std::unique_ptr<BoundKey>> keys;
    std::vector<Cell> values;   // of one key, kept for its memory
};

Columns::Columns(const Model& model, std::span<const std::string> names)
    : m_pState(std::make_unique<State>(ModelState::of(model), names)) {}
Columns::Columns(const Model& model, std::initializer_list<std::string> names)
    : Columns(model, std::span<const std::string>(names.begin(), names.size())) {}
Columns::Columns(Columns&& other) noexcept = default;
Columns& Columns::operator=(Columns&& other) noexcept = default;
Columns::~Columns() = default;

const std::vector<std::string>& Columns::names() const noexcept { return m_pState->names; }

void Columns::read(const Element& element, std::vector<Cell>& cells) {
    ModelState& model = ModelState::of(element);
    if (&model != &m_pState->model) throw HandleError("the element is of another model than the columns");
    ifc::Entity& entity = ModelState::entityOf(element);
    cells.resize(m_pState->keys.size());
    for (std::size_t i = 0; i < cells.size(); ++i) cells[i] = m_pState->cell(*m_pState->keys[i], entity);
}

std::vector<Cell> Columns::row(const Element& element) {
    std::vector<Cell> cells;
    read(element, cells);
    return cells;
}

std::vector<std::string> Columns::hints() const {
    std::vector<std::string> hints;
    for (const auto& pKey : m_pState->keys)
        if (std::string sHint = pKey->hint(); !sHint.empty()) hints.push_back(std::move(sHint));
    return hints;
}

namespace {

// Numbers of both kinds by their value, then all else by kind; no value last.
bool boBefore(const Cell& a, const Cell& b) {
    const auto iRank = [](const Cell& cell) { return cell.index() == 0 ? 9U : cell.index() == 3 ? 2U : cell.index(); };
    if (iRank(a) != iRank(b)) return iRank(a) < iRank(b);
    if (iRank(a) != 2 || a.index() == b.index()) return a < b;
    const auto number = [](const Cell& cell) {
        const auto* pInteger = std::get_if<std::int64_t>(&cell);
        return pInteger ? static_cast<double>(*pInteger) : std::get<double>(cell);
    };
    return number(a) < number(b);
}

struct RowBefore {
    bool operator()(const std::vector<Cell>& a, const std::vector<Cell>& b) const {
        return std::ranges::lexicographical_compare(a, b, boBefore);
    }
};

// A sum that does not lose what is small beside it (Neumaier), whatever the order.
struct ExactSum {
    double value = 0;
    double rest = 0;   // what the value has no digits for
    std::size_t iCount = 0;

    void vAdd(double number) {
        const double sum = value + number;
        const bool boLarger = std::abs(value) >= std::abs(number);
        rest += boLarger ? (value - sum) + number : (number - sum) + value;
        value = sum;
        ++iCount;
    }
    [[nodiscard]] Sum result() const { return {std::isfinite(value) ? value + rest : value, iCount}; }
};

void vSumAdd(ExactSum& sum, const Cell& cell) {
    if (const auto* pInteger = std::get_if<std::int64_t>(&cell))
        sum.vAdd(static_cast<double>(*pInteger));
    else if (const auto* pNumber = std::get_if<double>(&cell))
        sum.vAdd(*pNumber);
}

std::vector<Group> grouped(const Elements& elements, Columns& keys, Columns* pSums) {
    struct Counted {
        std::size_t iCount = 0;
        std::vector<ExactSum> sums;
    };
    std::map<std::vector<Cell>, Counted, RowBefore> groups;
    std::vector<Cell> row;
    std::vector<Cell> values;
    for (const Element element : elements) {
        keys.read(element, row);
        if (pSums) pSums->read(element, values);
        Counted& group = groups[row];
        ++group.iCount;
        group.sums.resize(values.size());
        for (std::size_t i = 0; i < values.size(); ++i) vSumAdd(group.sums[i], values[i]);
    }
    std::vector<Group> result;
    for (auto& [cells, group] : groups) {
        Group& told = result.emplace_back(Group{cells, group.iCount, {}});
        for (const ExactSum& sum : group.sums) told.sums.push_back(sum.result());
    }
    return result;
}

}   // namespace

std::vector<Group> groupBy(const Elements& elements, Columns& keys, Columns& sums) {
    return grouped(elements, keys, &sums);
}

std::vector<Group> groupBy(const Elements& elements, Columns& keys) { return grouped(elements, keys, nullptr); }

}   // namespace oxa
