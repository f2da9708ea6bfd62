// What the database does, counted: the same on every machine, however busy it is.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>

namespace korvel::media {

// Counts in all databases that are opened while it lives and closed before it goes. One at a time.
class StatementCount {
public:
    StatementCount();
    ~StatementCount();
    StatementCount(const StatementCount&) = delete;
    StatementCount& operator=(const StatementCount&) = delete;

    // Begins again at zero.
    void Reset();
    // Statements that have run to their end.
    std::uint64_t Statements() const;
    // Steps of SQLite's machine in them: some for each row that is looked at, whether it is found or not.
    std::uint64_t Steps() const;
};

// EXPECTs that `run(amount, count)`, which does something `amount` times in a new database, costs as much for
// each of many as for each of few; what comes before its last count.Reset() is not counted. What looks
// through all that is there for each one costs eight times as much.
template <typename Run>
void ExpectSameCostForEach(const Run& run) {
    constexpr std::uint32_t kFew = 500;
    constexpr std::uint32_t kMany = 8 * kFew;
    StatementCount count;
    run(kFew, count);
    const std::uint64_t statements = count.Statements();
    const std::uint64_t steps = count.Steps();
    count.Reset();
    run(kMany, count);
    EXPECT_GT(steps, 0u);
    EXPECT_LE(count.Statements(), 8 * statements);
    EXPECT_LT(count.Steps(), 10 * steps);
}

} // namespace korvel::media
