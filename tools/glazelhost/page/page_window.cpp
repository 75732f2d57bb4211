#include "tools/glazelhost/page/page_window.h"

#include "support/win32/clipboard_text.h"
#include "support/win32/utf8.h"
#include "support/win32/window_glue.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/light_choice.h"
#include "tools/glazelhost/media/windows_path.h"
#include "tools/glazelhost/page/page_site.h"
#include "tools/glazelhost/page/unix_shell.h"
#include "tools/glazelhost/plugin/look.h"
#include "tools/glazelhost/windows_text.h"

#include <commdlg.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <new>
#include <utility>

namespace GlazelHost
{

namespace
{

constexpr UINT kLookChanged = WM_APP;
constexpr DWORD kStyle = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN;
constexpr COLORREF kSurround = RGB(32, 32, 32); // dark, so that it does not tint the eye
constexpr wchar_t kCaption[] = L"glazelhost";

std::atomic<HWND> openWindow = nullptr; // of this process

HINSTANCE ThisProgram() noexcept
{
    return ::GetModuleHandleW(nullptr);
}

[[noreturn]] void ThrowWindowError(const std::string& what)
{
    throw HostError("the window", what + ": " + WindowsErrorText(::GetLastError()),
                    "run it where windows can be shown");
}

// Of the controls. Some systems make it larger for a display of more dots, although they were told
// that this program does not know of those.
HFONT BarFont() noexcept
{
    return static_cast<HFONT>(::GetStockObject(DEFAULT_GUI_FONT));
}

int LineHeightOf(HFONT font) noexcept
{
    const HDC screen = ::GetDC(nullptr);
    const HGDIOBJ before = ::SelectObject(screen, font);
    TEXTMETRICW facts{};
    ::GetTextMetricsW(screen, &facts);
    ::SelectObject(screen, before);
    ::ReleaseDC(nullptr, screen);
    return static_cast<int>(facts.tmHeight);
}

ATOM RegisterWindowClass(WNDPROC procedure)
{
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof windowClass;
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = ThisProgram();
    windowClass.hIcon = ::LoadIconW(nullptr, IDI_APPLICATION);
    windowClass.hCursor = ::LoadCursorW(nullptr, IDC_ARROW);
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    windowClass.lpszClassName = kPageWindowClass;
    return ::RegisterClassExW(&windowClass);
}

Geometry::Extent WorkArea()
{
    RECT area{};
    ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
    return {area.right - area.left, area.bottom - area.top};
}

// Without its old pixels: they may show what stood over it.
void MoveTo(HWND control, const Geometry::Rect& place)
{
    ::SetWindowPos(control, nullptr, place.left, place.top, place.width, place.height,
                   SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
}

std::string NameOf(const std::string& path)
{
    return path.substr(path.find_last_of("\\/") + 1);
}

// The front window of this thread that takes input, for EnumThreadWindows.
BOOL CALLBACK FindBusyWindow(HWND window, LPARAM found) noexcept
{
    const bool isTool = (::GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOOLWINDOW) != 0;
    if (isTool || !::IsWindowVisible(window) || !::IsWindowEnabled(window))
    {
        return TRUE;
    }
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

// What the user has open over `disabled`, a window of this thread. The look editor is not owned by
// it, so it is none of its popups.
HWND BusyWindow(HWND disabled) noexcept
{
    HWND found = ::GetLastActivePopup(disabled);
    ::EnumThreadWindows(::GetCurrentThreadId(), FindBusyWindow, reinterpret_cast<LPARAM>(&found));
    return found;
}

// "A|B" is two files.
std::string UnixLook(const std::string& look)
{
    const std::size_t bar = look.find('|');
    const std::string first = UnixPath(look.substr(0, bar));
    return bar == std::string::npos ? first : first + "|" + UnixLook(look.substr(bar + 1));
}

// For the prompt that this program was started from.
std::string CommandLine(RepeatedRender render)
{
    const std::optional<std::string> program = UnixCommand();
    if (!program)
    {
        return CommandText(render);
    }
    for (std::string* const path :
         {&render.image, &render.output, &render.tools.rendererFolder, &render.tools.plugin})
    {
        *path = path->empty() ? "" : UnixPath(*path);
    }
    render.look.path = UnixLook(render.look.path);
    return CommandText(render, {true, *program});
}

void DrawPicture(HDC dc, const GradedPicture& picture, const Geometry::Rect& place)
{
    BITMAPINFO bitmap{};
    bitmap.bmiHeader.biSize = sizeof bitmap.bmiHeader;
    bitmap.bmiHeader.biWidth = picture.Size().width;
    bitmap.bmiHeader.biHeight = -picture.Size().height; // top-down
    bitmap.bmiHeader.biPlanes = 1;
    bitmap.bmiHeader.biBitCount = 32;
    ::SetStretchBltMode(dc, HALFTONE);
    ::SetBrushOrgEx(dc, 0, 0, nullptr); // as HALFTONE asks for
    ::StretchDIBits(dc, place.left, place.top, place.width, place.height, 0, 0,
                    picture.Size().width, picture.Size().height, picture.Pixels().data(), &bitmap,
                    DIB_RGB_COLORS, SRCCOPY);
}

} // namespace

template <typename Operation>
void PageWindow::Try(Operation&& operation) noexcept
{
    try
    {
        try
        {
            std::forward<Operation>(operation)();
        }
        catch (const std::bad_alloc&)
        {
            ::MessageBoxW(m_window, L"There is not enough memory; use a smaller picture.", kCaption,
                          MB_OK | MB_ICONERROR);
        }
        catch (const std::exception& error)
        {
            ::MessageBoxW(m_window, Wide(error.what()).c_str(), kCaption, MB_OK | MB_ICONERROR);
        }
    }
    catch (...)
    {
        // No memory even for the words of the failure.
        ::MessageBoxW(m_window, L"This failed for lack of memory.", kCaption, MB_OK | MB_ICONERROR);
    }
}

PageWindow::PageWindow(Options options, GradedPicture& picture, LookKeeper& keeper,
                       EffectControls& controls, PageContainer& page)
    : m_options(std::move(options)), m_picture(picture), m_keeper(keeper), m_controls(controls),
      m_page(page), m_lineHeight(LineHeightOf(BarFont()))
{
}

PageWindow::~PageWindow()
{
    if (m_window != nullptr)
    {
        Try([this] { Close(); });
    }
}

bool PageWindow::AskToClose() noexcept
{
    const HWND window = openWindow;
    return window != nullptr && ::PostMessageW(window, WM_CLOSE, 0, 0);
}

// Not aware of the display's resolution on purpose: the effect's page draws a fixed number of
// pixels, and the system enlarges the window as a whole.
void PageWindow::Open()
{
    static const ATOM windowClass = RegisterWindowClass(WindowProc);
    const Geometry::Extent most = WorkArea();
    const Geometry::Extent client = ClientFor(m_picture.Size(), Heights(), most);
    RECT outer{0, 0, client.width, client.height};
    ::AdjustWindowRectEx(&outer, kStyle, FALSE, WS_EX_CONTROLPARENT);
    if (windowClass == 0 ||
        ::CreateWindowExW(WS_EX_CONTROLPARENT, kPageWindowClass, nullptr, kStyle, CW_USEDEFAULT,
                          CW_USEDEFAULT, std::min<int>(outer.right - outer.left, most.width),
                          std::min<int>(outer.bottom - outer.top, most.height), nullptr, nullptr,
                          ThisProgram(), this) == nullptr)
    {
        ThrowWindowError("it cannot be made");
    }
    SetTitle();
    AddControls();
    m_page.Activate(m_window, RectOf(LayoutOf(client, Heights()).page));
    m_isOpen = true;
    Arrange();
    const CComPtr<ISfChangeSink> changes(new CLookChanges(m_window, kLookChanged));
    m_controls.SetChangeSink(changes);
    ::ShowWindow(m_window, SW_SHOWNORMAL);
}

PartHeights PageWindow::Heights() const
{
    return {static_cast<int>(m_page.Size().cy), std::max(m_lineHeight, PartHeights().line)};
}

HWND PageWindow::AddControl(const wchar_t* windowClass, const wchar_t* text, DWORD style, int id)
{
    const HWND control = ::CreateWindowExW(
        0, windowClass, text, WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | style, 0, 0, 0, 0, m_window,
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), ThisProgram(), nullptr);
    if (control == nullptr)
    {
        ThrowWindowError("a part of it cannot be made");
    }
    ::SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(BarFont()), FALSE);
    return control;
}

void PageWindow::AddControls()
{
    AddControl(L"STATIC", L"", SS_LEFT | SS_EDITCONTROL | SS_NOPREFIX, kStatusId);
    m_focus = AddControl(L"BUTTON", L"&Save look\u2026", WS_TABSTOP | BS_PUSHBUTTON, kSaveLookId);
    const HWND copy =
        AddControl(L"BUTTON", L"&Copy command", WS_TABSTOP | BS_PUSHBUTTON, kCopyCommandId);
    if (!m_options.command)
    {
        ::EnableWindow(copy, FALSE);
        Tell("This is a test chart. Start with --image FILE to get a command.");
    }
    else
    {
        TellLight();
    }
}

void PageWindow::Arrange()
{
    const WindowLayout layout = LayoutOf(ClientSize(m_window), Heights());
    MoveTo(::GetDlgItem(m_window, kStatusId), layout.status);
    MoveTo(::GetDlgItem(m_window, kSaveLookId), layout.saveLook);
    MoveTo(::GetDlgItem(m_window, kCopyCommandId), layout.copyCommand);
    m_page.Move(RectOf(layout.page));
    ::RedrawWindow(m_window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void PageWindow::Paint()
{
    const PaintScope paint(m_window);
    RECT client{};
    ::GetClientRect(m_window, &client);
    const Geometry::Rect area = LayoutOf({client.right, client.bottom}, Heights()).picture;
    Geometry::Rect place = PlacementOf(m_picture.Size(), m_picture.PixelAspect(), area.Size());
    if (place.width > 0)
    {
        DrawPicture(paint.Dc(), m_picture, place);
        ::ExcludeClipRect(paint.Dc(), place.left, place.top, place.Right(), place.Bottom());
    }
    const RECT surround = RectOf(area);
    ::SetBkColor(paint.Dc(), kSurround);
    ::ExtTextOutW(paint.Dc(), 0, 0, ETO_OPAQUE, &surround, nullptr, 0, nullptr);
    ::ExcludeClipRect(paint.Dc(), surround.left, surround.top, surround.right, surround.bottom);
    ::FillRect(paint.Dc(), &client, ::GetSysColorBrush(COLOR_BTNFACE));
}

void PageWindow::Run()
{
    Open();
    MSG message{};
    openWindow = m_window;
    while (m_window != nullptr)
    {
        if (::GetMessageW(&message, nullptr, 0, 0) <= 0)
        {
            return; // somebody else ended the thread's messages
        }
        if (Step(message) || m_page.Translate(message) || ::IsDialogMessageW(m_window, &message))
        {
            continue;
        }
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
}

LRESULT CALLBACK PageWindow::WindowProc(HWND window, UINT message, WPARAM wParam,
                                        LPARAM lParam) noexcept
{
    if (message == WM_NCCREATE)
    {
        const auto* const creation = reinterpret_cast<const CREATESTRUCTW*>(lParam);
        auto* const self = static_cast<PageWindow*>(creation->lpCreateParams);
        self->m_window = window;
        ::SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    auto* const self = reinterpret_cast<PageWindow*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self == nullptr)
    {
        return ::DefWindowProcW(window, message, wParam, lParam);
    }
    if (message == WM_NCDESTROY)
    {
        openWindow = nullptr;
        self->m_window = nullptr;
        ::SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        return ::DefWindowProcW(window, message, wParam, lParam);
    }
    LRESULT result = 0;
    self->Try([&] { result = self->Handle(message, wParam, lParam); });
    return result;
}

LRESULT PageWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case WM_SIZE:
        if (m_isOpen && wParam != SIZE_MINIMIZED)
        {
            Arrange();
        }
        return 0;
    case WM_ERASEBKGND:
        return 1; // WM_PAINT covers everything
    case WM_PAINT:
        Paint();
        return 0;
    case WM_COMMAND:
        OnCommand(LOWORD(wParam));
        return 0;
    case WM_ACTIVATE:
        OnActivate(LOWORD(wParam) != WA_INACTIVE);
        return 0;
    case WM_GETMINMAXINFO:
    {
        const Geometry::Extent least = LeastClient(Heights());
        RECT outer{0, 0, least.width, least.height};
        ::AdjustWindowRectEx(&outer, kStyle, FALSE, WS_EX_CONTROLPARENT);
        reinterpret_cast<MINMAXINFO*>(lParam)->ptMinTrackSize = {outer.right - outer.left,
                                                                 outer.bottom - outer.top};
        return 0;
    }
    case WM_CLOSE:
        if (MayClose())
        {
            Close();
        }
        return 0;
    case WM_QUERYENDSESSION:
        return MayClose() ? TRUE : FALSE;
    case kLookChanged:
        OnLookChanged();
        return 0;
    default:
        return ::DefWindowProcW(m_window, message, wParam, lParam);
    }
}

void PageWindow::OnCommand(int id)
{
    if (id == kSaveLookId)
    {
        SaveLook();
    }
    else if (id == kCopyCommandId && m_options.command)
    {
        CopyCommand();
    }
}

bool PageWindow::Step(const MSG& message)
{
    const bool isMine = message.hwnd == m_window || ::IsChild(m_window, message.hwnd);
    if (!m_options.sequence || message.message != WM_KEYDOWN || !isMine)
    {
        return false;
    }
    const StillSequence& sequence = *m_options.sequence;
    const std::int64_t shown = m_options.command->frame.value();
    Try([&] {
        switch (message.wParam)
        {
        case VK_PRIOR:
            return ShowPicture(shown - 1, false);
        case VK_NEXT:
            return ShowPicture(shown + 1, true);
        case VK_HOME:
            return ShowPicture(sequence.First(), true);
        case VK_END:
            return ShowPicture(sequence.Last(), false);
        default:
            return;
        }
    });
    return message.wParam >= VK_PRIOR && message.wParam <= VK_HOME;
}

void PageWindow::ShowPicture(std::int64_t number, bool forwards)
{
    std::string remark;
    auto found = m_options.sequence->Nearest(number, forwards, remark);
    if (found)
    {
        m_picture.Show(std::move(found->image));
        m_options.picture = found->name;
        m_options.command->frame = found->number;
        SetTitle();
        TellLight();
        ::InvalidateRect(m_window, nullptr, FALSE);
    }
    if (!remark.empty())
    {
        Tell(remark);
    }
    else if (!found)
    {
        Tell(forwards ? "This is the last picture." : "This is the first picture.");
    }
}

void PageWindow::SetTitle() const
{
    std::string title = m_options.picture.empty() ? "Test chart" : NameOf(m_options.picture);
    if (m_keeper.HasLook())
    {
        const std::optional<LookFile> look = m_keeper.File();
        title += ", " + (look ? NameOf(look->path) : "changed look");
    }
    ::SetWindowTextW(m_window, (Wide(title) + L" \u2013 " + m_page.Title()).c_str());
}

void PageWindow::OnLookChanged()
{
    // A look is changed many times while this is busy: they are rendered once.
    MSG message{};
    while (::PeekMessageW(&message, m_window, kLookChanged, kLookChanged, PM_REMOVE))
    {
    }
    try
    {
        m_picture.Render();
        TellLight(); // what it said was of the look before
        SetTitle();
    }
    catch (const HostError& error)
    {
        Tell(error.what()); // in the line: a box at each change would be in the way
    }
    ::InvalidateRect(m_window, nullptr, FALSE);
}

void PageWindow::SaveTo(const std::string& path, bool overwrite)
{
    m_keeper.Save(path, overwrite);
    SetTitle();
    Tell("Look saved as " + path);
}

std::optional<std::string> PageWindow::AskForLookFile() const
{
    constexpr std::size_t kLongestPath = 32768;
    std::wstring path = Wide(m_keeper.SuggestedName());
    path.resize(kLongestPath, L'\0');
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = m_window;
    dialog.lpstrFilter = L"Looks (*.look)\0*.look\0";
    dialog.lpstrFile = path.data();
    dialog.nMaxFile = static_cast<DWORD>(path.size());
    dialog.lpstrTitle = L"Save look";
    dialog.lpstrDefExt = L"look";
    dialog.Flags = OFN_OVERWRITEPROMPT | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_PATHMUSTEXIST;
    if (!::GetSaveFileNameW(&dialog))
    {
        if (const DWORD error = ::CommDlgExtendedError(); error != 0)
        {
            throw HostError("the dialog for files",
                            "it cannot be shown (error " + std::to_string(error) + ")",
                            "close this window and name the look with --save-look FILE");
        }
        return std::nullopt;
    }
    return Utf8(path.c_str());
}

void PageWindow::SaveLook()
{
    if (!m_keeper.HasLook())
    {
        Tell("There is no look yet: press Edit... and make one.");
        return;
    }
    if (const auto path = AskForLookFile())
    {
        SaveTo(*path, true); // the dialog has asked
    }
}

void PageWindow::CopyCommand()
{
    if (!m_keeper.HasLook())
    {
        Tell("There is no look yet: press Edit... and make one.");
        return;
    }
    std::optional<LookFile> look = m_keeper.File();
    if (!look)
    {
        const auto path = m_options.savedLook ? m_options.savedLook : AskForLookFile();
        if (!path)
        {
            return;
        }
        SaveTo(*path, !m_options.savedLook || m_options.overwrite);
        look = m_keeper.File();
    }
    RepeatedRender command = *m_options.command;
    command.output = GradedNameOf(command.image, FileExists);
    command.look = look.value();
    // The check box rules here, and a render that is not told so goes by the picture.
    if (m_options.depth == SampleType::Float && !m_options.light.isLinear &&
        LinearOption(m_controls.StoredLook()) == true)
    {
        command.look.linear = true;
    }
    if (const DWORD error = PutOnClipboard(m_window, Wide(CommandLine(command))))
    {
        throw HostError("the clipboard", WindowsErrorText(error),
                        "another program may be using it; try again");
    }
    Tell("Command copied: " + NameOf(command.look.path) + " into " + NameOf(command.output));
}

bool PageWindow::MayClose()
{
    if (!::IsWindowEnabled(m_window))
    {
        // The editor or a dialog is open: it would be torn away with what is being done in it.
        ::MessageBeep(MB_OK);
        ::SetForegroundWindow(BusyWindow(m_window));
        return false;
    }
    return SaveBeforeClosing();
}

bool PageWindow::SaveBeforeClosing()
{
    if (m_options.savedLook)
    {
        if (!m_keeper.HasLook())
        {
            return true; // nothing to lose; the command then says so and fails
        }
        try
        {
            m_keeper.Save(*m_options.savedLook, m_options.overwrite);
            return true;
        }
        catch (const HostError& error)
        {
            return SaveElsewhere(error.what());
        }
    }
    return !m_keeper.IsUnsaved() || SaveElsewhere("The look was changed.");
}

bool PageWindow::SaveElsewhere(const std::string& line)
{
    const std::wstring text = Wide(line) + L"\n\nSave the look as another file?";
    const int answer =
        ::MessageBoxW(m_window, text.c_str(), kCaption, MB_YESNOCANCEL | MB_ICONQUESTION);
    if (answer != IDYES)
    {
        return answer == IDNO;
    }
    const auto path = AskForLookFile();
    if (path)
    {
        SaveTo(*path, true); // the dialog has asked
    }
    return path.has_value();
}

void PageWindow::Close()
{
    m_isOpen = false;
    m_page.Deactivate();
    try
    {
        m_controls.SetChangeSink(nullptr);
    }
    catch (const HostError&)
    {
        // The sink outlives this: it then posts to a window that is gone, which fails.
        ::DestroyWindow(m_window);
        return;
    }
    ::DestroyWindow(m_window);
}

void PageWindow::OnActivate(bool active)
{
    if (!active)
    {
        const HWND focus = ::GetFocus();
        m_focus = focus != nullptr && ::IsChild(m_window, focus) ? focus : m_focus;
    }
    else if (m_focus != nullptr)
    {
        ::SetFocus(m_focus);
    }
}

void PageWindow::TellLight()
{
    Tell(CheckBoxText(m_options.depth, m_options.light, LinearOption(m_controls.StoredLook())));
}

void PageWindow::Tell(const std::string& text) const
{
    ::SetDlgItemTextW(m_window, kStatusId, Wide(text).c_str());
}

} // namespace GlazelHost
