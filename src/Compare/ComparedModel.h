// SPDX-License-Identifier: Apache-2.0
// ComparedModel: one of two models, with what its entities stand for.
//
// For      Compare.cpp and Elements.cpp, which look at the contents of the same two models.
// Threads  as Content.
#pragma once

#include <algorithm>
#include <cstddef>
#include <stop_token>
#include <unordered_set>
#include <vector>

#include "Compare/Compare.h"
#include "Compare/Content.h"

namespace oxa::compare {

struct ComparedModel {
    using Index = Content::Index;
    using Indices = std::vector<Index>;

    explicit ComparedModel(const Side& given, const std::stop_token& stop = {})
        : side(given),
          content(given.data, withoutGuid(given), stop) {}

    [[nodiscard]] std::size_t iNumber(Index i) const { return side.data.iIdFromEntity(content.entity(i)); }
    void vSort(Indices& indices) const {
        std::sort(indices.begin(), indices.end(), [this](Index a, Index b) { return iNumber(a) < iNumber(b); });
    }

    // How often each content occurs among these entities.
    [[nodiscard]] ContentCounts contents(const Indices& indices) const {
        ContentCounts counts;
        for (const Index i : indices) ++counts[content.content(i)];
        return counts;
    }
    // The same of all entities without GlobalId that entities with one lead to.
    [[nodiscard]] ContentCounts reached() const {
        ContentCounts counts;
        for (Index i = 0; i < content.iCount(); ++i)
            if (content.boReached(i) && !content.pGuid(i)) ++counts[content.content(i)];
        return counts;
    }

    const Side& side;
    Content content;

private:
    [[nodiscard]] static std::unordered_set<const ifc::Entity*> withoutGuid(const Side& side);
};

[[nodiscard]] Result differences(const ComparedModel& before, const ComparedModel& after, const Options& options);

}   // namespace oxa::compare
