#include "tools/glazelhost/project/look_formats.h"

#include "tests/reference_renderer/core/look_fixtures.h"
#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

#include <array>

namespace GlazelHost
{

using namespace ReferenceRenderer;

namespace
{

// The line of an error in wrong usage.
template <typename Operation>
std::string RefusalOf(Operation&& operation)
{
    try
    {
        operation();
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::WrongUsage);
        return error.what();
    }
    return "accepted";
}

std::string LineOf(const std::string& path, const LookToWrite& look)
{
    try
    {
        LookFormatOf(path).make(look);
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::Failed);
        return error.what();
    }
    return "written";
}

// A look to write, of a record of the reference renderer.
class Written
{
public:
    explicit Written(const Look& look)
        : m_record(RecordOf(look)),
          m_prepared(Prepared(look)), m_toWrite{"out.cc",
                                                std::as_bytes(std::span(m_record)),
                                                "Mine",
                                                {},
                                                [this](std::span<Rgb> colours) {
                                                    for (Rgb& colour : colours)
                                                    {
                                                        colour = m_prepared->Grade(colour);
                                                    }
                                                },
                                                "R.dll"}
    {
    }
    LookToWrite& ToWrite() { return m_toWrite; }

private:
    std::vector<std::uint8_t> m_record;
    std::unique_ptr<PreparedLook> m_prepared;
    LookToWrite m_toWrite;
};

Look Clipped()
{
    return CdlLook(Cdl{{1.5F, 1.0F, 1.0F}, {}, {1.0F, 1.0F, 1.0F}, 1.0F});
}

} // namespace

TEST(LookFormats, ALookFileHoldsTheRecordAsItIs)
{
    const std::array record{std::byte{7}, std::byte{0}, std::byte{255}};
    for (const char* path : {"a.look", "C:\\a.b\\c.LOOK", "/x.cube/y.Look"})
    {
        EXPECT_EQ(LookFormatOf(path).make({path, record, "", {}, {}, ""}).bytes,
                  std::string("\x07\0\xFF", 3))
            << path;
        EXPECT_TRUE(LookFormatOf(path).isRecord);
    }
}

TEST(LookFormats, NamesThatPromiseSomethingElseAreRefused)
{
    EXPECT_EQ(RefusalOf([] { LookFormatOf("b.3dl"); }),
              "b.3dl: looks are not written as .3dl; name a file that ends in .look or .cube or "
              ".cc");
    EXPECT_EQ(RefusalOf([] { LookFormatOf("a.look/b"); }),
              "a.look/b: its name does not say what kind of look to write; name a file that ends "
              "in .look or .cube or .cc");
    for (const char* path : {"a.ccc", "a.looks", "a.loo", "a.look.txt", "a.", "", "look"})
    {
        EXPECT_NE(RefusalOf([path] { LookFormatOf(path); }), "accepted") << path;
    }
}

TEST(LookFormats, WhoKeepsAWholeRecordIsRefusedAllOthers)
{
    EXPECT_EQ(RefusalOf([] { CheckIsRecordName("a.look"); }), "accepted");
    EXPECT_EQ(RefusalOf([] { CheckIsRecordName("b.cube"); }),
              "b.cube: looks are not written as .cube here; name a file that ends in .look");
}

TEST(LookFormats, ACubeFileHasTheTitleAndAsManyPointsAsAreAskedFor)
{
    Written look(CubeLook(CubeOf(3, Inverted)));
    look.ToWrite().points = 2;
    const WrittenLook file = LookFormatOf("a.CUBE").make(look.ToWrite());
    EXPECT_EQ(file.bytes, "TITLE \"Mine\"\nLUT_3D_SIZE 2\n1 1 1\n0 1 1\n1 0 1\n0 0 1\n"
                          "1 1 0\n0 1 0\n1 0 0\n0 0 0\n");
    EXPECT_EQ(file.contents, "3D LUT of 2 points a side");
}

TEST(LookFormats, ACorrectionFileHoldsACdlAndSaysWhatItDoesNotSay)
{
    const WrittenLook clamped = LookFormatOf("a.cc").make(Written(Clipped()).ToWrite());
    EXPECT_NE(clamped.bytes.find("<Slope>1.5 1 1</Slope>"), std::string::npos);
    EXPECT_TRUE(clamped.losses.empty());
    Look free = Clipped();
    free.cdlMode = CdlMode::Unclamped;
    const WrittenLook file = LookFormatOf("a.cc").make(Written(free).ToWrite());
    EXPECT_EQ(file.bytes, clamped.bytes);
    ASSERT_EQ(file.losses.size(), 1U);
    EXPECT_NE(file.losses[0].find("--unclamped"), std::string::npos);
}

TEST(LookFormats, ACorrectionFileOfALookWithTablesIsRefused)
{
    Look look = Clipped();
    look.curves = CurvesOf(2, [](double x) { return x; });
    const char* const rest =
        ", and a .cc file holds nothing but a CDL; write a .cube or a .look file";
    EXPECT_EQ(LineOf("a.cc", Written(look).ToWrite()),
              std::string("out.cc: the look has a 1D LUT") + rest);
    look.cube = CubeOf(2, Same);
    EXPECT_EQ(LineOf("a.cc", Written(look).ToWrite()),
              std::string("out.cc: the look has a 1D and a 3D LUT") + rest);
    EXPECT_EQ(LineOf("a.cc", Written(CubeLook(CubeOf(2, Same))).ToWrite()),
              std::string("out.cc: the look has a 3D LUT") + rest);
}

TEST(LookFormats, ACorrectionFileOfAnotherRenderersLookIsRefused)
{
    const std::array record{std::byte{7}};
    EXPECT_EQ(LineOf("a.cc", {"a.cc", record, "", {}, {}, "R.dll"}),
              "a.cc: only R.dll can read the record of this look, and does not say whether it is a "
              "CDL; write a .cube or a .look file");
}

} // namespace GlazelHost
