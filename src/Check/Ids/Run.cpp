// SPDX-License-Identifier: Apache-2.0
// The run of a check: specification by specification; the instances that one may speak of are shared out among threads, and
// what each share found is put together in the order of the shares.
#include <algorithm>
#include <atomic>
#include <iterator>
#include <thread>

#include "Check/Ids/FacetMatch.h"
#include "Check/Ids/ModelView.h"
#include "Check/Ids/Program.h"
#include "Core/Utilities/Threads/OnAllThreads.h"
#include "Model/Error.h"

namespace oxa::ids::detail {

namespace {

constexpr std::size_t g_iShare = 512;   // instances that a thread takes at once

// "3 instances"; with 1 the other form.
std::string counted(std::uint64_t iCount, std::string_view one, std::string_view several) {
    return std::to_string(iCount) + " " + std::string(iCount == 1 ? one : several);
}

// Whether a model of that schema is one of a schema that requirements name.
bool boSame(std::string_view named, std::string_view schema) {
    const auto boVariant = [&](std::string_view name) {
        return schema == name || (schema.starts_with(name) && schema.substr(name.size()).starts_with('_'));
    };
    if (named != "IFC4X3_ADD2") return boVariant(named);
    return boVariant("IFC4X3") && !schema.substr(std::min(schema.size(), named.size() - 4)).starts_with("RC");
}

bool boNames(const Specification& specification, std::string_view schema) {
    return std::ranges::any_of(specification.schemas, [&](const std::string& s) { return boSame(s, schema); });
}

// The facets of one specification, as one thread asks them.
class Tests {
public:
    using AllParts = std::vector<std::shared_ptr<const Parts>>;
    Tests(const ModelView& view, const SpecificationProgram& program, const AllParts& parts) {
        std::size_t iFacet = 0;
        for (const FacetProgram& facet : program.applicability)
            applicability.push_back(facetMatch(view, facet, parts[iFacet++]));
        for (const FacetProgram& facet : program.requirements)
            requirements.push_back(facetMatch(view, facet, parts[iFacet++]));
    }
    std::vector<std::unique_ptr<FacetMatch>> applicability;
    std::vector<std::unique_ptr<FacetMatch>> requirements;
};

class Run {
public:
    Run(const Model& model, const Requirements& requirements, const Options& options)
        : m_view(model),
          m_program(Program::of(requirements)),
          m_options(options),
          m_iThreads(std::max(1U, options.threads ? options.threads : std::thread::hardware_concurrency())) {
        m_result.schema = model.schema();
    }

    Result result() {
        vPlan();
        for (std::size_t i = 0; i < m_program.specifications.size(); ++i) vSpecification(i);
        m_result.verdict = verdict();
        if (m_options.progress) m_options.progress({m_iTotal, m_iTotal});
        return std::move(m_result);
    }

private:
    using Count = std::uint64_t;

    // Which specifications are checked, and how many instances they may speak of.
    void vPlan() {
        const auto& specifications = m_program.specifications;
        const bool boAnyNames = std::ranges::any_of(
            specifications, [&](const Specification& one) { return boNames(one, m_result.schema); });
        const bool boOthers = m_options.otherSchemas == OtherSchemas::Check ||
                              (m_options.otherSchemas == OtherSchemas::Auto && !boAnyNames);
        m_result.specifications.resize(specifications.size());
        for (std::size_t i = 0; i < specifications.size(); ++i) {
            SpecificationResult& result = m_result.specifications[i];
            result.requirements.resize(specifications[i].requirements.size());
            const bool boNamed = boNames(specifications[i], m_result.schema);
            if (!specifications[i].valid) {
                result.status = Status::Faulty;
                result.reason = "the file has a fault here";
            } else if (!boNamed && !boOthers) {
                result.status = Status::OtherSchema;
                result.reason = "it is for " + schemasOf(specifications[i]) + ", and the model is " + m_result.schema;
            } else {
                result.otherSchema = !boNamed;
            }
            if (m_options.progress && boChecked(result)) m_iTotal += candidates(i).size();
        }
        if (m_options.progress) m_options.progress({0, m_iTotal});
    }
    static bool boChecked(const SpecificationResult& result) {
        return result.status != Status::Faulty && result.status != Status::OtherSchema;
    }
    static std::string schemasOf(const Specification& specification) {
        std::string sAll;
        for (const std::string& sSchema : specification.schemas) sAll += (sAll.empty() ? "" : ", ") + sSchema;
        return sAll;
    }

    // Instances of all types that each facet may select, by number.
    [[nodiscard]] std::vector<Entity*> candidates(std::size_t iSpecification) const {
        const SpecificationProgram& program = m_program.programs[iSpecification];
        std::vector<std::unique_ptr<FacetMatch>> tests;
        for (const FacetProgram& facet : program.applicability) tests.push_back(facetMatch(m_view, facet, nullptr));
        std::vector<Entity*> found;
        std::size_t iTypes = 0;
        for (const schema::Schema::Record& record : m_view.schema().objects) {
            const schema::Entity* pType = schema::pAsEntity(record.pObject);
            if (!pType || !std::ranges::all_of(tests, [&](const auto& p) { return p->boMaySelect(*pType); })) continue;
            const std::vector<Entity*> some = m_view.state().all(*pType, false);
            iTypes += !some.empty();
            found.insert(found.end(), some.begin(), some.end());
        }
        if (iTypes > 1) m_view.state().vSortByNumber(found);
        return found;
    }

    struct Share {
        Count iApplicable = 0;
        Count iPassed = 0;
        std::vector<RequirementResult> requirements;
        std::vector<Failure> failures;
    };

    void vSpecification(std::size_t iSpecification) {
        SpecificationResult& result = m_result.specifications[iSpecification];
        if (!boChecked(result)) return;
        const SpecificationProgram& program = m_program.programs[iSpecification];
        const Specification& specification = m_program.specifications[iSpecification];
        Tests::AllParts parts;
        for (const FacetProgram& facet : program.applicability) parts.push_back(partsOf(m_view, facet));
        for (const FacetProgram& facet : program.requirements) parts.push_back(partsOf(m_view, facet));
        const std::vector<Entity*> entities = candidates(iSpecification);
        std::vector<Share> shares((entities.size() + g_iShare - 1) / g_iShare);
        vShareOut(shares.size(), [&](const std::atomic<bool>& boEnd, auto&& next, bool boCaller) {
            Tests tests(m_view, program, parts);
            for (std::size_t i = next(); i < shares.size() && !boEnd; i = next()) {
                shares[i].requirements.resize(program.requirements.size());
                const std::size_t iLast = std::min(entities.size(), (i + 1) * g_iShare);
                for (std::size_t iAt = i * g_iShare; iAt < iLast; ++iAt)
                    vInstance(*entities[iAt], tests, specification.cardinality, shares[i]);
                vTell(iLast - i * g_iShare, boCaller);
            }
        });
        for (Share& share : shares) vAdd(share, result);
        vConclude(specification.cardinality, result);
    }

    // Calls work(whether to end, the next number, whether it is the caller's thread) on each thread.
    template <class Work>
    void vShareOut(std::size_t iShares, const Work& work) {
        std::atomic<std::size_t> iNext{0};
        std::atomic<bool> boEnd{false};
        util::vOnAllThreads(
            std::max<std::size_t>(std::min<std::size_t>(m_iThreads, iShares), 1) - 1,
            [&](std::size_t iThread) {
                work(
                    boEnd, [&iNext] { return iNext++; }, iThread == 0);
            },
            [&boEnd] { boEnd = true; });
    }

    void vTell(std::size_t iInstances, bool boCaller) {
        const Count iDone = m_iDone += iInstances;
        if (m_options.stop.stop_requested()) throw Stopped("the check was stopped");
        if (boCaller && m_options.progress) m_options.progress({iDone, m_iTotal});
    }

    void vInstance(Entity& entity, Tests& tests, Cardinality cardinality, Share& share) {
        for (const auto& pTest : tests.applicability)
            if (!pTest->boSelects(entity)) return;
        ++share.iApplicable;
        if (cardinality == Cardinality::Prohibited) {
            share.failures.push_back({.element = m_view.state().elementOf(&entity),
                                      .kind = FailureKind::NotAllowed,
                                      .reason = "it is applicable, and no instance may be"});
            return;
        }
        bool boPassed = true;
        for (std::size_t i = 0; i < tests.requirements.size(); ++i) {
            Finding finding;
            if (tests.requirements[i]->boMeets(entity, finding)) {
                ++share.requirements[i].passed;
                continue;
            }
            boPassed = false;
            ++share.requirements[i].failed;
            share.failures.push_back({.element = m_view.state().elementOf(&entity),
                                      .requirement = i,
                                      .kind = finding.kind,
                                      .reason = std::move(finding.reason),
                                      .found = std::move(finding.found)});
        }
        share.iPassed += boPassed;
    }

    static void vAdd(Share& share, SpecificationResult& result) {
        result.applicable += share.iApplicable;
        result.passed += share.iPassed;
        for (std::size_t i = 0; i < share.requirements.size(); ++i) {
            result.requirements[i].passed += share.requirements[i].passed;
            result.requirements[i].failed += share.requirements[i].failed;
        }
        std::ranges::move(share.failures, std::back_inserter(result.failures));
        share.failures = {};
    }

    static void vConclude(Cardinality cardinality, SpecificationResult& result) {
        result.failed = result.applicable - result.passed;
        const bool boNone = result.applicable == 0;
        const bool boLacking = boNone && cardinality == Cardinality::Required;
        result.status = boLacking || result.failed > 0 ? Status::Failed : Status::Passed;
        if (boNone)
            result.reason =
                boLacking ? "no instance is applicable, and one at least is required" : "no instance is applicable";
        else if (cardinality == Cardinality::Prohibited)
            result.reason = counted(result.applicable, "instance is", "instances are") + " applicable, and none may be";
        else if (result.failed > 0)
            result.reason = std::to_string(result.failed) + " of " +
                            counted(result.applicable, "instance", "instances") +
                            (result.failed == 1 ? " fails" : " fail");
        else
            result.reason = result.applicable == 1 ? "the one applicable instance passes"
                                                   : "all " + std::to_string(result.applicable) + " instances pass";
    }

    [[nodiscard]] Verdict verdict() const {
        const auto boAny = [&](Status status) {
            return std::ranges::any_of(m_result.specifications,
                                       [status](const auto& one) { return one.status == status; });
        };
        if (boAny(Status::Failed)) return Verdict::Failed;
        return m_program.boValid && boAny(Status::Passed) ? Verdict::Passed : Verdict::Undecided;
    }

    ModelView m_view;
    const Program& m_program;
    const Options& m_options;
    unsigned m_iThreads;
    Result m_result;
    Count m_iTotal = 0;
    std::atomic<Count> m_iDone{0};
};

}   // namespace

}   // namespace oxa::ids::detail

namespace oxa::ids {

Result check(const Model& model, const Requirements& requirements, const Options& options) {
    return detail::Run(model, requirements, options).result();
}

}   // namespace oxa::ids
