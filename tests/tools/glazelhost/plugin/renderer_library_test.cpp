#include "tools/glazelhost/plugin/renderer_library.h"

#include "tests/doubles/renderers/renderer_variant.h"
#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

namespace GlazelHost
{

namespace
{

std::string Variant(const std::string& name)
{
    return ProgramFolder() + "\\renderers\\" + name;
}

std::string RequireError(const RendererLibrary& renderer)
{
    try
    {
        renderer.Require();
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::Failed);
        return error.what();
    }
    return {};
}

} // namespace

TEST(RendererLibrary, ACompleteRendererIsUsable)
{
    const RendererLibrary renderer(Variant("complete"));
    EXPECT_TRUE(renderer.State().IsUsable());
    EXPECT_TRUE(renderer.State().absentOptions.empty());
    EXPECT_EQ(RequireError(renderer), "");
}

TEST(RendererLibrary, TheFileIsTheOneInTheNamedFolderAndThePlainNameFindsIt)
{
    const RendererLibrary renderer(Variant("complete"));
    EXPECT_NE(renderer.State().path.find("renderers\\complete\\GZ3Renderer_x64.dll"),
              std::string::npos);
    const HMODULE found = ::LoadLibraryA(RendererAPI::kLibraryName);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(PathOfModule(found), renderer.State().path);
    ::FreeLibrary(found);
}

TEST(RendererLibrary, OptionalEntryPointsMayBeAbsent)
{
    const RendererLibrary renderer(Variant("without_optional"));
    EXPECT_TRUE(renderer.State().IsUsable());
    EXPECT_EQ(renderer.State().absentOptions,
              (std::vector<std::string>{"DoModalUI2", "DoModalUIWithProfile"}));
}

TEST(RendererLibrary, AMissingRequiredEntryPointIsNamed)
{
    const RendererLibrary renderer(Variant("without_GetSessionIcon"));
    EXPECT_FALSE(renderer.State().IsUsable());
    EXPECT_EQ(renderer.State().missingEntryPoints, std::vector<std::string>{"GetSessionIcon"});
    EXPECT_NE(RequireError(renderer).find("GetSessionIcon"), std::string::npos);
}

TEST(RendererLibrary, AnEmptyFolderHasNoRenderer)
{
    const RendererLibrary renderer(ProgramFolder() + "\\libraries");
    EXPECT_EQ(renderer.State().library.problem, LibraryProblem::NotFound);
    EXPECT_NE(RequireError(renderer).find("GZ3Renderer_x64.dll: there is no such file"),
              std::string::npos);
}

TEST(RendererLibrary, TheFileAloneTellsWhatLoadingItTells)
{
    const std::string folders[]{Variant("complete"), Variant("without_optional"),
                                Variant("without_GetSessionIcon"), ProgramFolder() + "\\libraries"};
    for (const std::string& folder : folders)
    {
        const RendererState file = StateOfRendererFile(folder);
        EXPECT_EQ(::GetModuleHandleA(RendererAPI::kLibraryName), nullptr) << "it was loaded";
        const RendererLibrary renderer(folder);
        EXPECT_EQ(file.path, renderer.State().path);
        EXPECT_EQ(file.version, renderer.State().version);
        EXPECT_EQ(file.library.problem, renderer.State().library.problem);
        EXPECT_EQ(file.library.why, renderer.State().library.why);
        EXPECT_EQ(file.missingEntryPoints, renderer.State().missingEntryPoints);
        EXPECT_EQ(file.absentOptions, renderer.State().absentOptions);
    }
}

TEST(RendererLibrary, ARendererThatDoesNotStartSaysWhatItAnswered)
{
    RendererLibrary renderer(Variant("init_fails"));
    try
    {
        renderer.Start();
        FAIL() << "it started";
    }
    catch (const HostError& error)
    {
        EXPECT_NE(std::string(error.what()).find("InitRenderer answered 5"), std::string::npos);
    }
}

TEST(RendererLibrary, ARecordThatTheRendererDoesNotCopyOutIsNoLook)
{
    const RendererLibrary renderer(Variant("complete"));
    Recording& recording = UseRenderer(L"complete");
    const std::array<std::uint8_t, 24> record{1, 2, 3};
    recording.sessionData = record.data();
    recording.sessionDataSize = record.size();
    const auto import = [&] { return renderer.ImportLook("warm.cube", 0).record; };
    EXPECT_EQ(import().size(), record.size());

    recording.sessionDataResult = 0;
    try
    {
        import();
        FAIL() << "bytes that nobody wrote were taken for a look";
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::Failed);
        EXPECT_EQ(std::string(error.what()),
                  "warm.cube: the renderer imported this look but does not hand it out "
                  "(GetSessionData answered 0); use another renderer for this look");
    }
    recording.Reset();
    ::FreeLibrary(::GetModuleHandleA(RendererAPI::kLibraryName)); // as UseRenderer loaded it
}

} // namespace GlazelHost
