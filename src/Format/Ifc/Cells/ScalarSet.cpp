// SPDX-License-Identifier: Apache-2.0
// Setting the cells of one plain value that own memory beside the cell. The other scalars are written directly.
#include <cstring>

#include "Format/Ifc/Cells/ItemBlock.h"
#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "platform/Assert.h"
#include "platform/String.h"

namespace oxa::ifc {

void AttributeString::vStore(const char* text, std::size_t size, Pool& pool) {
    char* const pPresent = m_value;
    char* const pText = pBlockOrNew(pPresent, pPresent ? std::strlen(pPresent) : 0, size,
                                    [&] { return static_cast<char*>(pool.pAllocate(size)); });
    std::memmove(pText, text, size);   // a caller may hand the cell its own text
    m_value = pText;
}

bool AttributeString::boValueSet(const char* text, std::size_t size, Pool& pool) {
    if (Assert::isEnabled() && !str::boIsValidUtf8({text, size ? size - 1 : 0}))
        Assert::vTell("Format/Ifc/IfcFileAttribute", "oxa::ifc::AttributeString::boValueSet", "Not a valid string");
    vStore(text, size, pool);
    return true;
}

bool AttributeBinary::boValueSet(const unsigned char* bytes, std::size_t size, Pool& pool) {
    unsigned char* const pBytes = pBlockOrNew(m_value.load(), static_cast<std::size_t>(m_iCount.load()), size,
                                              [&] { return static_cast<unsigned char*>(pool.pAllocate(size)); });
    if (size) std::memmove(pBytes, bytes, size);
    m_value = pBytes;
    m_iCount = size;
    return true;
}

bool AttributeEnumeration::boValueSet(const char* text, const def::schema::Attribute& attribute, Data& data) {
    const def::schema::DataTypeEnum* pEnum = pEnumOf(nullptr, attribute);
    return pEnum && boValueSet(text, *pEnum, data.pool());
}

bool AttributeEnumeration::boValueSet(const char* text, const def::schema::DataTypeEnum& type, Pool& pool) {
    if (!text || !type.items.contains(std::string_view(text))) {
        m_value = nullptr;
        return false;
    }
    const std::size_t iSize = std::strlen(text) + 1;
    m_value = static_cast<const char*>(std::memcpy(pool.pAllocate(iSize), text, iSize));
    return true;
}

}   // namespace oxa::ifc
