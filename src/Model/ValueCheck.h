// SPDX-License-Identifier: Apache-2.0
// ValueCheck: values of a caller held against the schema, and turned into what the core takes.
//
// For      ValueStore, which stores what comes out.
// Checked  the kind; the type of what is referred to, and that it is of this model; enumerators; bounds of aggregates;
//          items that stand twice where they must not; UTF-8; integers of 32 bits, which is what a read takes.
// Errors   ValueError, NameError, HandleError, before anything is changed.
// Threads  as a change of the model.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Format/Ifc/IfcTypeSelectBase.h"
#include "Model/ModelState.h"
#include "Model/NewValue.h"
#include "schema/Schema.h"

namespace oxa::detail {

class ValueCheck {
public:
    /// "sWhere" begins all messages: "IfcWall #12: Name".
    ValueCheck(ModelState& state, std::string sWhere) : m_state(state), m_sWhere(std::move(sWhere)) {}

    // "pType" is what the schema declares; all of them throw for what it does not take.
    [[nodiscard]] double number(const NewValue& value, const ifc::def::schema::ObjectBase* pType) const;
    [[nodiscard]] long long iInteger(const NewValue& value, const ifc::def::schema::ObjectBase* pType) const;
    [[nodiscard]] bool boTruth(const NewValue& value, const ifc::def::schema::ObjectBase* pType) const;
    [[nodiscard]] LogicalValue logical(const NewValue& value, const ifc::def::schema::ObjectBase* pType) const;
    [[nodiscard]] const std::string& sText(const NewValue& value, const ifc::def::schema::ObjectBase* pType) const;
    [[nodiscard]] const std::string& sEnumerator(const NewValue& value,
                                                 const ifc::def::schema::ObjectBase* pType) const;
    [[nodiscard]] const Bytes& binary(const NewValue& value, const ifc::def::schema::ObjectBase* pType) const;
    [[nodiscard]] Guid guid(const NewValue& value, const ifc::def::schema::ObjectBase* pType,
                            const ifc::Entity& owner) const;
    [[nodiscard]] ifc::Entity* pEntity(const NewValue& value, const ifc::def::schema::ObjectBase* pType) const;
    [[nodiscard]] const NewValue::List& list(const NewValue& value, const ifc::def::schema::ObjectBase* pType) const;

    // Whether a list of references takes one more.
    void vAppendCheck(const std::vector<ifc::Entity*>& present, const ifc::Entity& item,
                      const ifc::def::schema::ObjectBase* pType) const;

    // The type of a select's value that is no reference; null for a reference.
    [[nodiscard]] const ifc::def::schema::Type* pTypeOf(const NewValue& value,
                                                        const ifc::def::schema::ObjectBase* pSelect) const;

    [[noreturn]] void vRefuse(const std::string& sText) const;
    [[noreturn]] void vWrongKind(const NewValue& value, const ifc::def::schema::ObjectBase* pType) const;

private:
    void vCountCheck(std::size_t iCount, const ifc::def::schema::ObjectBase* pAggregate) const;
    void vTwiceCheck(const NewValue::List& items, const ifc::def::schema::ObjectBase* pAggregate) const;
    [[noreturn]] void vTwiceRefuse(const ifc::Entity& entity) const;

    ModelState& m_state;
    std::string m_sWhere;
};

}   // namespace oxa::detail
