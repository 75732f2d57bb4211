#include "tools/glazelhost/surface/contract_log.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

TEST(ContractLog, SaysNothingWhenNothingWasNoted)
{
    EXPECT_EQ(ContractLog().Summary(), "");
}

TEST(ContractLog, CountsEachKindAndForgetsOnClear)
{
    ContractLog log;
    log.Note(Violation::OutsideLock);
    log.Note(Violation::OutsideLock);
    log.Note(Violation::NullBuffer);
    EXPECT_EQ(log.CountOf(Violation::OutsideLock), 2u);
    EXPECT_EQ(log.Summary(), "samples outside the locked area were asked for (2 times), "
                             "a sample buffer was missing");
    log.Clear();
    EXPECT_EQ(log.Summary(), "");
}

} // namespace GlazelHost
