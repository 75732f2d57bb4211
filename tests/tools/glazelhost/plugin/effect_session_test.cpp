#include "tools/glazelhost/plugin/effect_session.h"

#include "tests/tools/glazelhost/plugin/fake_effect.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/plugin/effect_controls.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <functional>
#include <optional>

namespace GlazelHost
{

namespace
{

class EffectSessions : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const HMODULE module = ::GetModuleHandleW(L"fake_effect.dll");
        m_setBehaviour =
            std::bit_cast<SetBehaviourFunction*>(::GetProcAddress(module, "SetBehaviour"));
        m_notes = std::bit_cast<GetNotesFunction*>(::GetProcAddress(module, "GetNotes"))();
        *m_notes = {};
        Behave(Behaviour::Inverts);
    }

    void Behave(Behaviour behaviour) { m_setBehaviour(static_cast<std::int32_t>(behaviour)); }

    PluginModule m_plugin{ProgramFolder() + "\\fake_effect.dll"};
    FakeEffectNotes* m_notes = nullptr;

private:
    SetBehaviourFunction* m_setBehaviour = nullptr;
};

Image Picture(int width, int height, SampleType type = SampleType::Byte)
{
    Image image{width, height, type, true, {}};
    image.pixels.resize(image.RowBytes() * static_cast<std::size_t>(height));
    for (std::size_t index = 0; index < image.pixels.size(); ++index)
    {
        image.pixels[index] = static_cast<std::byte>(index * 7);
    }
    return image;
}

// The line of the HostError that `operation` throws.
std::string ErrorOf(const std::function<void()>& operation)
{
    try
    {
        operation();
    }
    catch (const HostError& error)
    {
        return error.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

std::string RenderErrorOf(EffectSession& session)
{
    return ErrorOf([&session] {
        Image output;
        session.Render(Picture(4, 3), output, {});
    });
}

bool Says(const std::string& line, const char* part)
{
    return line.find(part) != std::string::npos;
}

} // namespace

TEST_F(EffectSessions, APictureGoesThroughTheEffectRowByRow)
{
    EffectSession session(m_plugin);
    const Image input = Picture(5, 4);
    Image output;
    session.Render(input, output, {});
    ASSERT_EQ(output.pixels.size(), input.pixels.size());
    EXPECT_EQ(output.width, 5);
    EXPECT_TRUE(output.hasAlpha);
    for (std::size_t index = 0; index < input.pixels.size(); ++index)
    {
        const bool isAlpha = index % 4 == 3;
        EXPECT_EQ(output.pixels[index], isAlpha ? input.pixels[index] : ~input.pixels[index])
            << index;
    }
}

TEST_F(EffectSessions, ThePictureThatIsRenderedStaysAsItWas)
{
    EffectSession session(m_plugin);
    const Image input = Picture(5, 4, SampleType::Float);
    Image output;
    session.Render(input, output, {});
    EXPECT_EQ(input.pixels, Picture(5, 4, SampleType::Float).pixels);
    EXPECT_NE(output.pixels, input.pixels);
}

TEST_F(EffectSessions, BottomUpSurfacesGiveTheSamePictureWithANegativePitch)
{
    Image topDown;
    Image bottomUp;
    EffectSession(m_plugin).Render(Picture(5, 4), topDown, {});
    EXPECT_EQ(m_notes->inputPitch, 20);
    EffectSession(m_plugin, {.bottomUp = true}).Render(Picture(5, 4), bottomUp, {});
    EXPECT_EQ(m_notes->inputPitch, -20);
    EXPECT_EQ(topDown.pixels, bottomUp.pixels);
}

TEST_F(EffectSessions, TheSurfacesFormatFollowsTheSamples)
{
    Image output;
    EffectSession(m_plugin).Render(Picture(5, 4), output, {});
    EXPECT_EQ(m_notes->inputFormat, DWORD{DXPF_ARGB32});
    EffectSession(m_plugin, {.premultiplied = true}).Render(Picture(5, 4), output, {});
    EXPECT_EQ(m_notes->inputFormat, DWORD{DXPF_PMARGB32});
    EffectSession(m_plugin, {.premultiplied = true})
        .Render(Picture(5, 4, SampleType::Float), output, {});
    EXPECT_EQ(m_notes->inputFormat, DWORD{DXPF_NONSTANDARD});
    EXPECT_EQ(m_notes->inputPitch, 80);
    EXPECT_EQ(output.type, SampleType::Float);
}

TEST_F(EffectSessions, SurfacesAreReusedWhileTheSizeStays)
{
    EffectSession session(m_plugin);
    Image output;
    session.Render(Picture(5, 4), output, {});
    session.Render(Picture(5, 4), output, {});
    EXPECT_EQ(m_notes->setups, 1);
    session.Render(Picture(4, 5), output, {});
    EXPECT_EQ(m_notes->setups, 2);
    EXPECT_EQ(output.height, 5);
}

TEST_F(EffectSessions, EachFrameCarriesItsInformation)
{
    EffectSession session(m_plugin);
    Image output;
    session.Render(Picture(5, 4), output, {1.25, 24.0, 416'667});
    EXPECT_EQ(m_notes->pixelAspect, 1.25);
    EXPECT_EQ(m_notes->framesPerSecond, 24.0);
    EXPECT_EQ(m_notes->frameTime, 416'667);
    session.Render(Picture(5, 4), output, {1.25, 24.0, 833'333});
    EXPECT_EQ(m_notes->frameTime, 833'333);
}

TEST_F(EffectSessions, TheLookArrivesWholeAndFromItsFirstByte)
{
    EffectSession session(m_plugin);
    std::vector<std::byte> record(131072, std::byte{1});
    record[0] = std::byte{42};
    EffectControls(session.Effect(), {}).LoadLook(record);
    EXPECT_EQ(m_notes->loadedBytes, 131072u);
    EXPECT_EQ(m_notes->firstByte, 42u);
}

TEST_F(EffectSessions, TheEffectIsGoneWithItsSession)
{
    {
        EffectSession session(m_plugin);
        EXPECT_EQ(m_notes->liveEffects, 1);
    }
    EXPECT_EQ(m_notes->liveEffects, 0);
}

TEST_F(EffectSessions, AFailureIsSaidInWords)
{
    EffectSession session(m_plugin);
    Behave(Behaviour::FailsInExecute);
    EXPECT_TRUE(Says(RenderErrorOf(session), "not set up yet (0x887A0001)"));
    Behave(Behaviour::Inverts);
    Image output;
    session.Render(Picture(4, 3), output, {}); // the session lives on
}

TEST_F(EffectSessions, ARefusedSetUpIsTriedAgainForTheNextFrame)
{
    EffectSession session(m_plugin);
    Behave(Behaviour::FailsInSetup);
    EXPECT_TRUE(Says(RenderErrorOf(session), "refused its surfaces"));
    Behave(Behaviour::Inverts);
    Image output;
    session.Render(Picture(4, 3), output, {});
    EXPECT_EQ(m_notes->setups, 1);
}

TEST_F(EffectSessions, AnOutputThatWasNotWrittenIsAnError)
{
    EffectSession session(m_plugin);
    Behave(Behaviour::WritesNothing);
    EXPECT_TRUE(Says(RenderErrorOf(session), "wrote no picture"));
}

TEST_F(EffectSessions, AMessageBoxBecomesAnErrorWithItsText)
{
    EffectSession session(m_plugin);
    Behave(Behaviour::ShowsABox);
    EXPECT_TRUE(Says(RenderErrorOf(session), "message box: \"out of film\""));
}

TEST_F(EffectSessions, AWriteOutsideTheLockIsReportedAndDoesNotHappen)
{
    EffectSession session(m_plugin);
    Behave(Behaviour::WritesOutside);
    const std::string line = RenderErrorOf(session);
    EXPECT_TRUE(Says(line, "output surface: samples outside the locked area")) << line;
}

TEST_F(EffectSessions, MemoryOverwrittenBehindTheSurfaceIsReported)
{
    EffectSession session(m_plugin);
    Behave(Behaviour::OverrunsMemory);
    EXPECT_TRUE(Says(RenderErrorOf(session), "memory before or after the surface"));
}

TEST_F(EffectSessions, ALockThatIsKeptIsReported)
{
    EffectSession session(m_plugin);
    Behave(Behaviour::KeepsItsLock);
    EXPECT_TRUE(Says(RenderErrorOf(session), "lock was not released"));
}

TEST_F(EffectSessions, AnEffectThatIsNotCreatedIsSaidInWords)
{
    Behave(Behaviour::FailsInCreation);
    EXPECT_TRUE(
        Says(ErrorOf([this] { const EffectSession session(m_plugin); }), "was not created"));
}

TEST_F(EffectSessions, AMessageBoxOfTheCreationIsTheError)
{
    Behave(Behaviour::ShowsABoxInCreation);
    EXPECT_TRUE(Says(ErrorOf([this] { const EffectSession session(m_plugin); }),
                     "message box: \"no hardware\""));
}

TEST_F(EffectSessions, ALibraryThatIsNoComServerIsNoPlugin)
{
    const std::string path = ProgramFolder() + "\\libraries\\needs_neighbour.dll";
    EXPECT_TRUE(Says(ErrorOf([&path] { const PluginModule plugin(path); }), "not a COM server"));
}

TEST_F(EffectSessions, AMissingPluginIsNamed)
{
    EXPECT_TRUE(Says(ErrorOf([] { const PluginModule plugin("nowhere.dll"); }),
                     "nowhere.dll: there is no such file"));
}

} // namespace GlazelHost
