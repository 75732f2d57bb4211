// What a look record traces.
#include "binding/session_data.h"
#include "tests/doubles/trace_notes.h"

#include <gtest/gtest.h>

namespace
{

using Notes = std::vector<TraceNote>;

} // namespace

TEST(SessionDataTrace, ANewBlockIsTracedWithItsSize)
{
    SessionData record;
    TraceNotes trace;
    record.AllocateData(20);
    EXPECT_EQ(trace.Take(), Notes{Traced("SessionData::AllocateData  size = %d \n", 20)});
    record.AllocateData(64);
    EXPECT_EQ(trace.Take(), Notes{Traced("SessionData::AllocateData  size = %d \n", 64)});
}

TEST(SessionDataTrace, NothingIsTracedWhereNoBlockIsMade)
{
    SessionData record;
    record.AllocateData(20);
    TraceNotes trace;
    record.AllocateData(20);
    record.GetFlag();
    record.SetFlag(0);
    record.AllocateData(0);
    record.AllocateData(0);
    record.FreeData();
    EXPECT_EQ(trace.Take(), Notes{});
}
