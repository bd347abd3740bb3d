// SPDX-License-Identifier: Apache-2.0
// Writes of all entities of models that were changed in some way since they were read: each is held against a walk, which
// knows nothing of how the model was before.
#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <random>
#include <vector>

#include "Format/Ifc/IfcTypeSelectBase.h"
#include "Format/Ifc/WrittenText.h"

namespace oxa::ifc::io {
namespace {

using def::schema::AttributeName;
using def::schema::ObjectName;

// A model, another one that it may name, and what the same numbers do to it.
class Edited {
public:
    explicit Edited(unsigned uSeed) : m_random(uSeed), m_other(sSmallFile(1), true, schemaIs(smallSchema())) {
        const bool boKeepIds = iBelow(8) > 0;
        m_model.emplace(sStatements(), true, schemaIs(smallSchema()), boKeepIds);
        for (std::size_t i = iBelow(6); i > 0; --i) vEdit();
    }

    [[nodiscard]] const Data& data() const { return m_model->file.data(); }
    [[nodiscard]] const std::string& sEdits() const { return m_sEdits; }

private:
    using Edit = void (Edited::*)();

    // Now and then with a reference to a number that nothing defines, or with numbers far apart.
    std::string sStatements() {
        std::string sText = sSmallFile(6);
        if (iBelow(6) == 0) sText.insert(sText.find("#2="), "#500=IFCPROPERTY('q',$,(),#501);\n");
        if (iBelow(2) == 0) sText.insert(sText.find("#2="), "#70000=IFCPROPERTY('r',#2,(),$);\n");
        return sText;
    }
    std::size_t iBelow(std::size_t iEnd) { return m_random() % iEnd; }
    Data& changed() { return m_model->file.data(); }
    Entity* pOwn() {
        const auto& entities = data().entities();
        return iBelow(4) == 0 && !m_made.empty() ? m_made[iBelow(m_made.size())] : entities[iBelow(entities.size())];
    }
    Entity* pAny() {
        const auto& others = m_other.file.data().entities();
        return iBelow(8) == 0 ? others[iBelow(others.size())] : pOwn();
    }
    AttributeName reference() {
        constexpr const char* g_names[] = {"Next", "Place", "Relating", "Value"};
        return AttributeName(g_names[iBelow(4)]);
    }

    void vCreate() {
        constexpr const char* g_types[] = {"IFCPOINT", "IFCPROPERTY", "IFCELEMENT", "IFCRELLINK"};
        m_made.push_back(changed().pEntityCreate(ObjectName(g_types[iBelow(4)])));
    }
    Entity* pUnlisted() {
        void* pBytes = changed().pool().pAllocateAligned(sizeof(Entity));
        const def::schema::Entity* pType = changed().pEntitySchemaFromName(ObjectName("IFCPROPERTY"));
        return m_made.emplace_back(::new (pBytes) Entity(changed(), *pType));
    }
    void vCreateUnlisted() { static_cast<void>(pUnlisted()); }
    void vName() { pOwn()->boValueSet(reference(), static_cast<const Entity*>(pAny()), changed()); }
    // Past the setters, where there is such a cell among some.
    void vNameInCell() {
        for (int i = 0; i < 10; ++i) {
            const auto [pAttribute, pCell] = pOwn()->pAttributeFromIndex(3);
            if (!pAttribute || pAttribute->sName != "Next") continue;
            static_cast<AttributeEntity*>(pCell)->m_value = iBelow(2) == 0 ? pOwn() : pUnlisted();
            return pCell->vDefined();
        }
    }
    void vPush() {
        constexpr const char* g_lists[] = {"Units", "Related"};
        pOwn()->boValuePushBack(AttributeName(g_lists[iBelow(2)]), pAny(), changed());
    }
    void vInverseAdd() { pOwn()->vEntityInverseAdd(changed(), pAny(), inverse()); }
    void vInverseSet() { pOwn()->vEntityInverseSet(changed(), pAny(), inverse()); }
    AttributeName inverse() { return AttributeName(iBelow(2) ? "Links" : "LinkedBy"); }
    void vDelete() { changed().boEntityDelete(pOwn()); }
    void vRemove() { changed().entitiesRemove({pOwn(), pOwn()}); }
    void vAddTwice() { changed().entityAdd(pOwn()); }
    void vNumber() { static_cast<void>(changed().iIdFromEntity(*pOwn())); }
    void vNumbersAbove() { changed().boNumbersAbove(); }
    void vNumbersAnew() { static_cast<void>(changed().entityIdMap(true)); }
    void vMove() {
        Data moved = std::move(changed());
        changed() = std::move(moved);
    }

    void vEdit() {
        static constexpr struct {
            const char* sName;
            Edit edit;
        } g_edits[] = {
            {"create", &Edited::vCreate},
            {"create, in no list", &Edited::vCreateUnlisted},
            {"name", &Edited::vName},
            {"name", &Edited::vName},
            {"name in a cell", &Edited::vNameInCell},
            {"push", &Edited::vPush},
            {"inverse add", &Edited::vInverseAdd},
            {"inverse set", &Edited::vInverseSet},
            {"delete", &Edited::vDelete},
            {"remove", &Edited::vRemove},
            {"add twice", &Edited::vAddTwice},
            {"number", &Edited::vNumber},
            {"numbers above", &Edited::vNumbersAbove},
            {"numbers anew", &Edited::vNumbersAnew},
            {"move", &Edited::vMove},
        };
        if (data().entities().empty()) return;
        const auto& edit = g_edits[iBelow(std::size(g_edits))];
        m_sEdits += std::string(edit.sName) + "; ";
        (this->*edit.edit)();
    }

    std::mt19937 m_random;
    ReadFileModel m_other;
    std::optional<ReadFileModel> m_model;
    std::vector<Entity*> m_made;
    std::string m_sEdits;
};

// By a seed that asks for each entity by itself: on one thread in the order of the walk, on several in that of numbers.
std::string sWalked(const Data& data, bool boSingleThreaded) {
    const WriteFile::Seed seed = [&data](StepWriteInfoCommon& info) {
        for (const Entity* pEntity : data.entities()) info.iEntityIdQueue(pEntity);
    };
    return written(
               [&](auto& out, auto& errors) { return WriteFile::boWrite(data, seed, out, errors, boSingleThreaded); })
        .text;
}

TEST(WriteEdited, IsTheSameAsByAWalk) {
    for (unsigned uSeed = 0; uSeed < 2000; ++uSeed) {
        const Edited edited(uSeed);
        SCOPED_TRACE(std::to_string(uSeed) + ": " + edited.sEdits());
        if (edited.data().entities().empty()) continue;
        const std::string sAny = dataOf(edited.data()).text;
        EXPECT_EQ(sAny, sWalked(Edited(uSeed).data(), true));
        const std::string sByNumber = sWalked(Edited(uSeed).data(), false);
        for (const bool boSingleThreaded : {true, false})
            EXPECT_EQ(
                dataOf(Edited(uSeed).data(), {.boSingleThreaded = boSingleThreaded, .eOrder = WriteOrder::Number}).text,
                sByNumber);
        EXPECT_EQ(dataOf(Edited(uSeed).data(), false).text, sByNumber);
        if (HasFailure()) return;
    }
}

}   // namespace
}   // namespace oxa::ifc::io
