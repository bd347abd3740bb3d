// SPDX-License-Identifier: Apache-2.0
#include "Model/ModelState.h"

#include <algorithm>
#include <charconv>
#include <deque>

#include "Model/Error.h"
#include "Model/Model.h"
#include "Model/Names.h"
#include "Model/RelationTable.h"

namespace oxa::detail {

namespace {

// The places of models. They outlive everything, since handles with static storage may be asked after all else is gone.
class Lives {
public:
    static Lives& instance() {
        static Lives& lives = *new Lives;
        return lives;
    }

    Life* pTake(ModelState& state) {
        const std::lock_guard lock(m_mutex);
        if (m_free.empty()) m_free.push_back(&m_all.emplace_back());
        Life* pLife = m_free.back();
        m_free.pop_back();
        pLife->pState = &state;
        pLife->uSerial.store(++m_uSerial, std::memory_order_release);
        return pLife;
    }
    void vGive(Life* pLife) {
        const std::lock_guard lock(m_mutex);
        pLife->uSerial.store(0, std::memory_order_release);
        pLife->pState = nullptr;
        m_free.push_back(pLife);
    }

private:
    std::mutex m_mutex;
    std::deque<Life> m_all;
    std::vector<Life*> m_free;
    std::uint64_t m_uSerial = 0;
};

ModelState* pAlive(const ModelRef& ref) noexcept {
    return ref.pLife && ref.pLife->uSerial.load(std::memory_order_acquire) == ref.uSerial ? ref.pLife->pState : nullptr;
}

// The words of Errors::Category; 6 is not in use.
constexpr const char* g_categories[] = {"syntax", "header", "value",      "null",  "reference",
                                        "model",  "",       "identifier", "schema"};

const char* pCategoryName(ifc::Errors::Category eCategory) {
    const auto iCategory = static_cast<std::size_t>(eCategory);
    return iCategory < std::size(g_categories) ? g_categories[iCategory] : "";
}

// "#12=IFCWALL(": 12 and IFCWALL.
void vStatementTell(Record& record) {
    const std::string_view text = record.text;
    std::int64_t iId = 0;
    if (!text.starts_with('#')) return;
    const auto [pEnd, error] = std::from_chars(text.data() + 1, text.data() + text.size(), iId);
    if (error != std::errc() || pEnd == text.data() + text.size() || *pEnd != '=') return;
    record.id = iId < 0 ? static_cast<std::uint32_t>(iId) : static_cast<std::uint64_t>(iId);   // as the core takes it
    const auto iKeyword = static_cast<std::size_t>(pEnd - text.data()) + 1;
    record.type = text.substr(iKeyword, std::min(text.find('(', iKeyword), text.size()) - iKeyword);
}

}   // namespace

Record recordOf(const ifc::ErrorRecord& error) {
    Record record;
    record.key = error.key.value_or("");
    record.severity = error.severity == ifc::Errors::Fatal ? Record::Severity::Fatal : Record::Severity::Error;
    record.category = pCategoryName(error.category);
    record.message = error.description;
    record.line = error.lineNumber;
    record.text = error.lineString.value_or("");
    vStatementTell(record);
    return record;
}

ModelState::ModelState(ReadResult read, bool boKeepNumbers)
    : m_read(std::move(read)),
      m_life(*this),
      m_ref(m_life.ref()),
      m_boTwice(m_read.boMayBeTwice) {
    if (m_read.pErrors)
        m_boTwice = std::ranges::any_of(m_read.pErrors->records(), [](const ifc::ErrorRecord& error) {
            return error.reportKey == ifc::ReportKey::EntityIdReused;
        });
    if (boKeepNumbers)
        m_boRoom = data().boNumbersAbove();
    else
        vRenumber();
}

bool ModelState::boIsFrom(const std::filesystem::path& path) const {
    std::error_code error;
    return !m_read.path.empty() && std::filesystem::equivalent(m_read.path, path, error) && !error;
}

LifeHolder::LifeHolder(ModelState& state) : m_pLife(Lives::instance().pTake(state)) {}
LifeHolder::~LifeHolder() { Lives::instance().vGive(m_pLife); }

void ModelState::vRenumber() {
    const std::vector<ifc::Entity*> entities = all();
    static_cast<void>(data().entityIdMap(true));
    m_numbered.reserve(entities.size());
    for (ifc::Entity* pEntity : entities) m_numbered.emplace_back(data().iIdFromEntity(*pEntity), pEntity);
}

bool ModelState::boThere(const Element& element) noexcept {
    return element.m_pEntity && pAlive(element.m_model) && element.m_pEntity->pSchemaEntity();
}

ModelState& ModelState::of(const Element& element) {
    if (!boThere(element)) vRefuse(element);
    return *element.m_model.pLife->pState;
}

ifc::Entity& ModelState::entityOf(const Element& element) {
    if (!boThere(element)) vRefuse(element);
    return *element.m_pEntity;
}

void ModelState::vRefuse(const Element& element) {
    if (!element.m_pEntity) throw HandleError("the handle names no element");
    const ModelState* pState = pAlive(element.m_model);
    if (!pState) throw HandleError("the model of this element is gone");
    const auto found = pState->m_removed.find(element.m_pEntity);
    if (found == pState->m_removed.end()) throw HandleError("the file does not define this element");
    throw HandleError(found->second.pType->sName + " #" + std::to_string(found->second.iId) + " was removed");
}

ifc::Entity& ModelState::entityHere(const Element& element) {
    ifc::Entity& entity = entityOf(element);
    if (element.m_model != m_ref) throw HandleError(of(element).sNameOf(entity) + " is of another model");
    return entity;
}

const std::vector<Record>& ModelState::records() {
    std::call_once(m_recordsOnce, [this] {
        if (!m_read.pErrors) return;
        for (const ifc::ErrorRecord& error : m_read.pErrors->records()) {
            m_records.push_back(recordOf(error));
            vTypeSpell(m_records.back());
        }
    });
    return m_records;
}

void ModelState::vTypeSpell(Record& record) {
    if (const auto* pObject = schema().pObjectFromName(record.type)) record.type = pObject->sName;
}

ModelState& ModelState::of(const Model& model) { return model.state(); }

const RelationTable& ModelState::relations() {
    std::call_once(m_relationsOnce, [this] { m_pRelations = std::make_shared<const RelationTable>(schema()); });
    return *m_pRelations;
}

ifc::Entity* ModelState::pFromNumber(std::uint64_t iId) {
    ifc::Entity* pEntity = data().pEntityFromId(static_cast<std::size_t>(iId));
    if (!pEntity) {
        const auto found =
            std::ranges::lower_bound(m_numbered, iId, {}, &std::pair<std::uint64_t, ifc::Entity*>::first);
        if (found != m_numbered.end() && found->first == iId) pEntity = found->second;
    }
    return pEntity && pEntity->pSchemaEntity() ? pEntity : nullptr;
}

ifc::Entity* ModelState::pFromGuid(const Guid& guid) { return data().pEntityFromGuid(guid); }

std::size_t ModelState::iSize() {
    if (m_boTwice) return all().size();
    const std::lock_guard lock(m_mutex);
    return data().entities().size();
}

std::vector<ifc::Entity*> ModelState::all() {
    std::vector<ifc::Entity*> entities;
    {
        const std::lock_guard lock(m_mutex);
        entities = data().entities();
    }
    return ordered(std::move(entities));
}

std::vector<ifc::Entity*> ModelState::all(const ifc::def::schema::Entity& type, bool boWithSubtypes) {
    std::vector<ifc::Entity*> entities;
    {
        const std::lock_guard lock(m_mutex);
        const auto [first, last] = data().range(ifc::def::schema::ObjectName(type), boWithSubtypes);
        entities.assign(first, last);
    }
    return ordered(std::move(entities));
}

std::vector<ifc::Entity*> ModelState::ordered(std::vector<ifc::Entity*> entities) {
    vSortByNumber(entities);
    if (m_boTwice) entities.erase(std::unique(entities.begin(), entities.end()), entities.end());
    return entities;
}

// The numbers are looked up once, whatever the order. Those of one type mostly come in their order.
void ModelState::vSortByNumber(std::vector<ifc::Entity*>& entities) {
    std::vector<std::pair<std::uint64_t, ifc::Entity*>> numbered;
    numbered.reserve(entities.size());
    bool boSorted = true;
    for (ifc::Entity* pEntity : entities) {
        const std::uint64_t iId = iNumberOf(*pEntity);
        boSorted = boSorted && (numbered.empty() || numbered.back().first <= iId);
        numbered.emplace_back(iId, pEntity);
    }
    if (boSorted) return;
    std::ranges::stable_sort(numbered, {}, &std::pair<std::uint64_t, ifc::Entity*>::first);
    std::ranges::transform(numbered, entities.begin(), &std::pair<std::uint64_t, ifc::Entity*>::second);
}

std::string ModelState::sNameOf(const ifc::Entity& entity) {
    return entity.schemaEntity().sName + " #" + std::to_string(iNumberOf(entity));
}

}   // namespace oxa::detail
