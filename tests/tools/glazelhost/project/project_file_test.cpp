#include "contract/class_ids.h"
#include "tools/glazelhost/project/project_file.h"

#include "tests/tools/glazelhost/plugin/real_effect.h"
#include "tools/glazelhost/media/file_stream.h"
#include "tools/glazelhost/project/compound_document.h"
#include "tools/glazelhost/project/project_description.h"

#include <span>

namespace GlazelHost
{

namespace
{

class ProjectFiles : public RealEffect
{
protected:
    std::string Path() const { return m_folder / "a.glz"; }

    Project Sample()
    {
        m_session->LoadLook(AnyRecord(100, 1, false));
        Project project{Ease::Smooth, {}};
        project.keyframes.push_back({ParseKeyTime("0f").value(), AnyRecord(100, 1, false)});
        project.keyframes.push_back({ParseKeyTime("2.5").value(), AnyRecord(5000, 2)});
        return project;
    }

    void Save(const Project& project, bool overwrite = false)
    {
        SaveProject(Path(), overwrite, project, m_controls);
    }

    // By an effect that holds something else.
    Project Open()
    {
        m_session->LoadLook(AnyRecord(60, 9));
        return OpenProject(Path(), m_controls);
    }

    std::string OpenError()
    {
        return ErrorOf([this] { Open(); });
    }

    // A document of our own making: whoever calls decides what is wrong with it.
    void Put(const CompoundDocument& document)
    {
        const auto bytes = document.Bytes();
        m_folder.Put("a.glz", {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }

    static void Describe(const CompoundDocument& document, const std::string& text)
    {
        WriteStream(document.Root(), L"Project", std::as_bytes(std::span(text)));
    }

    // Saving over what is there is refused, and nothing is changed.
    void ExpectKept()
    {
        const std::string before = m_folder.Content("a.glz");
        EXPECT_TRUE(Says(ErrorOf([this] { Save(Sample(), true); }), "it is not replaced"));
        EXPECT_TRUE(Says(ErrorOf([this] { Save(Sample(), false); }), "exists already"));
        EXPECT_TRUE(m_folder.Content("a.glz") == before);
    }
};

} // namespace

TEST_F(ProjectFiles, HoldTheLookAndTheKeyframes)
{
    Save(Sample());
    const Project project = Open();
    EXPECT_EQ(m_controls.StoredLook(), AnyRecord(100, 1, false));
    EXPECT_EQ(project.ease, Ease::Smooth);
    ASSERT_EQ(project.keyframes.size(), 2U);
    EXPECT_EQ(project.keyframes[0].time, ParseKeyTime("0f"));
    EXPECT_EQ(project.keyframes[0].record, AnyRecord(100, 1, false));
    EXPECT_EQ(project.keyframes[1].time, ParseKeyTime("2.5"));
    EXPECT_EQ(project.keyframes[1].record, AnyRecord(5000, 2));
    EXPECT_EQ(m_folder.Names().size(), 1U) << "no temporary file";
}

TEST_F(ProjectFiles, MayHoldNoKeyframesAndNoLook)
{
    Save({});
    EXPECT_TRUE(OpenProject(Path(), m_controls).keyframes.empty());
    EXPECT_TRUE(m_controls.StoredLook().empty());
    m_session->LoadLook(AnyRecord(131072, 7));
    Save({}, true);
    EXPECT_TRUE(Open().keyframes.empty());
    EXPECT_EQ(m_controls.StoredLook(), AnyRecord(131072, 7));
}

TEST_F(ProjectFiles, AreReplacedOnlyWhenThatIsWanted)
{
    Save(Sample());
    EXPECT_TRUE(Says(ErrorOf([this] { Save({}); }), "exists already"));
    EXPECT_EQ(Open().keyframes.size(), 2U);
    Save({}, true);
    EXPECT_TRUE(Open().keyframes.empty());
}

TEST_F(ProjectFiles, ARecordThatTheEffectWouldNotStoreIsRefused)
{
    Project project = Sample();
    project.keyframes[1].record = AnyRecord(131073, 2);
    const std::string line = ErrorOf([&] { Save(project); });
    EXPECT_TRUE(Says(line, "keyframe at 2.5") && Says(line, "131073") && Says(line, "131072"))
        << line;
    EXPECT_TRUE(m_folder.Names().empty());
    project.keyframes[1].record.resize(131072);
    Save(project);
    EXPECT_EQ(Open().keyframes[1].record.size(), 131072U);
}

TEST_F(ProjectFiles, AFileOfAnotherKindIsNoProjectAndIsKept)
{
    m_folder.Put("a.glz", "hello");
    EXPECT_TRUE(Says(OpenError(), "not a project"));
    ExpectKept();
    m_folder.Put("a.glz", "");
    EXPECT_TRUE(Says(OpenError(), "not a project"));
    ExpectKept();
}

TEST_F(ProjectFiles, ADocumentOfAnotherProgramIsNoProjectAndIsKept)
{
    const CompoundDocument document;
    WriteStream(document.Root(), L"WordDocument", AnyRecord(9000, 1));
    Put(document);
    EXPECT_TRUE(Says(OpenError(), "not a project"));
    ExpectKept();
}

TEST_F(ProjectFiles, ANewerProjectIsSaidToBeNewerAndIsKept)
{
    const CompoundDocument document;
    Describe(document, R"({"format":"glazelhost project","version":2})");
    Put(document);
    EXPECT_TRUE(Says(OpenError(), "newer version"));
    ExpectKept();
}

TEST_F(ProjectFiles, AMissingPartIsDamage)
{
    ProjectDescription description;
    description.keys.resize(1);
    const CompoundDocument withoutKeyframes;
    Describe(withoutKeyframes, TextOf(description));
    Put(withoutKeyframes);
    EXPECT_TRUE(Says(OpenError(), "damaged: the keyframe at 0f"));
    ExpectKept();

    const CompoundDocument withoutEffect;
    Describe(withoutEffect, TextOf(ProjectDescription()));
    Put(withoutEffect);
    EXPECT_TRUE(Says(OpenError(), "damaged: the effect's look"));

    const CompoundDocument withoutContents;
    Describe(withoutContents, TextOf(ProjectDescription()));
    ::WriteClassStg(CreateStorage(withoutContents.Root(), L"Effect"), CLSID_Plugin);
    Put(withoutContents);
    EXPECT_TRUE(Says(OpenError(), "damaged: the effect's look"));
}

TEST_F(ProjectFiles, ALookOfAnotherEffectIsNotGivenToThisOne)
{
    const CompoundDocument document;
    Describe(document, TextOf(ProjectDescription()));
    ::WriteClassStg(CreateStorage(document.Root(), L"Effect"), CLSID_PluginPP);
    Put(document);
    EXPECT_TRUE(Says(OpenError(), "another effect"));
    EXPECT_EQ(m_controls.StoredLook(), AnyRecord(60, 9));
}

TEST_F(ProjectFiles, ADamagedFileNeverGivesAnythingElseThanWhatWasSaved)
{
    Save(Sample());
    const std::string whole = m_folder.Content("a.glz");
    const Project saved = Open();
    const Record look = m_controls.StoredLook();
    std::size_t refused = 0;
    for (std::size_t offset = 0; offset < whole.size(); offset += 7)
    {
        std::string damaged = whole;
        damaged[offset] = static_cast<char>(damaged[offset] ^ (1 << offset % 8));
        m_folder.Put("a.glz", damaged);
        try
        {
            const Project project = Open();
            EXPECT_EQ(m_controls.StoredLook(), look) << offset;
            EXPECT_EQ(project.ease, saved.ease) << offset;
            ASSERT_EQ(project.keyframes.size(), saved.keyframes.size()) << offset;
            for (std::size_t key = 0; key < saved.keyframes.size(); ++key)
            {
                EXPECT_EQ(project.keyframes[key].time, saved.keyframes[key].time) << offset;
                EXPECT_EQ(project.keyframes[key].record, saved.keyframes[key].record) << offset;
            }
        }
        catch (const HostError&)
        {
            ++refused;
        }
    }
    EXPECT_GT(refused, whole.size() / 7 / 3) << "most of the file is the looks";
}

TEST_F(ProjectFiles, ACutFileIsDamagedAndIsKept)
{
    Save(Sample());
    const std::string whole = m_folder.Content("a.glz");
    for (const std::size_t size : {whole.size() / 4, whole.size() / 2, whole.size() - 512})
    {
        m_folder.Put("a.glz", whole.substr(0, size));
        EXPECT_TRUE(Says(OpenError(), "damaged")) << size;
        ExpectKept();
    }
}

} // namespace GlazelHost
