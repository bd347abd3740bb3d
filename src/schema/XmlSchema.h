// SPDX-License-Identifier: Apache-2.0
// XmlSchema: how ifcXML writes the attributes of a schema (ISO 10303-28, the published configuration of a schema).
//
// For      the provider, which hangs these records on a schema graph; the ifcXML export; the text form of lists.
// Owner    the schema. Null where a schema says nothing, and then the defaults hold.
#pragma once

#include <cstdint>

namespace oxa::ifc::def::xmlschema {

// The record of one attribute.
struct Attribute {
    std::uint32_t mode = 2;      // 1 nested element, 2 and 3 XML attribute; what else means: see IfcXmlExport.h
    bool boListAsText = false;   // a list of this attribute has a text of its own
    bool boExported = true;      // false: the document leaves the attribute out
};

// The modes of attributes without a record.
struct Defaults {
    std::uint32_t iModeValue = 2;    // the attribute's type is no entity
    std::uint32_t iModeEntity = 2;   // the attribute's type is an entity
};

}   // namespace oxa::ifc::def::xmlschema
