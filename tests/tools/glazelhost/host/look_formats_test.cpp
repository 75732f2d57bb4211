#include "tools/glazelhost/host/look_formats.h"

#include "tests/tools/glazelhost/io/memory_streams.h"
#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

#include <array>

namespace
{

std::string RefusalOf(const std::string& path)
{
    try
    {
        LookFormatOf(path);
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::WrongUsage);
        return error.what();
    }
    return "accepted";
}

} // namespace

TEST(LookFormats, ALookFileHoldsTheRecordAsItIs)
{
    const std::array record{std::byte{7}, std::byte{0}, std::byte{255}};
    for (const char* path : {"a.look", "C:\\a.b\\c.LOOK", "/x.cube/y.Look"})
    {
        WrittenBytes written;
        MemoryWriter writer(written);
        LookFormatOf(path).write(record, writer);
        EXPECT_EQ(written.content, std::string("\x07\0\xFF", 3)) << path;
    }
}

TEST(LookFormats, NamesThatPromiseSomethingElseAreRefused)
{
    EXPECT_EQ(RefusalOf("b.cube"),
              "b.cube: looks are not written as .cube; name a file that ends in .look");
    EXPECT_EQ(RefusalOf("a.look/b"), "a.look/b: its name does not say what kind of look to write; "
                                     "name a file that ends in .look");
    for (const char* path : {"a.cc", "a.looks", "a.loo", "a.look.txt", "a.", "", "look"})
    {
        EXPECT_NE(RefusalOf(path), "accepted") << path;
    }
}
