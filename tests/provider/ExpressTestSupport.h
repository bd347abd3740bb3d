// SPDX-License-Identifier: Apache-2.0
// ExpressTestSupport: one line from EXPRESS text to what a test looks at.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "provider/SchemaLoader.h"

namespace oxa::test {

using namespace oxa::ifc::def::schema;

// The messages as "line:column text", one a line.
inline std::string sMessages(const std::vector<oxa::ifc::SchemaMessage>& messages) {
    std::string sText;
    for (const oxa::ifc::SchemaMessage& message : messages) {
        if (!sText.empty()) sText += '\n';
        sText += std::to_string(message.iLine) + ':' + std::to_string(message.iColumn) + ' ' + message.sText;
    }
    return sText;
}

// A graph made of the declarations in "body"; the test fails when there is none.
class Loaded {
public:
    explicit Loaded(std::string_view body) {
        std::vector<oxa::ifc::SchemaMessage> messages;
        m_pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress("SCHEMA TEST;\n" + std::string(body) + "\nEND_SCHEMA;\n",
                                                               messages);
        EXPECT_EQ(sMessages(messages), "");
        if (!m_pSchema) throw std::runtime_error("no schema");
    }

    [[nodiscard]] const Schema& schema() const { return *m_pSchema; }
    [[nodiscard]] const Entity& entity(std::string_view name) const {
        return *pChecked(pAsEntity(m_pSchema->pObjectFromName(name)), name);
    }
    [[nodiscard]] const Type& type(std::string_view name) const {
        return *pChecked(pAsType(m_pSchema->pObjectFromName(name)), name);
    }
    [[nodiscard]] const Attribute& attribute(std::string_view entityName, std::string_view name) const {
        return *pChecked(entity(entityName).pAttributeFromName(AttributeName(name), true), name);
    }

private:
    template <class Object>
    static const Object* pChecked(const Object* pObject, std::string_view name) {
        if (!pObject) throw std::runtime_error("no " + std::string(name));
        return pObject;
    }

    std::unique_ptr<oxa::ifc::def::SchemaPset> m_pSchema;
};

// The messages for a whole text, which must give no schema; "no fault" when it gives one.
inline std::string sFaults(std::string_view text) {
    std::vector<oxa::ifc::SchemaMessage> messages;
    const auto pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress(text, messages);
    EXPECT_EQ(pSchema == nullptr, !messages.empty());
    return pSchema ? "no fault" : sMessages(messages);
}

// "First Second" for a list of named records, held by value or by pointer.
template <class List>
std::string sNames(const List& list) {
    std::string sText;
    for (const auto& item : list) {
        if (!sText.empty()) sText += ' ';
        if constexpr (std::is_pointer_v<std::decay_t<decltype(item)>>)
            sText += item->sName;
        else
            sText += item.sName;
    }
    return sText;
}

}   // namespace oxa::test
