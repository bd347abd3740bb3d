// SPDX-License-Identifier: Apache-2.0
#include "Model/NewValue.h"

namespace oxa {

NewValue::NewValue(const Value& value) {
    switch (value.kind()) {
    case Kind::Null: return;
    case Kind::Derived: m_content = Derived{}; break;
    case Kind::Text:
    case Kind::Enumerator: m_content = *value.text(); break;
    case Kind::Number: m_content = *value.number(); break;
    case Kind::Integer: m_content = *value.integer(); break;
    case Kind::Boolean: m_content = *value.boolean(); break;
    case Kind::Logical: m_content = *value.logical(); break;
    case Kind::Binary: m_content = *value.binary(); break;
    case Kind::Element: m_content = value.element(); break;
    case Kind::List: {
        const std::vector<Value> items = value.items();
        m_content = List(items.begin(), items.end());
        break;
    }
    }
    if (value.isTyped()) m_sType = value.typeName();
}

NewValue typed(std::string_view type, NewValue value) {
    value.m_sType = type;
    return value;
}

}   // namespace oxa
