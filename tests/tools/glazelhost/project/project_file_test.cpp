#include "tools/glazelhost/project/project_file.h"

#include "tests/tools/glazelhost/plugin/real_effect.h"
#include "tools/glazelhost/media/file_stream.h"

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
        m_controls.LoadLook(AnyRecord(100, 1, false));
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
        m_controls.LoadLook(AnyRecord(60, 9));
        return OpenProject(Path(), m_controls);
    }

    std::string OpenError()
    {
        return ErrorOf([this] { Open(); });
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
    m_controls.LoadLook(AnyRecord(131072, 7));
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

TEST_F(ProjectFiles, ANewerProjectIsSaidToBeNewerAndIsKept)
{
    m_folder.Put("a.glz", R"({"format":"glazelhost project","version":2})");
    EXPECT_TRUE(Says(OpenError(), "newer version"));
    ExpectKept();
}

TEST_F(ProjectFiles, ALookOfAnotherEffectIsNotGivenToThisOne)
{
    m_folder.Put("a.glz", TextOf(StoredProject{
                              "{A06D6A22-9A2F-4D28-8E4B-0C7A83B2B3F0}", AnyRecord(100, 1), {}}));
    EXPECT_TRUE(Says(OpenError(), "another effect"));
    EXPECT_EQ(m_controls.StoredLook(), AnyRecord(60, 9));
}

TEST_F(ProjectFiles, AFileBeyondAllProjectsIsNotReadWhole)
{
    Save(Sample());
    m_folder.Put("a.glz", m_folder.Content("a.glz") + std::string(std::size_t{257} << 20, ' '));
    EXPECT_TRUE(Says(OpenError(), "not a project"));
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
    EXPECT_GT(refused, whole.size() / 7 * 9 / 10) << "all but the white space";
}

TEST_F(ProjectFiles, ACutFileIsDamagedAndIsKept)
{
    Save(Sample());
    const std::string whole = m_folder.Content("a.glz");
    for (const std::size_t size : {whole.size() / 4, whole.size() / 2, whole.size() - 2})
    {
        m_folder.Put("a.glz", whole.substr(0, size));
        EXPECT_TRUE(Says(OpenError(), "damaged")) << size;
        ExpectKept();
    }
}

} // namespace GlazelHost
