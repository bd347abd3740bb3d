// SPDX-License-Identifier: Apache-2.0
// Real files as ifcXML and back: what the forms of ifcXML hold survives; what they don't is counted and printed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <set>
#include <sstream>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/Xml/IfcXmlExport.h"
#include "Format/Ifc/Xml/IfcXmlImport.h"
#include "models/ModelFiles.h"
#include "provider/SchemaLoader.h"
#include "schema/XmlSchema.h"

namespace oxa::ifc::models {
namespace {

using def::schema::Attribute;

struct ReadModel {
    File file;
    io::ReadError errors;
    explicit ReadModel(const std::string& sName) {
        std::istringstream in(sContent(sName));
        file.boRead(in, {}, errors, true, {}, false);
    }
};

// The numbers of the instances that a document holds in full.
std::set<std::size_t> idsOf(const std::string& sDocument) {
    constexpr std::string_view g_id = " id=\"i";
    std::set<std::size_t> ids;
    for (std::size_t i = sDocument.find(g_id); i != std::string::npos; i = sDocument.find(g_id, i + 1))
        if (std::isdigit(static_cast<unsigned char>(sDocument[i + g_id.size()])))
            ids.insert(std::stoul(sDocument.substr(i + g_id.size(), 20)));
    return ids;
}

std::uint32_t modeOf(const Attribute& attribute, const def::SchemaPset& schema) {
    if (attribute.pXml) return attribute.pXml->mode;
    if (!schema.pXmlDefaults) return 2;
    return def::schema::pAsEntity(attribute.types.front()) ? schema.pXmlDefaults->iModeEntity
                                                           : schema.pXmlDefaults->iModeValue;
}

// What a form does to a value on its way there and back.
enum class Way {
    Same,          // the same text in a STEP file
    SixDecimals,   // a real, printed with "%f"
    OtherEnd,   // left out, because the other end of the relation names it: in any order, and as far as it is reached
    NoValue,    // "$" and "*" become "$"
    Lost,       // "$", or a list of the same form with less in it
};

struct Form {
    const char* sName;
    Way eWay;
};

Form formOfSelect(const AttributeSelect& select) {
    if (select.m_eType.load() == AttributeType::Entity) return {"select with an instance", Way::Same};
    const def::schema::DataTypeBase* pDataType = def::schema::pDataTypeOf(select.m_pType.load());
    if (!pDataType) return {"select, empty", Way::Lost};
    switch (pDataType->kind) {
    case def::schema::DataKind::Real:
    case def::schema::DataKind::Number: return {"select with a real", Way::SixDecimals};
    case def::schema::DataKind::Boolean:
    case def::schema::DataKind::Integer:
    case def::schema::DataKind::Logical: return {"select with a value", Way::Same};
    case def::schema::DataKind::String: {
        const char* pText = static_cast<const AttributeString*>(select.m_pValue.load())->m_value;
        if (pText && *pText) return {"select with a text", Way::Same};
        return {"select with an empty text", Way::Lost};
    }
    case def::schema::DataKind::Enumeration: return {"select with an enumerator", Way::Lost};
    case def::schema::DataKind::Binary: return {"select with bytes", Way::Lost};
    case def::schema::DataKind::Select: return {"select in a select", Way::Lost};
    default: return {"select with a list", Way::Lost};
    }
}

Form formOfList(const AttributeListValueBase& list, const Attribute& attribute) {
    switch (list.m_eItemType.load()) {
    case AttributeType::Real: {
        const auto* pItems = list.pArray<double>();
        if (!def::schema::pAsType(attribute.types.back())) return {"list of reals without a type name", Way::Lost};
        if (!pItems || pItems->size() == 0) return {"list of no reals", Way::Lost};
        return {"list of reals", Way::Same};
    }
    case AttributeType::Entity: return {"list of instances", Way::Same};
    case AttributeType::Select: {
        const auto* pItems = list.pArray<AttributeSelect>();
        const bool boInstances = !pItems || std::ranges::all_of(*pItems, [](const AttributeSelect& item) {
            return item.m_eType.load() == AttributeType::Entity;
        });
        if (boInstances) return {"list of selects with instances", Way::Same};
        return {"list of selects with values", Way::Lost};
    }
    case AttributeType::Integer: return {"list of integers", Way::Lost};
    case AttributeType::String: return {"list of texts", Way::Lost};
    case AttributeType::List: return {"list of lists", Way::Lost};
    default: return {"list of another kind", Way::Lost};
    }
}

Form formOf(const AttributeBase& cell, const Attribute& attribute, const def::SchemaPset& schema) {
    if (!cell.boHasValue()) return {"no value", Way::NoValue};
    if (attribute.pXml && !attribute.pXml->boExported) return {"named by the other end", Way::OtherEnd};
    const std::uint32_t mode = modeOf(attribute, schema);
    switch (AttributeBase::cellClass(attribute.types.front(), attribute)) {
    case CellClass::Entity:
        if (mode == 1) return {"nested reference", Way::Same};
        return {"reference by id", Way::Lost};
    case CellClass::Select: return formOfSelect(static_cast<const AttributeSelect&>(cell));
    case CellClass::List: return formOfList(static_cast<const AttributeList&>(cell), attribute);
    case CellClass::Real:
    case CellClass::Number:
        if (mode == 2) return {"real", Way::SixDecimals};
        return {"value as element", Way::Lost};
    default:
        if (mode == 2) return {"value", Way::Same};
        return {"value as element", Way::Lost};
    }
}

std::string sValueOf(const Entity& entity, unsigned iAttribute, const Data& data) {
    const auto [pAttribute, pCell] = entity.pAttributeFromIndex(iAttribute);
    return pCell->sWriteLine(*pAttribute, data, false);
}

// "IFCREAL(0.1234567)" as "IFCREAL(0.123457)", with the number in a form of its own.
std::string sSixDecimals(const std::string& sValue) {
    const std::size_t iNumber = sValue.find('(') + 1;   // 0 where there is none
    char digits[400];
    std::snprintf(digits, sizeof digits, "%f", std::strtod(sValue.c_str() + iNumber, nullptr));
    return sValue.substr(0, iNumber) + digits;
}

// The numbers in "(#1,#2)" that are in the document.
std::multiset<std::size_t> referencesIn(const std::string& sValue, const std::set<std::size_t>& ids) {
    std::multiset<std::size_t> found;
    for (std::size_t i = sValue.find('#'); i != std::string::npos; i = sValue.find('#', i + 1))
        if (const std::size_t iId = std::stoul(sValue.substr(i + 1, 20)); ids.contains(iId)) found.insert(iId);
    return found;
}

bool boCameBack(Way eWay, const std::string& sBefore, const std::string& sAfter, const std::set<std::size_t>& ids) {
    switch (eWay) {
    case Way::SixDecimals: return sSixDecimals(sBefore) == sSixDecimals(sAfter);
    case Way::OtherEnd: return referencesIn(sBefore, ids) == referencesIn(sAfter, ids);
    case Way::NoValue: return sAfter == "$";
    default: return sBefore == sAfter;
    }
}

struct Count {
    Way eWay = Way::Same;
    std::size_t iBack = 0;
    std::size_t iLost = 0;
    std::string sFirstLost;
};

class Comparison {
public:
    Comparison(const Data& before, const Data& after, std::set<std::size_t> ids)
        : m_before(before),
          m_after(after),
          m_ids(std::move(ids)) {
        for (const std::size_t iId : m_ids) vCompare(iId, m_before.pEntityFromId(iId), m_after.pEntityFromId(iId));
    }
    [[nodiscard]] const std::map<std::string, Count>& counts() const { return m_counts; }

private:
    void vCompare(std::size_t iId, const Entity* pBefore, const Entity* pAfter) {
        const bool boThere = pBefore && pAfter && pBefore->pSchemaEntity() == pAfter->pSchemaEntity();
        vCount({"instance", Way::Same}, boThere, "#" + std::to_string(iId));
        if (!boThere) return;
        const auto& attributes = pBefore->schemaEntity().allAttributes();
        for (unsigned i = 0; i < attributes.size(); ++i) {
            const std::string sBefore = sValueOf(*pBefore, i, m_before);
            const Form form =
                sBefore.empty()   // an enumerator that is none
                    ? Form{"no value", Way::NoValue}
                    : formOf(*pBefore->pAttributeFromIndex(i).second, *attributes[i], *m_before.pSchema());
            const std::string sAfter = sValueOf(*pAfter, i, m_after);
            vCount(form, boCameBack(form.eWay, sBefore, sAfter, m_ids),
                   '#' + std::to_string(iId) + ' ' + pBefore->schemaEntity().sName + '.' + attributes[i]->sName + ": " +
                       sBefore.substr(0, 80) + " became " + sAfter.substr(0, 80));
        }
    }
    void vCount(const Form& form, bool boBack, const std::string& sValue) {
        Count& count = m_counts[form.sName];
        count.eWay = form.eWay;
        ++(boBack ? count.iBack : count.iLost);
        if (!boBack && count.sFirstLost.empty()) count.sFirstLost = sValue;
    }

    const Data& m_before;
    const Data& m_after;
    std::set<std::size_t> m_ids;
    std::map<std::string, Count> m_counts;   // by form
};

class XmlRoundTrip : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        if (GetParam().empty()) GTEST_SKIP() << "no models: set OXAIFC_MODELS to a folder of IFC files";
    }
};

TEST_P(XmlRoundTrip, KeepsWhatTheFormsHold) {
    const ReadModel before(GetParam());
    if (before.file.header().schema.schemaName != "IFC4") GTEST_SKIP() << "another schema";
    if (!before.file.data().pProject()) GTEST_SKIP() << "no project";
    const AssertLog log;   // of values that have no text, or that an import can't take
    xml::Export xmlExport;
    ASSERT_TRUE(xmlExport.boExportHeader(before.file.header()));
    ASSERT_TRUE(xmlExport.boExportData(before.file.data(), {}));
    std::stringstream document;
    ASSERT_TRUE(xmlExport.boSave(document));

    xml::Import xmlImport;
    ASSERT_TRUE(xmlImport.boLoad(document));
    File after;
    ASSERT_TRUE(xmlImport.boImportHeader(after, {}));
    ASSERT_TRUE(xmlImport.boImportData(after.data()));
    EXPECT_EQ(after.header().name.name, before.file.header().name.name);
    EXPECT_EQ(after.header().name.originatingSystem, before.file.header().name.originatingSystem);

    const std::set<std::size_t> ids = idsOf(document.str());
    EXPECT_EQ(after.data().entities().size(), ids.size());
    const Comparison comparison(before.file.data(), after.data(), ids);
    for (const auto& [sForm, count] : comparison.counts()) {
        if (count.eWay == Way::Lost)
            std::cout << sForm << ": " << count.iLost << " lost, " << count.iBack << " back\n";
        else
            EXPECT_EQ(count.iLost, 0U) << sForm << ": " << count.sFirstLost;
    }
}

// What can be reached from the project over any reference and any inverse list, found from the statements alone.
std::set<const Entity*> reachable(const Data& data) {
    std::set<const Entity*> found = {data.pProject()};
    std::vector<const Entity*> open = {data.pProject()};
    const auto vFind = [&](const Entity* pEntity) {
        if (pEntity && pEntity->pSchemaEntity() && found.insert(pEntity).second) open.push_back(pEntity);
    };
    while (!open.empty()) {
        const Entity* pEntity = open.back();
        open.pop_back();
        bool boText = false;   // inside of a text nothing is a reference
        const std::string sLine = pEntity->sWriteLine(data);
        for (std::size_t i = 1; i < sLine.size(); ++i) {
            if (sLine[i] == '\'') boText = !boText;
            if (sLine[i] == '#' && !boText) vFind(data.pEntityFromId(std::stoul(sLine.substr(i + 1, 20))));
        }
        for (unsigned i = 0; i < pEntity->schemaEntity().allInverseAttributes().size(); ++i)
            for (const Entity* pReferrer : pEntity->entitiesInverseFromIndex(i)) vFind(pReferrer);
    }
    return found;
}

// Each instance is in the document, or named by a message that tells the truth about it.
TEST_P(XmlRoundTrip, LosesNoInstanceInSilence) {
    const ReadModel before(GetParam());
    if (before.file.header().schema.schemaName != "IFC4") GTEST_SKIP() << "another schema";
    const Data& data = before.file.data();
    if (!data.pProject()) GTEST_SKIP() << "no project";
    const AssertLog log;
    xml::Export xmlExport;
    io::WriteError report;
    ASSERT_TRUE(xmlExport.boExportHeader(before.file.header()));
    ASSERT_TRUE(xmlExport.boExportData(data, report, {}));
    std::stringstream document;
    ASSERT_TRUE(xmlExport.boSave(document));
    const std::set<std::size_t> ids = idsOf(document.str());

    std::map<const Entity*, const ErrorRecord*> told;
    for (const ErrorRecord& record : report.records())
        EXPECT_TRUE(told.emplace(record.entity, &record).second) << "told twice: " << record.description;
    const std::set<const Entity*> connected = reachable(data);
    std::map<std::string, std::size_t> counts;
    for (const Entity* pEntity : data.entities()) {
        const std::size_t iId = data.iIdFromEntity(*pEntity);
        const std::string sName = '#' + std::to_string(iId) + ' ' + pEntity->schemaEntity().sName;
        const auto record = told.find(pEntity);
        ASSERT_NE(ids.contains(iId), record != told.end()) << sName;
        if (record == told.end()) continue;
        EXPECT_EQ(record->second->description.substr(0, sName.size() + 1), sName + ' ');
        const std::string sKey = record->second->key.value_or({});
        EXPECT_EQ(sKey, connected.contains(pEntity) ? "Error_EntityWithoutForm" : "Error_EntityNotConnected") << sName;
        ++counts[sKey];
    }
    for (const auto& [sKey, iCount] : counts) std::cout << sKey << ": " << iCount << '\n';

    // And what is in the document comes back with what names it, as far as the forms go.
    xml::Import xmlImport;
    ASSERT_TRUE(xmlImport.boLoad(document));
    File after;
    ASSERT_TRUE(xmlImport.boImportHeader(after, {}) && xmlImport.boImportData(after.data()));
    EXPECT_EQ(after.data().entities().size(), ids.size());
    const Comparison comparison(data, after.data(), ids);
    for (const auto& [sForm, count] : comparison.counts())
        if (count.eWay != Way::Lost) {
            EXPECT_EQ(count.iLost, 0U) << sForm << ": " << count.sFirstLost;
        }
}

INSTANTIATE_TEST_SUITE_P(Files, XmlRoundTrip, testing::ValuesIn(namesOrNone()), sTestName);

struct DocumentRow {
    const char* sName;
    bool boHeader;
    std::size_t iInstances;
    std::size_t iId;   // of one of them
    const char* sStatement;
};
const DocumentRow g_documents[] = {
    {"derived-unit-ifc4.ifcxml", true, 1, 1, "#1=IFCPROJECT('3W_wCy4R58hgkAO0WsiUkm',$,'P',$,$,$,$,$,);"},
    {"dimensions-ifc4add2.ifcxml", true, 21, 17, "#17=IFCPROPERTYSINGLEVALUE('Value',$,IFCLENGTHMEASURE(300.),#7);"},
    {"four-walls-ifc2x3.ifcxml", false, 0, 0, nullptr},
    {"ikea-kitchen-cabinets-ifc4add2.ifcxml", true, 4, 1, "#1=IFCPROJECT($,$,'MyProject',$,$,' ',$,$,$);"},
    {"quantity-test-ifc4.ifcxml", true, 4, 2, "#2=IFCELEMENTQUANTITY($,$,'TestQuantities',$,$,(#1));"},
    {"six-spaces-ifc2x3.ifcxml", false, 0, 0, nullptr},
};

// Of documents that others made only what has our shape is read; the rest does no harm.
TEST(XmlDocuments, OfOthersAreReadAsFarAsTheyGo) {
    if (!std::filesystem::exists(folder() / "ifcxml")) GTEST_SKIP() << "no documents: set OXAIFC_MODELS";
    const AssertLog log;
    for (const DocumentRow& row : g_documents) {
        SCOPED_TRACE(row.sName);
        const std::filesystem::path path = folder() / "ifcxml" / row.sName;
        if (!std::filesystem::exists(path)) continue;
        xml::Import xmlImport;
        File file;
        ASSERT_TRUE(xmlImport.boLoad(path.string()));
        EXPECT_EQ(xmlImport.boImportHeader(file, {}), row.boHeader);
        EXPECT_TRUE(xmlImport.boImportData(file.data()));
        EXPECT_EQ(file.data().entities().size(), row.iInstances);
        std::ostringstream out;
        io::WriteError errors;
        file.data().boWrite(out, errors, true);
        if (row.sStatement) {
            EXPECT_EQ(file.data().pEntityFromId(row.iId)->sWriteLine(file.data()), row.sStatement);
        }
    }
}

}   // namespace
}   // namespace oxa::ifc::models
