// SPDX-License-Identifier: Apache-2.0
// Real files: what a selector finds, held against a count that knows nothing of schemas: it reads the statements as text
// and goes from one to the next by the places of their parameters.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Model/Columns.h"
#include "Model/Selector.h"
#include "models/ModelFiles.h"

namespace oxa::ifc::models {
namespace {

using Ids = std::set<std::uint64_t>;

struct Statement {
    std::string sKeyword;
    std::vector<std::string> parameters;
};

class PlainFile {
public:
    explicit PlainFile(const std::filesystem::path& path) {
        std::ifstream stream(path, std::ios::binary);
        const std::string sText((std::istreambuf_iterator<char>(stream)), {});
        std::string sStatement;
        bool boQuoted = false;
        for (const char c : sText) {
            if (c == '\'') boQuoted = !boQuoted;
            if (c == ';' && !boQuoted) {
                vTake(sStatement);
                sStatement.clear();
            } else if (boQuoted || !std::isspace(static_cast<unsigned char>(c)))
                sStatement += c;
        }
    }

    // All of a keyword, by their numbers.
    [[nodiscard]] std::vector<const Statement*> all(const char* pKeyword) const {
        std::vector<const Statement*> found;
        for (const auto& [iId, statement] : m_statements)
            if (statement.sKeyword == pKeyword) found.push_back(&statement);
        return found;
    }
    [[nodiscard]] const Statement& at(std::uint64_t iId) const {
        static const Statement none;
        const auto found = m_statements.find(iId);
        return found == m_statements.end() ? none : found->second;
    }
    [[nodiscard]] const std::map<std::uint64_t, Statement>& statements() const { return m_statements; }

    // The numbers in a parameter: "(#1,#2)".
    [[nodiscard]] static std::vector<std::uint64_t> references(const std::string& sParameter) {
        std::vector<std::uint64_t> found;
        for (std::size_t i = sParameter.find('#'); i != std::string::npos; i = sParameter.find('#', i + 1))
            found.push_back(std::stoull(sParameter.substr(i + 1)));
        return found;
    }

private:
    void vTake(const std::string& sStatement) {
        const std::size_t iOpen = sStatement.find('(');
        const std::size_t iEqual = sStatement.find('=');
        if (!sStatement.starts_with('#') || iEqual == std::string::npos || iOpen == std::string::npos) return;
        Statement statement{sStatement.substr(iEqual + 1, iOpen - iEqual - 1), {""}};
        int iDepth = 0;
        bool boQuoted = false;
        for (std::size_t i = iOpen + 1; i + 1 < sStatement.size(); ++i) {
            const char c = sStatement[i];
            if (c == '\'') boQuoted = !boQuoted;
            if (!boQuoted) iDepth += c == '(' ? 1 : c == ')' ? -1 : 0;
            if (c == ',' && !boQuoted && iDepth == 0)
                statement.parameters.emplace_back();
            else
                statement.parameters.back() += c;
        }
        m_statements.emplace(std::stoull(sStatement.substr(1)), std::move(statement));
    }

    std::map<std::uint64_t, Statement> m_statements;
};

// "Set.Property" of single values and lists that are there, and who has them, by itself or by its type.
std::map<std::pair<std::string, std::string>, Ids> properties(const PlainFile& file) {
    std::map<std::uint64_t, Ids> instances;   // of a type
    for (const Statement* pTyped : file.all("IFCRELDEFINESBYTYPE"))
        for (const std::uint64_t iType : PlainFile::references(pTyped->parameters.at(5)))
            for (const std::uint64_t iId : PlainFile::references(pTyped->parameters.at(4)))
                instances[iType].insert(iId);
    std::map<std::pair<std::string, std::string>, Ids> own;
    std::map<std::pair<std::string, std::string>, Ids> ownToo;   // also without a value
    std::map<std::pair<std::string, std::string>, Ids> handedOn;
    const auto vSet = [&](std::uint64_t iSet, const Ids& ids, auto& with, auto* pAny) {
        const Statement& set = file.at(iSet);
        if (set.sKeyword != "IFCPROPERTYSET") return;
        for (const std::uint64_t iProperty : PlainFile::references(set.parameters.at(4))) {
            const Statement& property = file.at(iProperty);
            if (property.sKeyword != "IFCPROPERTYSINGLEVALUE" && property.sKeyword != "IFCPROPERTYLISTVALUE") continue;
            const std::pair key(set.parameters.at(2), property.parameters.at(0));
            if (pAny) (*pAny)[key].insert(ids.begin(), ids.end());
            if (property.parameters.at(2) != "$") with[key].insert(ids.begin(), ids.end());
        }
    };
    for (const Statement* pDefines : file.all("IFCRELDEFINESBYPROPERTIES")) {
        const std::vector<std::uint64_t> related = PlainFile::references(pDefines->parameters.at(4));
        for (const std::uint64_t iSet : PlainFile::references(pDefines->parameters.at(5)))
            vSet(iSet, Ids(related.begin(), related.end()), own, &ownToo);
    }
    for (const auto& [iId, statement] : file.statements()) {
        const bool boType = statement.sKeyword.ends_with("TYPE") || statement.sKeyword.ends_with("STYLE");
        if (!boType || statement.parameters.size() < 8 || statement.sKeyword.starts_with("IFCREL")) continue;
        Ids ids = instances[iId];
        ids.insert(iId);
        for (const std::uint64_t iSet : PlainFile::references(statement.parameters.at(5)))
            vSet(iSet, ids, handedOn, static_cast<decltype(&own)>(nullptr));
    }
    for (const auto& [key, ids] : handedOn)
        for (const std::uint64_t iId : ids)
            if (!ownToo[key].contains(iId)) own[key].insert(iId);
    return own;
}

// The parent of each element, by the relationships that lead up.
std::map<std::uint64_t, std::uint64_t> parents(const PlainFile& file) {
    struct Row {
        const char* pKeyword;
        std::size_t iWhole;
        std::size_t iParts;
    };
    std::map<std::uint64_t, std::uint64_t> found;
    for (const Row& row :
         {Row{"IFCRELAGGREGATES", 4, 5}, Row{"IFCRELNESTS", 4, 5}, Row{"IFCRELCONTAINEDINSPATIALSTRUCTURE", 5, 4},
          Row{"IFCRELVOIDSELEMENT", 4, 5}, Row{"IFCRELFILLSELEMENT", 4, 5}})
        for (const Statement* pRelates : file.all(row.pKeyword))
            for (const std::uint64_t iPart : PlainFile::references(pRelates->parameters.at(row.iParts)))
                for (const std::uint64_t iWhole : PlainFile::references(pRelates->parameters.at(row.iWhole)))
                    found.emplace(iPart, iWhole);
    return found;
}

std::map<std::uint64_t, Ids> storeys(const PlainFile& file) {
    const std::map<std::uint64_t, std::uint64_t> above = parents(file);
    std::map<std::uint64_t, Ids> found;
    for (const auto& [iPart, iWhole] : above)
        for (auto at = above.find(iPart); at != above.end(); at = above.find(at->second)) {
            if (file.at(at->second).sKeyword != "IFCBUILDINGSTOREY") continue;
            found[at->second].insert(iPart);
            break;
        }
    return found;
}

Ids idsOf(const Elements& elements) {
    Ids ids;
    for (const Element element : elements) ids.insert(element.id());
    return ids;
}

// The inside of a STEP string that a query can hold as it is; else empty.
std::string sPlain(const std::string& sParameter) {
    if (sParameter.size() < 3 || sParameter.find_first_of("\\\"") != std::string::npos) return {};
    const std::string sText = sParameter.substr(1, sParameter.size() - 2);
    return sText.find('\'') == std::string::npos ? sText : std::string();
}

class ModelQuery : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        if (!std::filesystem::exists(folder() / GetParam())) GTEST_SKIP() << "no models";
    }
};

}   // namespace

TEST_P(ModelQuery, FindsWhoHasAProperty) {
    const Model model = Model::open(folder() / GetParam());
    std::size_t iCompared = 0;
    for (const auto& [key, ids] : properties(PlainFile(folder() / GetParam()))) {
        const std::string sSet = sPlain(key.first);
        const std::string sName = sPlain(key.second);
        if (sSet.empty() || sName.empty() || sName.find('.') != std::string::npos || iCompared == 60) continue;
        const Selector selector("\"" + sSet + "\".\"" + sName + "\"!=NULL");
        EXPECT_EQ(idsOf(selector.select(model).elements), ids) << selector.text();
        Columns columns(model, {"\"" + sSet + "\".\"" + sName + "\""});
        for (const std::uint64_t iId : ids) EXPECT_FALSE(columns.row(model.byId(iId))[0] == Cell()) << iId;
        ++iCompared;
    }
    EXPECT_GT(iCompared, 4U);
}

TEST_P(ModelQuery, FindsWhatIsOnAStorey) {
    const Model model = Model::open(folder() / GetParam());
    for (const auto& [iStorey, ids] : storeys(PlainFile(folder() / GetParam()))) {
        const Selector selector("storey=" + model.byId(iStorey).guid());
        EXPECT_EQ(idsOf(selector.select(model).elements), ids) << selector.text();
    }
}

INSTANTIATE_TEST_SUITE_P(Files, ModelQuery,
                         testing::Values("psets-ifc2x3.ifc", "revit2011-duplex-architecture.ifc",
                                         "archicad20-fzk-haus-ifc4.ifc", "railcomplete-al01-ifc4x3.ifc",
                                         "tekla2019i-mini-project.ifc", "carf-hvac-heating-ifc4.ifc",
                                         "revit2015-sample-house-ifc4.ifc"));

}   // namespace oxa::ifc::models
