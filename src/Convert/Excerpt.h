// SPDX-License-Identifier: Apache-2.0
/// @file
/// Excerpt: a part of a model that is a whole exchange structure: a storey, some walls, with all that they need.
///
///     convert::Excerpts excerpts(model);
///     const convert::Excerpt level = excerpts.of(oxa::Selector("IfcBuildingStorey, Name=L1").select(model).elements);
///     const auto shown = excerpts.show(level);
///     model.save("L1.ifc");
///
/// - Chosen: an element with its parts, openings and their fillings; a spatial element with what it contains; a group
///   with its members.
/// - Needed: all that these refer to; their types, property sets, materials, classifications and groups; styles and
///   layers of their shapes; and so on from there.
/// - Above: wholes, storey, building, site, by which a chosen element hangs in the model, each without its other parts;
///   the project with its units and contexts. Of a wall above a chosen door the openings too, which are a part of its
///   shape.
/// - Relationships: cut to what is kept of their members. One that has lost an end, or all members of it, is not kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "Model/Element.h"
#include "Model/Model.h"
#include "platform/Export.h"

namespace oxa::convert {

/// Which entities of a model an excerpt has, and what its relationships are cut to. Made by Excerpts, for its model.
class OXA_CONVERT_API Excerpt {
public:
    /// How many entities it has.
    [[nodiscard]] std::size_t size() const noexcept { return m_iCount; }

private:
    friend class Excerpts;
    friend class ShownExcerpt;
    // An attribute with fewer references than it has in the model: places in the lists of Excerpts.
    struct Cut {
        std::size_t iEnd;
        std::vector<std::uint32_t> members;   // what is left
    };
    std::vector<bool> m_kept;   // by the order of Excerpts
    std::vector<Cut> m_cuts;
    std::size_t m_iCount = 0;
};

class Excerpts;

/// While it lives, the model consists of an excerpt alone: it may be written, saved, counted, but neither changed nor
/// asked for an element outside of it. The end gives the model back as it was. One at a time for a model.
class OXA_CONVERT_API ShownExcerpt {
public:
    ~ShownExcerpt();
    ShownExcerpt(const ShownExcerpt&) = delete;
    ShownExcerpt& operator=(const ShownExcerpt&) = delete;

private:
    friend class Excerpts;
    struct State;
    ShownExcerpt(const Excerpts& excerpts, const Excerpt& excerpt);

    std::unique_ptr<State> m_pState;
};

/// Excerpts of one model, which must stay as it is as long as this is used.
///
/// Cost     one pass over the model to begin with; an excerpt then costs about what is in it, and showing one a look at
///          each entity of the model.
/// Memory   for a number a reference, and a bit an entity and excerpt.
/// Threads  one, the model's own.
class OXA_CONVERT_API Excerpts {
public:
    /// Looks at all references of the model.
    explicit Excerpts(Model& model);
    ~Excerpts();
    Excerpts(const Excerpts&) = delete;
    Excerpts& operator=(const Excerpts&) = delete;

    ///@{
    /// What the elements need, with what is above them. Elements of any class: of those outside of the tree of objects,
    /// as a property set, there is what they refer to.
    /// HandleError for an element that is not there, or of another model.
    [[nodiscard]] Excerpt of(const Elements& chosen) const;
    [[nodiscard]] Excerpt of(std::span<const Element> chosen) const;
    ///@}
    /// What none of the excerpts has: other entities with all that they need, and relationships that no excerpt has
    /// with all members, with those that are missing. So a merge of all of them with the rest has all of the model.
    /// Empty where nothing is missing.
    [[nodiscard]] Excerpt rest(std::span<const Excerpt> excerpts) const;
    /// Makes the model consist of the excerpt, until the result goes.
    [[nodiscard]] ShownExcerpt show(const Excerpt& excerpt) const { return ShownExcerpt(*this, excerpt); }

private:
    friend class ShownExcerpt;
    struct State;
    class Gatherer;
    std::unique_ptr<State> m_pState;
};

}   // namespace oxa::convert
