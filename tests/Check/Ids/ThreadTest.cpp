// SPDX-License-Identifier: Apache-2.0
// A check on any number of threads: equal results, progress that rises, an end that is asked for.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "../../Model/ModelText.h"
#include "IdsText.h"

namespace oxa {
namespace {

using namespace test;

// Walls with names, some of them with a property of their own or of their type, a material and a storey.
Model walls(int iWalls) {
    std::string sText = "#1=IFCBUILDINGSTOREY('0eA6m4fELI9QBIhP3wiLAp',$,'S',$,$,$,$,$,$,$);\n"
                        "#2=IFCWALLTYPE('3Agm079vPIYBL4JExVrhD5',$,'T',$,$,(#3),$,$,$,.SHEAR.);\n"
                        "#3=IFCPROPERTYSET('0BbkGoC6vPvRW13UT7D8zH',$,'Pset',$,(#4));\n"
                        "#4=IFCPROPERTYSINGLEVALUE('Fire',$,IFCLABEL('F 30'),$);\n#5=IFCMATERIAL('M',$,$);\n";
    std::string sTyped, sMade, sContained;
    for (int i = 0; i < iWalls; ++i) {
        const std::string sId = "#" + std::to_string(100 + i);
        sText += sId + "=IFCWALL($,$,'W" + std::to_string(i) + "',$,$,$,$,$,$);\n";
        if (i % 2 == 0) sTyped += (sTyped.empty() ? "" : ",") + sId;
        if (i % 3 == 0) sMade += (sMade.empty() ? "" : ",") + sId;
        if (i % 5 == 0) sContained += (sContained.empty() ? "" : ",") + sId;
    }
    sText += "#10=IFCRELDEFINESBYTYPE($,$,$,$,(" + sTyped + "),#2);\n#11=IFCRELASSOCIATESMATERIAL($,$,$,$,(" + sMade +
             "),#5);\n#12=IFCRELCONTAINEDINSPATIALSTRUCTURE($,$,$,$,(" + sContained + "),#1);\n";
    return modelOf("IFC4", sText);
}

std::string wanted() {
    return idsFile(
        SpecificationText{.requirements = "<attribute>" + simple("name", "Name") +
                                          restricted("value", "string", "pattern=.*[0-4]") + "</attribute>" +
                                          property("Pset", "Fire", simple("value", "F 30"), "dataType='IFCLABEL'") +
                                          "<material/><partOf>" + entity("IFCBUILDINGSTOREY") + "</partOf>"}
            .text() +
        SpecificationText{.applicability = "<material/>", .occurs = "minOccurs='0' maxOccurs='0'"}.text());
}

TEST(IdsThreads, TheResultDoesNotDependOnThem) {
    const Model model = walls(5000);
    const ids::Requirements read = ids::Requirements::fromBuffer(wanted());
    std::vector<std::string> results;
    for (const unsigned iThreads : {1U, 2U, 7U}) {
        const ids::Result result = ids::check(model, read, {.threads = iThreads});
        results.push_back(sResult(result.specifications[0]) + sResult(result.specifications[1]));
        EXPECT_EQ(result.specifications[0].applicable, 5000U);
        EXPECT_EQ(result.specifications[0].passed,
                  167U);   // every thirtieth
        EXPECT_EQ(result.specifications[1].applicable, 1667U);
    }
    EXPECT_TRUE(results[0] == results[1]);
    EXPECT_TRUE(results[0] == results[2]);
}

TEST(IdsThreads, ProgressRisesToItsTotal) {
    const Model model = walls(3000);
    for (const unsigned iThreads : {1U, 2U}) {
        std::vector<std::uint64_t> counts;
        std::uint64_t iTotal = 0;
        ids::Options options{.threads = iThreads};
        options.progress = [&](const Progress& progress) {
            counts.push_back(progress.done);
            iTotal = progress.total.value_or(0);
        };
        static_cast<void>(ids::check(model, ids::Requirements::fromBuffer(wanted()), options));
        EXPECT_GE(counts.size(), 3U);
        EXPECT_TRUE(std::ranges::is_sorted(counts));
        EXPECT_EQ(counts.front(), 0U);
        EXPECT_EQ(counts.back(), iTotal);
        EXPECT_GE(iTotal, 6000U);
    }
}

TEST(IdsThreads, AnEndThatIsAskedForComes) {
    const Model model = walls(3000);
    for (const unsigned iThreads : {1U, 3U}) {
        std::stop_source stop;
        ids::Options options{.threads = iThreads};
        options.stop = stop.get_token();
        // Of several threads the caller's may come too late for any share.
        options.progress = [&](const Progress& progress) {
            if (progress.done > 0 || iThreads > 1) stop.request_stop();
        };
        EXPECT_EQ(
            sThrown([&] { static_cast<void>(ids::check(model, ids::Requirements::fromBuffer(wanted()), options)); }),
            "Stopped: the check was stopped");
    }
}

TEST(IdsThreads, SeveralChecksAtOnce) {
    const Model model = walls(600);
    const ids::Requirements read = ids::Requirements::fromBuffer(wanted());
    std::vector<std::string> results(3);
    std::vector<std::thread> threads;
    for (std::string& sResultHere : results)
        threads.emplace_back([&] { sResultHere = sResult(ids::check(model, read, {.threads = 2}).specifications[0]); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_TRUE(results[0] == results[1]);
    EXPECT_TRUE(results[0] == results[2]);
    EXPECT_FALSE(results[0].empty());
}

}   // namespace
}   // namespace oxa
