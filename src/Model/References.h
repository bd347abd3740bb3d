// SPDX-License-Identifier: Apache-2.0
/// @file
/// References: which elements an element names in its attributes, and which ones name it.
///
///     for (oxa::Element user : oxa::Referrers(model).of(material)) std::cout << user.id() << '\n';
///
/// For      whoever goes along references whatever the attributes are called: by a select, in lists, in lists of lists.
///          Relations.h tells what the relationships of IFC mean; Element::inverse knows the inverse attributes alone.
/// Errors   HandleError for an element that is not there, or of another model.
/// Threads  see Model.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "Model/Element.h"
#include "platform/Export.h"

namespace oxa {

class Model;

/// What the element's attributes refer to, in their order, each once.
[[nodiscard]] OXA_MODEL_API Elements references(const Element& element);

/// Who refers to the element, by number; an element that names itself too. One pass over the model.
[[nodiscard]] OXA_MODEL_API Elements referrers(const Model& model, const Element& element);

/// The same for many elements: one pass, and then a look a question. 16 bytes a reference.
class OXA_MODEL_API Referrers {
public:
    /// The model as it is now; what changes later is not seen.
    explicit Referrers(const Model& model);
    /// Who refers to the element, by number.
    [[nodiscard]] Elements of(const Element& element) const;

private:
    const Model* m_pModel;
    std::vector<std::pair<const ifc::Entity*, ifc::Entity*>> m_pairs;   // named, and who names it; ordered
};

}   // namespace oxa
