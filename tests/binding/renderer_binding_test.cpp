#include "binding/renderer_binding.h"

#include "contract/entry_points.h"
#include "platform/runtime/foreign_call.h"
#include "tests/doubles/renderers/renderer_variant.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

using RendererAPI::RendererBinding;

namespace
{

const RecordedCall& LastCall(const Recording& recording)
{
    return recording.calls.at(recording.count - 1);
}

std::size_t CountOf(const Recording& recording, Call call)
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < recording.count; ++i)
    {
        count += recording.calls.at(i).call == call ? 1U : 0U;
    }
    return count;
}

std::vector<const char*> RequiredNames()
{
    std::vector<const char*> names;
    for (const RendererAPI::EntryPointName& entryPoint : RendererAPI::kEntryPoints)
    {
        if (entryPoint.required)
        {
            names.push_back(entryPoint.name);
        }
    }
    return names;
}

// Every forwarder answers what it answers without a library.
void ExpectNotAvailable(const RendererBinding& binding)
{
    FrameBufferDesc frame;
    std::uint8_t bytes[4] = {1, 2, 3, 4};
    EXPECT_FALSE(binding.IsLoaded());
    EXPECT_EQ(binding.RunEditor(&frame, bytes, 4, 1), 0);
    EXPECT_EQ(binding.DoModalUI(&frame, bytes, 4), 0);
    EXPECT_EQ(binding.DoModalUI2(&frame, bytes, 4, 1), 0);
    EXPECT_EQ(binding.DoModalUIWithProfile(&frame, bytes, 4, bytes, 4, 1), 0);
    EXPECT_EQ(binding.RenderFrame(&frame, &frame, bytes, 4, 0x31, 7), -1);
    EXPECT_EQ(binding.LoadSessionFile("x", 0), 0);
    EXPECT_EQ(binding.GetSessionIcon(bytes, 4, &frame), 0);
    EXPECT_EQ(binding.GetSessionDataSize(), 0U);
    EXPECT_EQ(binding.GetSessionData(bytes, 4), 0);
    binding.InterpolateSessionData(bytes, 2, bytes, 2, 0.5, bytes + 2);
    EXPECT_EQ(bytes[2], 3) << "nothing is written";
    EXPECT_EQ(binding.BeginToolChain(), 0);
    EXPECT_EQ(binding.AddToolToChain(1), -1);
    binding.SetToolParameterValue(1, 2, 3.0);
    binding.EnableFeature(1, 1);
    binding.SetTopLevelMaskParameterValue(1, 1.0);
}

} // namespace

TEST(RendererBinding, ANewBindingIsNotLoadedAndAnswersTheFixedValues)
{
    const RendererBinding binding;
    ExpectNotAvailable(binding);
}

TEST(RendererBinding, AMissingLibraryGivesMinusOneOnEveryStart)
{
    RendererBinding binding;
    EXPECT_EQ(binding.Start(3), -1);
    EXPECT_EQ(binding.Start(3), -1);
    ExpectNotAvailable(binding);
}

TEST(RendererBinding, AFailedLoadIsTriedAgainOnTheNextStart)
{
    RendererBinding binding;
    ASSERT_EQ(binding.Start(3), -1);
    UseRenderer(L"complete");
    EXPECT_EQ(binding.Start(3), 0);
    EXPECT_TRUE(binding.IsLoaded());
}

TEST(RendererBinding, EachStartRunsInitRendererWithItsModeAndReturnsItsResult)
{
    Recording& recording = UseRenderer(L"complete");
    RendererBinding binding;
    EXPECT_EQ(binding.Start(3), 0);
    recording.initResult = 42;
    EXPECT_EQ(binding.Start(3), 42);
    EXPECT_EQ(CountOf(recording, Call::InitRenderer), 2U);
    EXPECT_EQ(LastCall(recording).word1, 3U);
    EXPECT_TRUE(binding.IsLoaded()) << "a failed start leaves the library loaded";
    binding.Unload();
    EXPECT_EQ(TakeLoads(), 1) << "by this test: only the first start had loaded it";
}

TEST(RendererBinding, UnloadingTwiceFreesTheLibraryOnce)
{
    UseRenderer(L"complete");
    RendererBinding binding;
    ASSERT_EQ(binding.Start(3), 0);
    binding.Unload();
    binding.Unload();
    EXPECT_EQ(TakeLoads(), 1) << "this test's own is left";
}

TEST(RendererBinding, ALibraryWithoutTheTwoOptionalNamesLoadsAndIsEditedThroughDoModalUI)
{
    Recording& recording = UseRenderer(L"without_optional");
    recording.editorResult = 1;
    RendererBinding binding;
    ASSERT_EQ(binding.Start(3), 0);
    FrameBufferDesc frame;
    const std::uint8_t bytes[2] = {5, 6};
    EXPECT_EQ(binding.RunEditor(&frame, bytes, 2, 1), 1);
    EXPECT_EQ(LastCall(recording).call, Call::DoModalUI);
    EXPECT_EQ(binding.DoModalUI2(&frame, bytes, 2, 1), 0);
    EXPECT_EQ(binding.DoModalUIWithProfile(&frame, bytes, 2, bytes, 2, 1), 0);
    EXPECT_EQ(CountOf(recording, Call::DoModalUI2), 0U);
}

TEST(RendererBinding, ALibraryWithDoModalUI2IsEditedThroughIt)
{
    Recording& recording = UseRenderer(L"complete");
    recording.editorResult = 10;
    RendererBinding binding;
    ASSERT_EQ(binding.Start(3), 0);
    FrameBufferDesc frame;
    const std::uint8_t bytes[2] = {5, 6};
    EXPECT_EQ(binding.RunEditor(&frame, bytes, 2, 1), 10);
    EXPECT_EQ(LastCall(recording).call, Call::DoModalUI2);
    EXPECT_EQ(LastCall(recording).word1, 1U);
    EXPECT_EQ(LastCall(recording).sizeA, 2U);
}

class RendererBindingWithoutOneName : public testing::TestWithParam<const char*>
{
};

TEST_P(RendererBindingWithoutOneName, IsRefusedWithMinusTwoAndAnswersTheFixedValues)
{
    const std::string name = GetParam();
    Recording& recording = UseRenderer(L"without_" + std::wstring(name.begin(), name.end()));
    RendererBinding binding;
    EXPECT_EQ(binding.Start(3), -2);
    EXPECT_EQ(binding.Start(3), -2) << "and tried again";
    ExpectNotAvailable(binding);
    EXPECT_EQ(recording.count, 0U) << "nothing of it was called";
    EXPECT_EQ(TakeLoads(), 1 + 2) << "by this test and by both starts: nothing is freed";
}

INSTANTIATE_TEST_SUITE_P(EachRequiredName, RendererBindingWithoutOneName,
                         testing::ValuesIn(RequiredNames()),
                         [](const auto& name) { return std::string(name.param); });

TEST(RendererBinding, EveryForwarderPassesItsArgumentsOnAndTheResultBack)
{
    Recording& recording = UseRenderer(L"complete");
    recording.renderResult = 77;
    recording.sessionDataSize = 3;
    const std::uint8_t produced[3] = {7, 8, 9};
    recording.sessionData = produced;
    RendererBinding binding;
    ASSERT_EQ(binding.Start(3), 0);
    std::uint32_t sourcePixel = 0xFF010203U;
    std::uint32_t targetPixel = 0;
    FrameBufferDesc source;
    source.format = kFormatBgra8;
    source.pixels = &sourcePixel;
    source.width = source.height = source.rowPitch = 1;
    FrameBufferDesc target = source;
    target.pixels = &targetPixel;
    const std::uint8_t bytes[2] = {5, 6};
    const std::uint8_t other[2] = {15, 16};

    EXPECT_EQ(binding.RenderFrame(&source, &target, bytes, 2, 0x231, -9), 77);
    EXPECT_EQ(targetPixel, 0xFFFEFDFCU);
    EXPECT_EQ(LastCall(recording).word1, 0x231U);
    EXPECT_EQ(LastCall(recording).frameNumber, -9);
    EXPECT_EQ(LastCall(recording).recordA, bytes);

    EXPECT_EQ(binding.LoadSessionFile("x", 4), 1);
    EXPECT_EQ(LastCall(recording).word1, 4U);
    EXPECT_EQ(binding.GetSessionIcon(bytes, 2, &target), 1);
    EXPECT_EQ(LastCall(recording).call, Call::GetSessionIcon);
    EXPECT_EQ(binding.GetSessionDataSize(), 3U);
    std::uint8_t buffer[3] = {};
    EXPECT_EQ(binding.GetSessionData(buffer, 3), 1);
    EXPECT_EQ(buffer[2], 9);

    std::uint8_t blended[2] = {};
    binding.InterpolateSessionData(bytes, 2, other, 2, 0.25, blended);
    EXPECT_EQ(LastCall(recording).recordA, bytes);
    EXPECT_EQ(LastCall(recording).recordB, other);
    EXPECT_EQ(LastCall(recording).sizeB, 2U);
    EXPECT_EQ(LastCall(recording).number, 0.25);

    EXPECT_EQ(binding.DoModalUIWithProfile(&source, bytes, 2, other, 2, 1), 0);
    EXPECT_EQ(LastCall(recording).recordB, other);
    EXPECT_EQ(binding.BeginToolChain(), 11);
    EXPECT_EQ(binding.AddToolToChain(21), 12);
    EXPECT_EQ(LastCall(recording).word1, 21U);
    binding.SetToolParameterValue(1, 2, 3.5);
    EXPECT_EQ(LastCall(recording).word2, 2U);
    EXPECT_EQ(LastCall(recording).number, 3.5);
    binding.EnableFeature(4, 1);
    EXPECT_EQ(LastCall(recording).call, Call::EnableFeature);
    binding.SetTopLevelMaskParameterValue(6, 0.5);
    EXPECT_EQ(LastCall(recording).call, Call::SetTopLevelMaskParameterValue);
}

TEST(RendererBinding, ItsEndRunsExitRendererOnceAndKeepsTheLibraryLoaded)
{
    Recording& recording = UseRenderer(L"complete");
    {
        RendererBinding binding;
        ASSERT_EQ(binding.Start(3), 0);
        ASSERT_EQ(binding.Start(3), 0);
        EXPECT_EQ(CountOf(recording, Call::ExitRenderer), 0U);
    }
    EXPECT_EQ(CountOf(recording, Call::ExitRenderer), 1U);
    EXPECT_NE(::GetModuleHandleA(RendererAPI::kLibraryName), nullptr);
}

TEST(RendererBinding, ABindingThatNeverLoadedDoesNotCallExitRenderer)
{
    Recording& recording = UseRenderer(L"complete");
    {
        RendererBinding binding;
    }
    EXPECT_EQ(recording.count, 0U);
}

TEST(RendererBinding, UnloadingForgetsTheLibraryAndALaterStartFindsItAgain)
{
    UseRenderer(L"complete"); // this reference keeps it in the process
    RendererBinding binding;
    ASSERT_EQ(binding.Start(3), 0);
    binding.Unload();
    ExpectNotAvailable(binding);
    EXPECT_EQ(binding.Start(3), 0);
}

TEST(RendererBinding, WhatTheRendererThrowsComesOutOfEveryForwarder)
{
    Recording& recording = UseRenderer(L"complete");
    RendererBinding binding;
    ASSERT_EQ(binding.Start(3), 0);
    FrameBufferDesc frame;
    std::uint8_t bytes[4]{};
    struct Row
    {
        Call call;
        std::function<void()> forward;
    };
    const Row rows[]{
        {Call::InitRenderer, [&] { binding.Start(3); }},
        {Call::DoModalUI, [&] { binding.DoModalUI(&frame, bytes, 4); }},
        {Call::DoModalUI2, [&] { binding.DoModalUI2(&frame, bytes, 4, 1); }},
        {Call::DoModalUI2, [&] { binding.RunEditor(&frame, bytes, 4, 1); }},
        {Call::DoModalUIWithProfile,
         [&] { binding.DoModalUIWithProfile(&frame, bytes, 4, bytes, 4, 1); }},
        {Call::RenderFrame, [&] { binding.RenderFrame(&frame, &frame, bytes, 4, 0x31, 7); }},
        {Call::LoadSessionFile, [&] { binding.LoadSessionFile("x", 0); }},
        {Call::GetSessionIcon, [&] { binding.GetSessionIcon(bytes, 4, &frame); }},
        {Call::GetSessionDataSize, [&] { binding.GetSessionDataSize(); }},
        {Call::GetSessionData, [&] { binding.GetSessionData(bytes, 4); }},
        {Call::InterpolateSessionData,
         [&] { binding.InterpolateSessionData(bytes, 2, bytes, 2, 0.5, bytes + 2); }},
        {Call::BeginToolChain, [&] { binding.BeginToolChain(); }},
        {Call::AddToolToChain, [&] { binding.AddToolToChain(1); }},
        {Call::SetToolParameterValue, [&] { binding.SetToolParameterValue(1, 2, 3.0); }},
        {Call::EnableFeature, [&] { binding.EnableFeature(1, 1); }},
        {Call::SetTopLevelMaskParameterValue,
         [&] { binding.SetTopLevelMaskParameterValue(1, 1.0); }},
    };
    for (const Row& row : rows)
    {
        recording.throwsFrom = row.call;
        recording.throws = Throws::CppException;
        EXPECT_THROW(row.forward(), std::runtime_error) << static_cast<int>(row.call);
        recording.throws = Throws::OtherCompilers;
        EXPECT_THROW(row.forward(), ForeignException) << static_cast<int>(row.call);
    }
    recording.throws = Throws::Nothing;
}

TEST(RendererBinding, WhatExitRendererThrowsIsDropped)
{
    Recording& recording = UseRenderer(L"complete");
    recording.throwsFrom = Call::ExitRenderer;
    for (const Throws what : kAllThrows)
    {
        recording.throws = what;
        RendererBinding binding;
        ASSERT_EQ(binding.Start(3), 0);
    }
    EXPECT_EQ(CountOf(recording, Call::ExitRenderer), 2U);
}
