// The window of "glazelhost page". Tests: tests/tools/glazelhost/page/page_command_test.cpp.
#pragma once

#include "tools/glazelhost/page/graded_picture.h"
#include "tools/glazelhost/page/look_keeper.h"
#include "tools/glazelhost/page/page_container.h"
#include "tools/glazelhost/page/still_sequence.h"
#include "tools/glazelhost/page/window_layout.h"

#include <windows.h>

#include <optional>
#include <string>

namespace GlazelHost
{

inline constexpr wchar_t kPageWindowClass[] = L"GlazelHostPage";

// Identifiers of its controls.
inline constexpr int kStatusId = 100;
inline constexpr int kSaveLookId = 101;
inline constexpr int kCopyCommandId = 102;

// Of one thread, which handles its messages; what it is made of outlives it.
class PageWindow
{
public:
    struct Options
    {
        std::string picture;                   // path of its file; empty: a test chart
        std::optional<StillSequence> sequence; // that the picture is of, and has command->frame in
        // The command to copy but for output and look; none: there is no file to render.
        std::optional<RepeatedRender> command;
        // Where the look goes when the window closes; none: the user is asked.
        std::optional<std::string> savedLook;
        bool overwrite = false;
        SampleType depth = SampleType::Byte;
        Light light; // of the picture
    };

    PageWindow(Options options, GradedPicture& picture, LookKeeper& keeper,
               EffectControls& controls, PageContainer& page);
    ~PageWindow();
    PageWindow(const PageWindow&) = delete;
    PageWindow& operator=(const PageWindow&) = delete;

    // Shows the window with the page and handles messages until the user has closed it. Once.
    // Throws HostError when the window or the page cannot be shown.
    void Run();
    // Lets the window of this process, if one is open, ask its user and close, as if by its own
    // button. False when none is open. Any thread.
    static bool AskToClose() noexcept;

private:
    static LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam,
                                       LPARAM lParam) noexcept;
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);
    void Open();
    HWND AddControl(const wchar_t* windowClass, const wchar_t* text, DWORD style, int id);
    void AddControls();
    PartHeights Heights() const;
    void Arrange();
    void Paint();
    void OnLookChanged();
    void OnCommand(int id);
    // True when the key steps through the pictures of a sequence; another is shown then.
    bool Step(const MSG& message);
    void ShowPicture(std::int64_t number, bool forwards);
    // The picture, the look and the page.
    void SetTitle() const;
    // False when the user wants the window to stay, or is busy with one that stands over it.
    bool MayClose();
    bool SaveBeforeClosing();
    // After a failure, told in `line`; false when the window is to stay open.
    bool SaveElsewhere(const std::string& line);
    void Close();
    void OnActivate(bool active);
    void SaveLook();
    void CopyCommand();
    // The user's choice of a file for the look; none when the dialog was cancelled.
    std::optional<std::string> AskForLookFile() const;
    void SaveTo(const std::string& path, bool overwrite);
    void Tell(const std::string& text) const;
    void TellLight(); // what the option does for this picture
    // Runs `operation`; a failure is told in a box over the window.
    template <typename Operation>
    void Try(Operation&& operation) noexcept;

    Options m_options;
    GradedPicture& m_picture;
    LookKeeper& m_keeper;
    EffectControls& m_controls;
    PageContainer& m_page;
    const int m_lineHeight;
    HWND m_window = nullptr; // null once it is closed
    HWND m_focus = nullptr;  // the control that gets the keyboard back
    bool m_isOpen = false;   // the page is in it
};

} // namespace GlazelHost
