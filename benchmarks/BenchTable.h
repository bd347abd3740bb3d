// SPDX-License-Identifier: Apache-2.0
// BenchTable: what every benchmark here shares: rounds over rows, medians, one table.
//
// Why      machines are shared and noisy, so figures are ratios within one run: each round runs every row once,
//          one after the other, and a row's figure is the median of its rounds.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace oxa::bench {

struct Row {
    std::string sName;
    std::function<void()> run;       // what is timed
    std::function<void()> prepare;   // what is not; may be empty
    std::vector<double> seconds;

    [[nodiscard]] double median() const {
        std::vector<double> sorted = seconds;
        std::ranges::sort(sorted);
        return sorted[sorted.size() / 2];
    }
};

inline void vRunRounds(std::vector<Row>& rows, int iRounds) {
    for (int iRound = 0; iRound < iRounds; ++iRound)
        for (Row& row : rows) {
            if (row.prepare) row.prepare();
            const auto start = std::chrono::steady_clock::now();
            row.run();
            row.seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        }
}

// Bytes a second of each row, and the ratio to the row that serves as the measure.
inline void vPrintRates(const std::vector<Row>& rows, double bytes, const Row& measure) {
    std::printf("%-36s %10s %10s\n", "", "MB/s", "ratio");
    for (const Row& row : rows)
        std::printf("%-36s %10.1f %10.2f\n", row.sName.c_str(), bytes / 1e6 / row.median(),
                    measure.median() / row.median());
}

}   // namespace oxa::bench
