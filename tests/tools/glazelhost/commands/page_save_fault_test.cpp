// What the page's window does when its user saves the look: every call by which the file is written
// fails in turn.
#include "tools/glazelhost/page/look_keeper.h"

#include "contract/entry_points.h"
#include "tests/tools/glazelhost/commands/io_faults.h"
#include "tests/tools/glazelhost/plugin/real_effect.h"
#include "tools/glazelhost/host_error.h"

#include <set>

namespace GlazelHost
{

namespace
{

class PageSaves : public RealEffect
{
protected:
    struct Saved
    {
        bool isSaid; // not a failure
        std::string content;
        std::vector<IoFaults::Point> reached;
    };

    // Saves another look than the first over a file that is there.
    Saved Save(const std::string& point, std::size_t nth, IoFaults::Kind kind)
    {
        m_folder.Put("mine.look", "old");
        m_controls.LoadLook(m_first);
        LookKeeper keeper(m_controls, std::nullopt);
        m_controls.LoadLook(m_second);
        Saved saved{true, {}, {}};
        IoFaults::Arm(point, nth, kind);
        try
        {
            keeper.Save(m_folder / "mine.look", true);
        }
        catch (const HostError&)
        {
            saved.isSaid = false;
        }
        saved.reached = IoFaults::Disarm();
        EXPECT_EQ(IoFaults::Held(), std::vector<std::string>());
        EXPECT_EQ(keeper.IsUnsaved(), !saved.isSaid);
        EXPECT_EQ(keeper.HasWritten(m_folder / "mine.look"), saved.isSaid);
        const auto names = m_folder.Names();
        EXPECT_EQ(std::set(names.begin(), names.end()), m_names) << "something is left";
        saved.content = m_folder.Content("mine.look");
        return saved;
    }

    const Record m_first = LookOf(2.0);
    const Record m_second = LookOf(3.0);
    const std::set<std::wstring> m_names{L"look.cc", L"mine.look"};
    IoFaults m_faults{::GetModuleHandleA(RendererAPI::kLibraryName)};
};

} // namespace

TEST_F(PageSaves, AtEveryPointWriteTheWholeLookOrLeaveTheOldFileAndTheLookUnsaved)
{
    using Kind = IoFaults::Kind;
    const Saved whole = Save("", 0, Kind::Fails);
    ASSERT_TRUE(whole.isSaid);
    ASSERT_EQ(whole.content.size(), m_second.size());
    std::size_t failures = 0;
    for (const auto& [point, calls] : whole.reached)
    {
        for (std::size_t nth = 1; nth <= calls; ++nth)
        {
            for (const Kind kind : {Kind::Fails, Kind::Stays, Kind::Part, Kind::Nothing})
            {
                SCOPED_TRACE("call " + std::to_string(nth) + " of " + point + ", kind " +
                             std::to_string(static_cast<int>(kind)));
                const Saved saved = Save(point, nth, kind);
                EXPECT_EQ(saved.content, saved.isSaid ? whole.content : "old");
                EXPECT_TRUE(saved.isSaid || kind != Kind::Part) << "the rest was not written";
                failures += saved.isSaid ? 0 : 1;
            }
        }
    }
    EXPECT_GE(failures, 4U) << "naming, writing, flushing and moving can fail";
}

} // namespace GlazelHost
