#include "contract/entry_points.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace RendererAPI;

std::vector<std::string> Names(bool required)
{
    std::vector<std::string> names;
    for (const EntryPointName& entryPoint : kEntryPoints)
    {
        if (entryPoint.required == required)
        {
            names.emplace_back(entryPoint.name);
        }
    }
    return names;
}

} // namespace

TEST(EntryPoints, FourteenMustBeThereAndTwoMayBeMissing)
{
    EXPECT_EQ(Names(true),
              (std::vector<std::string>{"InitRenderer", "ExitRenderer", "DoModalUI", "RenderFrame",
                                        "LoadSessionFile", "GetSessionIcon", "GetSessionDataSize",
                                        "GetSessionData", "InterpolateSessionData",
                                        "BeginToolChain", "AddToolToChain", "SetToolParameterValue",
                                        "EnableFeature", "SetTopLevelMaskParameterValue"}));
    EXPECT_EQ(Names(false), (std::vector<std::string>{"DoModalUI2", "DoModalUIWithProfile"}));
}

TEST(EntryPoints, ThereIsOnePointerForEachName)
{
    EXPECT_EQ(sizeof(EntryPoints), std::size(kEntryPoints) * sizeof(void*));
}
