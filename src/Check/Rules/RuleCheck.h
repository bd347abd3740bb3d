// SPDX-License-Identifier: Apache-2.0
// RuleCheck: all rules of a program over all instances of a model.
//
// For      the level "rules" of a check; tests.
// Order    what was found stands in the order of the model's instances and, of one instance, of the program's rules; then
//          UNIQUE clauses, then the rules of the schema: the same for any number of threads.
// Bounded  by RuleOptions::iStepsOfModel and iStepsOfInstance: where instances cost more than that together, those from a
//          share of the model on are left out, the same ones for any number of threads, and RuleResult says so.
// Threads  starts and joins its own. The model must not change meanwhile, and should have kept its numbers, which reasons
//          name; without them one thread is used.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "Check/Rules/Code.h"
#include "Check/Rules/Evaluator.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "platform/Export.h"

namespace oxa::check::rules {

struct RuleFinding {
    enum class Sort : std::uint8_t {
        Violated,
        NotEvaluated,   // the text of the rule fails inside, or went past a limit
    };
    Sort sort = Sort::Violated;
    std::uint32_t iRule = 0;                         // in Program::rules
    ifc::Entity* pEntity = nullptr;                  // null for a rule of the schema
    const schema::Attribute* pAttribute = nullptr;   // of the value, for a rule of a type
    bool boTold = true;                              // its reason is wanted
    std::string sReason{};                           // values of parts; why it could not be evaluated
};

// What became of one rule.
struct RuleCount {
    std::uint64_t iEvaluated = 0;   // times that it had a result
    std::uint64_t iUnknown = 0;     // of these: UNKNOWN
    std::uint64_t iFailed = 0;      // times that it had none
};

struct RuleResult {
    std::vector<RuleFinding> findings;
    std::vector<RuleCount> counts;   // by rule
    bool boStopped = false;          // asked to end; what was found up to there is there
    std::size_t iLeftOut = 0;        // instances that were not looked at: all took too many steps together
    bool boWholeLeftOut = false;     // the same of UNIQUE clauses and rules of the schema
    std::uint64_t iSteps = 0;        // of all evaluations of instances
};

struct RuleOptions {
    unsigned iThreads = 0;   // 0: as many as the machine has a use for
    bool boUnique = true;    // UNIQUE clauses too
    Limits limits{};
    // Steps of all evaluations together: so many, and so many more for each instance.
    std::uint64_t iStepsOfModel = 200'000'000;
    std::uint64_t iStepsOfInstance = 1'000;
    std::stop_token stop{};
    std::function<void(std::size_t iDone, std::size_t iAll)>
        progress{};   // on the caller's thread; may be empty, and may throw
};

// The rules of one program over one model, which both have to outlive it.
class OXA_CHECK_API RuleRun {
public:
    RuleRun(const Program& program, const ifc::Data& data, const RuleOptions& options);
    ~RuleRun();
    RuleRun(const RuleRun&) = delete;
    RuleRun& operator=(const RuleRun&) = delete;

    // Once.
    [[nodiscard]] RuleResult check();
    // Evaluates once more what is told of the findings of the check, and says why.
    void vReasons(std::vector<RuleFinding>& findings);

private:
    class Work;
    std::unique_ptr<Work> m_pWork;
};

// The same at once, with all reasons.
[[nodiscard]] OXA_CHECK_API RuleResult checkRules(const Program& program, const ifc::Data& data,
                                                  const RuleOptions& options = {});

}   // namespace oxa::check::rules
