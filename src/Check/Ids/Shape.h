// SPDX-License-Identifier: Apache-2.0
// Shape: which elements and attributes a file of requirements may have, where, how often, and with what in them (the
// published ids.xsd, and xs:restriction of XML Schema as far as such files use it).
//
// For      the reader of the document.
// Threads  any number at once; constants.
#pragma once

#include <span>
#include <string_view>

namespace oxa::ids::detail {

enum class Space { Ids, Schema };

// What holds for the texts of attributes and elements.
enum class Form {
    Any,
    Versions,
    MinOccurs,
    MaxOccurs,
    UpperName,
    Relation,
    SimpleCardinality,
    Cardinality,
    BaseType,
    Count,
    Email,
    Date
};

struct AttributeRule {
    std::string_view sName;
    Form eForm = Form::Any;
    bool boRequired = false;
};

struct ElementRule;

struct ChildRule {
    std::string_view sName;
    const ElementRule* pRule;
    unsigned iLeast = 0;
    unsigned iMost = 1;   // 0: any number
    Space eSpace = Space::Ids;
};

struct ElementRule {
    enum class Content {
        Sequence,   // children in their order
        Choice,     // one child
        Mixed,      // children in any order
        Text,
        Anything   // not looked at
    };
    Content eContent = Content::Sequence;
    std::span<const ChildRule> children;
    std::span<const AttributeRule> attributes;
    Form eText = Form::Any;
};

/// Of the root, which is called "ids".
[[nodiscard]] const ElementRule& rootRule() noexcept;

/// Empty for a text of that form, else what it shall be.
[[nodiscard]] std::string_view formFault(Form eForm, std::string_view text) noexcept;

}   // namespace oxa::ids::detail
