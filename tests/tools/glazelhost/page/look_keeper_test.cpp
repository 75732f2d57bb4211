#include "tools/glazelhost/page/look_keeper.h"

#include "tests/tools/glazelhost/plugin/real_effect.h"
#include "tools/glazelhost/host_error.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace GlazelHost
{

namespace
{

class LookKeepers : public RealEffect
{
protected:
    void Hold(const Record& look) { m_controls.LoadLook(look); }
    static Record BytesOf(const std::string& path)
    {
        std::ifstream file(std::filesystem::path(path), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        Record record(bytes.size());
        std::memcpy(record.data(), bytes.data(), bytes.size());
        return record;
    }

    const LookFile m_origin{R"(C:\looks\day.ccc#shot12)", std::nullopt, true};
};

} // namespace

TEST_F(LookKeepers, AnEffectWithoutALookHasNothingToSave)
{
    LookKeeper keeper(m_controls, std::nullopt);
    EXPECT_FALSE(keeper.HasLook());
    EXPECT_FALSE(keeper.IsUnsaved());
    EXPECT_EQ(keeper.File(), std::nullopt);
    EXPECT_THROW(keeper.Save(m_folder / "none.look", false), HostError);
    EXPECT_FALSE(std::filesystem::exists(m_folder / "none.look"));
}

TEST_F(LookKeepers, AnUnchangedLookIsFoundWhereItCameFrom)
{
    Hold(LookOf(2.0));
    LookKeeper keeper(m_controls, m_origin);
    EXPECT_TRUE(keeper.HasLook());
    EXPECT_FALSE(keeper.IsUnsaved());
    EXPECT_EQ(keeper.File(), m_origin);
}

TEST_F(LookKeepers, AChangedOptionAloneIsSaidToTheRender)
{
    Hold(LookOf(2.0, true));
    LookKeeper keeper(m_controls, m_origin);
    Hold(LookOf(2.0, false));
    LookFile expected = m_origin;
    expected.linear = false;
    EXPECT_EQ(keeper.File(), expected);
    EXPECT_TRUE(keeper.IsUnsaved());
}

TEST_F(LookKeepers, AChangedLookIsInNoFileUntilItIsSaved)
{
    Hold(LookOf(2.0));
    LookKeeper keeper(m_controls, m_origin);
    Hold(LookOf(3.0));
    EXPECT_TRUE(keeper.IsUnsaved());
    EXPECT_EQ(keeper.File(), std::nullopt);
    const std::string path = m_folder / "mine.look";
    keeper.Save(path, false);
    EXPECT_FALSE(keeper.IsUnsaved());
    EXPECT_EQ(keeper.File(), (LookFile{path, std::nullopt, false}));
    EXPECT_EQ(BytesOf(path), LookOf(3.0)) << "the record, as a render reads it";
    Hold(LookOf(4.0));
    EXPECT_TRUE(keeper.IsUnsaved());
    EXPECT_EQ(keeper.File(), std::nullopt);
}

TEST_F(LookKeepers, ItsOwnFileIsReplacedAndNoOtherUnasked)
{
    m_folder.Put("other.look", "somebody's");
    Hold(LookOf(2.0));
    LookKeeper keeper(m_controls, std::nullopt);
    EXPECT_THROW(keeper.Save(m_folder / "other.look", false), HostError);
    EXPECT_EQ(BytesOf(m_folder / "other.look").size(), 10U);
    keeper.Save(m_folder / "mine.look", false);
    Hold(LookOf(3.0));
    keeper.Save(m_folder / "mine.look", false);
    EXPECT_EQ(BytesOf(m_folder / "mine.look"), LookOf(3.0));
    keeper.Save(m_folder / "other.look", true);
    EXPECT_EQ(BytesOf(m_folder / "other.look"), LookOf(3.0));
}

TEST_F(LookKeepers, EveryFileOfItsOwnIsReplaced)
{
    Hold(LookOf(2.0));
    LookKeeper keeper(m_controls, std::nullopt);
    keeper.Save(m_folder / "first.look", false);
    keeper.Save(m_folder / "second.look", false);
    EXPECT_TRUE(keeper.HasWritten(m_folder / "FIRST.look")) << "names differ by letters alone";
    EXPECT_FALSE(keeper.HasWritten(m_folder / "third.look"));
    EXPECT_TRUE(keeper.IsSavedIn(m_folder / "first.look"));
    Hold(LookOf(3.0));
    EXPECT_FALSE(keeper.IsSavedIn(m_folder / "first.look")) << "it holds the look before";
    keeper.Save(m_folder / "first.look", false);
    EXPECT_TRUE(keeper.IsSavedIn(m_folder / "first.look"));
    EXPECT_FALSE(keeper.IsSavedIn(m_folder / "second.look"));
    EXPECT_EQ(BytesOf(m_folder / "first.look"), LookOf(3.0));
}

TEST_F(LookKeepers, AFileThatIsWrittenOverNoLongerHoldsTheFirstLook)
{
    m_folder.Put("mine.look", "");
    Hold(LookOf(2.0, true));
    LookKeeper keeper(m_controls, LookFile{m_folder / "mine.look", std::nullopt, false});
    Hold(LookOf(2.0, false));
    keeper.Save(m_folder / "Mine.look", true);
    Hold(LookOf(2.0, true));
    EXPECT_TRUE(keeper.IsUnsaved());
    EXPECT_EQ(keeper.File(), std::nullopt);
}

TEST_F(LookKeepers, SuggestANameAfterTheLooksOwn)
{
    EXPECT_EQ(LookKeeper(m_controls, m_origin).SuggestedName(), "day.look");
    EXPECT_EQ(LookKeeper(m_controls, std::nullopt).SuggestedName(), "untitled.look");
    EXPECT_EQ(LookKeeper(m_controls, LookFile{R"(C:\a.cc|C:\b.cube)", {}, false}).SuggestedName(),
              "a.look");
}

} // namespace GlazelHost
