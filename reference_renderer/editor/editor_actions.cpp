#include "reference_renderer/editor/editor_actions.h"

#include "reference_renderer/core/look_import.h"
#include "reference_renderer/editor/display_scale.h"
#include "reference_renderer/editor/editor_memory.h"
#include "reference_renderer/editor/look_files.h"
#include "reference_renderer/editor/look_text.h"
#include "reference_renderer/editor/number_text.h"
#include "reference_renderer/editor/pixel_text.h"
#include "reference_renderer/editor/recent_menu.h"
#include "reference_renderer/editor/resource.h"
#include "reference_renderer/editor/window_object.h"
#include "reference_renderer/editor/windows_files.h"
#include "support/win32/clipboard_text.h"
#include "support/win32/utf8.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <new>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

const wchar_t* OriginText(RecordState origin) noexcept
{
    switch (origin)
    {
    case RecordState::Usable:
    case RecordState::Empty:
        break;
    case RecordState::Foreign:
        return L"The look is not one of this renderer, or of a newer version: starting neutral";
    case RecordState::Damaged:
        return L"The look is damaged: starting neutral";
    }
    return L"";
}

std::optional<std::size_t> IndexIn(int id, int first, std::size_t count = kControlCount) noexcept
{
    const int index = id - first;
    const bool within = index >= 0 && index < static_cast<int>(count);
    return within ? std::optional(static_cast<std::size_t>(index)) : std::nullopt;
}

std::wstring RangeText(const ControlFacts& facts)
{
    return Wide(std::string(facts.name) + " takes a number from " + ShortNumberText(facts.lowest) +
                " to " + ShortNumberText(facts.highest));
}

std::wstring OutOfReachText(const ControlFacts& facts)
{
    return Wide(std::string(facts.name) +
                " cannot go there as the other numbers are: slopes and powers end at 0 and 100");
}

constexpr wchar_t kNoMemory[] =
    L"There is not enough memory for the look; close other programs and try again";

constexpr wchar_t kNoClipboard[] =
    L"The clipboard cannot be used, perhaps because another program has it open: try again";

// What a change of a control is called.
std::string DeedText(const ControlFacts& facts, bool all)
{
    const std::string name = facts.name;
    return all ? name.substr(0, name.find(',')) + ", all channels" : name;
}

struct CommandKey
{
    WPARAM key;
    bool ctrl;
    bool shift;
    int command;
    bool alsoInNumbers = true; // where the box has no use of its own for the key
};

// clang-format off
constexpr std::array kCommandKeys{
    CommandKey{'Z',   true,  false, IDC_UNDO},
    CommandKey{'Z',   true,  true,  IDC_REDO},
    CommandKey{'Y',   true,  false, IDC_REDO},
    CommandKey{'C',   true,  false, IDC_COPY_LOOK,  false},
    CommandKey{'V',   true,  false, IDC_PASTE_LOOK, false},
    CommandKey{VK_F7, false, false, IDC_STORE_STATE},
    CommandKey{VK_F8, false, false, IDC_SWAP_STATE},
    CommandKey{'0',   true,  false, IDC_FIT},
    CommandKey{'1',   true,  false, IDC_OWN_SIZE},
    CommandKey{VK_F11, false, false, IDC_PICTURE_ALONE},
    CommandKey{kFirstScopeKey,     false, false, IDC_SCOPE_BUTTON},
    CommandKey{kFirstScopeKey + 1, false, false, IDC_SCOPE_BUTTON + 1},
    CommandKey{kFirstScopeKey + 2, false, false, IDC_SCOPE_BUTTON + 2},
    CommandKey{kFirstScopeKey + 3, false, false, IDC_SCOPE_BUTTON + 3},
};
// clang-format on

// A title as the name of a file, without what no name can have.
std::wstring FileNameFor(const std::string& title)
{
    std::wstring name = Wide(title);
    for (wchar_t& letter : name)
    {
        if (letter < L' ' || std::wstring_view(L"\\/:*?\"<>|").find(letter) != std::wstring::npos)
        {
            letter = L'_';
        }
    }
    return name;
}

// Of the picture that stands for a look in the menu.
PixelSize ThumbnailSize(const PreviewPicture& picture, HWND window) noexcept
{
    constexpr int kWidth = 96;
    constexpr int kHeight = 54;
    const int dpi = DpiOf(window);
    const double shape = picture.IsEmpty() ? 1.0 : picture.Shape();
    const double height = std::min<double>(Scaled(kHeight, dpi), Scaled(kWidth, dpi) / shape);
    const auto length = [](double pixels) {
        return std::max<std::size_t>(static_cast<std::size_t>(pixels), 1);
    };
    return {length(height * shape), length(height)};
}

// The picture through the look of a file, or nothing where that cannot be read. Without a picture
// to grade, plain grey.
std::optional<PixelBitmap> ThumbnailOf(const std::wstring& file, const PreviewPicture& small)
{
    const auto look = std::make_unique<PreparedLook>();
    try
    {
        look->Read(ImportLook(Utf8(file), RendererAPI::kImportRecord, WindowsFiles()).record);
    }
    catch (const ImportError&)
    {
        return {};
    }
    const PixelSize size = small.IsEmpty() ? PixelSize{1, 1} : small.Size();
    PixelBitmap bitmap(size.width, size.height);
    const std::span<std::uint32_t> pixels = bitmap.Pixels();
    if (!small.IsEmpty())
    {
        small.GradingJob(*look, pixels).RenderRows(0, size.height);
    }
    for (std::uint32_t& pixel : pixels)
    {
        pixel |= 0xFF000000; // a menu mixes by alpha
    }
    return bitmap;
}

// The waiting cursor for as long as this lives.
class WaitCursor
{
public:
    WaitCursor() noexcept : m_before(::SetCursor(::LoadCursorW(nullptr, IDC_WAIT))) {}
    ~WaitCursor() { ::SetCursor(m_before); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

private:
    HCURSOR m_before;
};

} // namespace

bool IsChosen(int what, HWND from) noexcept
{
    return from == nullptr || what == BN_CLICKED || what == BN_DOUBLECLICKED;
}

EditorActions::EditorActions(const FrameBufferDesc* preview, std::span<const std::uint8_t> record,
                             bool linear, RowRunner& runner)
    : m_preview(preview, linear), m_draft(record), m_history(m_draft.State()),
      m_record(kRecordSize), m_picture(m_preview, m_look, runner), m_scope(m_preview, m_record)
{
    PrepareLook();
}

bool EditorActions::Create(HWND window, const EditorTheme& theme)
{
    m_window = window;
    return m_controls.Create(window, theme) && m_picture.Create(window, theme, IDC_PICTURE) &&
           m_scopeControls.Create(window, theme) && m_scope.Create(window, theme, IDC_SCOPE);
}

void EditorActions::ShowLook()
{
    m_controls.Show(m_draft);
    ShowMemory();
    Say(OriginText(m_draft.Origin()));
    Changed();
}

void EditorActions::SetTheme(const EditorTheme& theme) noexcept
{
    m_controls.SetTheme(theme);
    m_picture.SetTheme(theme);
    m_scopeControls.SetTheme(theme);
    m_scope.SetTheme(theme);
}

void EditorActions::Place(const EditorLayout& layout)
{
    m_layout = layout;
    m_controls.Place(layout);
    PlaceAt(m_picture.Window(), layout.picture);
    PlaceAt(m_scope.Window(), layout.scope);
    m_scopeControls.Place(layout);
    TellPicture();
}

bool EditorActions::IsOverPicture(POINT screen) const noexcept
{
    return ::WindowFromPoint(screen) == m_picture.Window();
}

bool EditorActions::OnKey(HWND child, WPARAM key)
{
    if (child != m_window && !::IsChild(m_window, child))
    {
        return false; // the host's windows may be on this thread too
    }
    const std::optional<std::size_t> number = m_controls.NumberOf(child);
    return OnCommandKey(key, number.has_value()) || (number && OnNumberKey(*number, key)) ||
           (key == VK_ESCAPE && (m_controls.CancelDrag() || m_picture.CancelDrag()));
}

bool EditorActions::OnCommandKey(WPARAM key, bool inNumber)
{
    const CommandKey pressed{key, IsDown(VK_CONTROL), IsDown(VK_SHIFT), 0};
    const auto* const found =
        std::find_if(kCommandKeys.begin(), kCommandKeys.end(), [&](const CommandKey& known) {
            return known.key == pressed.key && known.ctrl == pressed.ctrl &&
                   known.shift == pressed.shift && (known.alsoInNumbers || !inNumber);
        });
    // Ctrl with Alt types a character on some keyboards.
    if (found == kCommandKeys.end() || IsDown(VK_MENU))
    {
        return false;
    }
    ::SendMessageW(m_window, WM_COMMAND, static_cast<WPARAM>(found->command), 0);
    return true;
}

bool EditorActions::OnPress(HWND child) noexcept
{
    const bool arrives = m_controls.NumberOf(child).has_value() && ::GetFocus() != child;
    if (arrives)
    {
        ::SetFocus(child);
    }
    return arrives;
}

bool EditorActions::OnNumberKey(std::size_t index, WPARAM key)
{
    const bool ctrl = IsDown(VK_CONTROL);
    const bool isPage = key == VK_PRIOR || key == VK_NEXT;
    if (!isPage && key != VK_UP && key != VK_DOWN)
    {
        return false;
    }
    const KeyStep step = isPage ? KeyStep{kPageStep, ctrl} : ArrowStep(IsDown(VK_SHIFT), ctrl);
    const bool isUp = key == VK_UP || key == VK_PRIOR;
    const ControlFacts& facts = kControls[index];
    const float value = Nudged(facts, m_draft.Value(facts.control), isUp ? step.size : -step.size);
    if (!CanBeTyped(facts, value))
    {
        return true; // beyond its limit before: it stays there
    }
    step.all ? m_draft.MoveTogether(facts.control, value, m_draft.Numbers())
             : m_draft.Approach(facts.control, value, m_draft.Numbers());
    m_controls.ShowText(facts.control, m_draft.Value(facts.control));
    ::SendMessageW(m_controls.Number(index), EM_SETSEL, 0, -1);
    OnNumberTyped(index); // it may have been wrong before
    DidInRun(step.all ? Run::Kind::StepsOfAll : Run::Kind::Steps, facts);
    return true;
}

void EditorActions::OnCommand(int id, int what, HWND from)
{
    if (const auto slider = IndexIn(id, IDC_SLIDER))
    {
        OnSlider(*slider, what);
        return;
    }
    if (const auto pad = IndexIn(id, IDC_PAD, kPadCount))
    {
        OnPad(*pad, what);
        return;
    }
    if (const auto number = IndexIn(id, IDC_NUMBER))
    {
        OnNumber(*number, what);
        return;
    }
    if (id == IDC_PICTURE && (what == PICTURE_VIEWED || what == PICTURE_POINTED))
    {
        what == PICTURE_VIEWED ? TellPicture() : TellPixel();
        return;
    }
    if (!IsChosen(what, from))
    {
        return;
    }
    if (const auto reset = IndexIn(id, IDC_RESET))
    {
        Reset(kControls[*reset].control);
        return;
    }
    switch (id)
    {
    case IDC_SHOW_GRADED:
        SetCompare(Compare::Graded);
        break;
    case IDC_SHOW_SPLIT:
        SetCompare(Compare::Split);
        break;
    case IDC_SHOW_ORIGINAL:
        SetCompare(Compare::Original);
        break;
    case IDC_IMPORT:
        AskWhatToImport();
        break;
    case IDC_RECENT:
        WithMemory([&] { ChooseRecent(); });
        break;
    case IDC_EXPORT:
        WithMemory([&] { Export(); });
        break;
    case IDC_REMOVE_TABLES:
        RemoveTables();
        break;
    case IDC_RESET_ALL:
        ResetAll();
        break;
    case IDC_STORE_STATE:
        StoreState();
        break;
    case IDC_SWAP_STATE:
        SwapState();
        break;
    case IDC_COPY_LOOK:
        CopyLook();
        break;
    case IDC_PASTE_LOOK:
        PasteLook();
        break;
    case IDC_FIT:
        m_picture.Fit();
        break;
    case IDC_OWN_SIZE:
        m_picture.ShowOwnSize();
        break;
    case IDC_UNDO:
        Undo();
        break;
    case IDC_REDO:
        Redo();
        break;
    default:
        break;
    }
}

void EditorActions::OnDrop(HDROP files)
{
    Import(TakeDroppedFiles(files));
    ::SetForegroundWindow(m_window);
}

bool EditorActions::CanAccept()
{
    if (m_texts.wrongNumber)
    {
        const std::size_t index = *m_texts.wrongNumber;
        const std::optional<float> typed = TypedNumber(m_controls.NumberTyped(index));
        const bool inRange = typed && CanBeTyped(kControls[index], *typed);
        Say(inRange ? OutOfReachText(kControls[index]) : RangeText(kControls[index]), true);
        ::SetFocus(m_controls.Number(index));
        return false;
    }
    return true;
}

void EditorActions::OnSlider(std::size_t index, int what)
{
    const ControlFacts& facts = kControls[index];
    switch (what)
    {
    case SLIDER_MOVED:
        OnSliderMoved(index);
        break;
    case SLIDER_RESET:
        Reset(facts.control);
        break;
    case SLIDER_BEGAN:
        m_beforeDrag = m_draft.Numbers();
        m_draggedAll = false;
        break;
    case SLIDER_ENDED:
        Did(DeedText(facts, m_draggedAll));
        break;
    case SLIDER_CANCELLED:
        m_draft.SetNumbers(m_beforeDrag);
        Changed();
        break;
    default:
        break;
    }
}

void EditorActions::OnSliderMoved(std::size_t index)
{
    const ControlFacts& facts = kControls[index];
    const float value = m_controls.SliderValue(index);
    // In a drag from where it began: going step by step, what a limit cut off would not come back.
    const bool dragged = m_controls.IsSliderDragged(index);
    const bool all = m_controls.SliderMovesAll(index);
    // A number that follows from several others would gather what each step rounds.
    const bool fromStart = dragged && (all || !HasChannels(facts.step));
    const GradeNumbers from = fromStart ? m_beforeDrag : m_draft.Numbers();
    all ? m_draft.MoveTogether(facts.control, value, from)
        : m_draft.Approach(facts.control, value, from);
    Changed();
    m_draggedAll = m_draggedAll || all;
    if (!dragged)
    {
        DidInRun(all ? Run::Kind::StepsOfAll : Run::Kind::Steps, facts);
    }
}

void EditorActions::OnPad(std::size_t index, int what)
{
    const std::string name = kPads[index].name;
    switch (what)
    {
    case SLIDER_MOVED:
        OnPadMoved(index);
        break;
    case SLIDER_RESET:
    {
        ::ReleaseCapture(); // a drag ends first, a step of its own
        GradeNumbers numbers = m_draft.Numbers();
        MoveToPadPoint(numbers, kPads[index], {});
        m_draft.SetNumbers(numbers);
        Changed();
        Did("reset of " + name);
        break;
    }
    case SLIDER_BEGAN:
        m_beforeDrag = m_draft.Numbers();
        break;
    case SLIDER_ENDED:
        Did(name);
        break;
    case SLIDER_CANCELLED:
        m_draft.SetNumbers(m_beforeDrag);
        Changed();
        break;
    default:
        break;
    }
}

void EditorActions::OnPadMoved(std::size_t index)
{
    const bool dragged = m_controls.IsPadDragged(index);
    GradeNumbers numbers = dragged ? m_beforeDrag : m_draft.Numbers();
    MoveToPadPoint(numbers, kPads[index], m_controls.PadValue(index));
    m_draft.SetNumbers(numbers);
    Changed();
    if (!dragged)
    {
        m_history.DidInRun({Run::Kind::Pad, kPads[index].first}, ::GetTickCount64(),
                           {kPads[index].name, m_draft.State(), false});
    }
}

void EditorActions::OnNumber(std::size_t index, int what)
{
    switch (what)
    {
    case EN_CHANGE:
        if (m_controls.NumberTyped(index).size() <= 1)
        {
            m_history.EndRun(); // the text is begun anew
        }
        if (!m_controls.IsWriting() && OnNumberTyped(index))
        {
            DidInRun(Run::Kind::Typing, kControls[index]);
        }
        break;
    case EN_SETFOCUS: // whichever way it came: typing replaces the number
        ::SendMessageW(m_controls.Number(index), EM_SETSEL, 0, -1);
        MarkNumbers(index, m_texts.wrongNumber);
        break;
    case EN_KILLFOCUS:
        if (m_texts.wrongNumber && ::GetFocus() == ::GetDlgItem(m_window, IDOK))
        {
            break; // it must not be taken back and the rest accepted in one click
        }
        m_history.EndRun();
        MarkNumbers({}, {});
        m_controls.ShowText(kControls[index].control, m_draft.Value(kControls[index].control));
        break;
    default:
        break;
    }
}

bool EditorActions::OnNumberTyped(std::size_t index)
{
    const ControlFacts& facts = kControls[index];
    const std::string typed = m_controls.NumberTyped(index);
    const std::optional<float> value = TypedNumber(typed);
    const bool inRange = value && CanBeTyped(facts, *value);
    // A value with more decimals than its text keeps them until the text says something else.
    const bool same = inRange && NumberText(m_draft.Value(facts.control)) == NumberText(*value);
    if (!inRange || (!same && !m_draft.Set(facts.control, *value)))
    {
        if (m_history.IsTyping(facts.control)) // what was typed so far is not meant
        {
            m_history.TakeBackRun();
            m_draft.Restore(m_history.Now());
            Changed();
        }
        MarkNumbers(index, index);
        if (!typed.empty()) // nothing is not wrong yet
        {
            Say(inRange ? OutOfReachText(facts) : RangeText(facts), true);
        }
        return false;
    }
    MarkNumbers(index, {});
    if (m_statusIsWrong)
    {
        Say(L"");
    }
    Changed();
    return true;
}

void EditorActions::Reset(Control control)
{
    ::ReleaseCapture(); // a drag ends first, a step of its own
    m_draft.Reset(control);
    m_controls.ShowText(control, m_draft.Value(control)); // it may have the focus
    MarkNumbers(m_texts.focusedNumber, {});
    Changed();
    Did("reset of " + std::string(FactsOf(control).name));
}

void EditorActions::ResetAll()
{
    ::ReleaseCapture(); // as above
    m_draft.ResetAll();
    ShowNumbers();
    Say(L"All numbers are neutral");
    Changed();
    Did("reset of all numbers");
}

void EditorActions::RemoveTables()
{
    ::ReleaseCapture(); // as above
    m_draft.RemoveTables();
    Say(L"The LUT is removed");
    Changed();
    Did("removal of the LUT");
}

void EditorActions::AskWhatToImport()
{
    const LookFileAnswer answer = AskForLookFile(m_window);
    if (answer.error != 0)
    {
        Say(L"The dialog for files cannot be shown (error " + std::to_wstring(answer.error) +
                L"): drop the file on the window instead",
            true);
    }
    else if (!answer.path.empty())
    {
        Import({answer.path});
    }
}

void EditorActions::Import(const std::vector<std::wstring>& files)
{
    ::ReleaseCapture(); // a drag ends first, a step of its own
    const WaitCursor waiting;
    std::wstring said;
    std::wstring failed;
    std::string deed;
    for (const std::wstring& file : files)
    {
        try
        {
            said = ImportOne(file);
            deed = "import of " + Utf8(FileNameOf(file));
        }
        catch (const ImportError& error)
        {
            failed = Wide(error.message);
        }
        catch (const std::bad_alloc&)
        {
            failed = kNoMemory;
        }
    }
    Say(said.empty() || failed.empty() ? said + failed : said + L"; " + failed, !failed.empty());
    ShowNumbers();
    Changed();
    Did(std::move(deed));
}

std::wstring EditorActions::ImportOne(const std::wstring& file)
{
    const std::string path = Utf8(file);
    const ImportedLook imported = ImportLook(path, RendererAPI::kImportRecord, WindowsFiles());
    if (!m_draft.Merge(imported, Utf8(FileStemOf(file))))
    {
        throw ImportError{RendererAPI::kImportMalformed,
                          path + ": makes no look that can be kept; export the look again"};
    }
    RememberLook(file);
    std::wstring said(FileNameOf(file));
    said += L" is imported: " + Wide(imported.contents);
    for (const std::string& warning : imported.warnings)
    {
        said += L"; " + Wide(warning);
    }
    return said;
}

template <typename Action>
void EditorActions::WithMemory(Action&& action)
{
    try
    {
        action();
    }
    catch (const std::bad_alloc&)
    {
        Say(kNoMemory, true);
    }
}

void EditorActions::Export()
{
    const std::string title = m_draft.Title();
    const ExportAnswer answer =
        AskWhereToExport(m_window, FileNameFor(title.empty() ? "look" : title));
    if (answer.error != 0)
    {
        Say(L"The dialog for files cannot be shown (error " + std::to_wstring(answer.error) +
                L"): copy the look with Ctrl+C instead",
            true);
    }
    if (answer.path.empty())
    {
        return;
    }
    const std::string typed = Utf8(answer.path);
    const ExportFormat& format = ExportFormatOf(typed, answer.format);
    const std::string path = WithEnding(typed, format);
    if (!WindowsFiles().Exists(path) || MayReplace(m_window, Wide(path)))
    {
        ExportTo(path, format);
    }
}

void EditorActions::ExportTo(const std::string& path, const ExportFormat& format)
{
    const WaitCursor waiting;
    const std::wstring name(FileNameOf(Wide(path)));
    if (const std::string why = WhyNotExported(format, m_look.Stored()); !why.empty())
    {
        Say(name + L" is not written: " + Wide(why), true);
        return;
    }
    const WrittenLook file = Exported(format, m_look, m_record, m_draft.Title());
    if (const std::string why = WriteWholeFile(path, file.bytes); !why.empty())
    {
        Say(Wide(why), true);
        return;
    }
    RememberLook(Wide(path));
    std::wstring said = name + L" is written: " + Wide(file.contents);
    for (const std::string& loss : file.losses)
    {
        said += L"; " + Wide(loss);
    }
    Say(said);
}

void EditorActions::ChooseRecent()
{
    const std::vector<std::wstring> files = RecentLooks();
    if (files.empty())
    {
        Say(L"No look was imported or exported yet");
        return;
    }
    std::vector<RecentLook> looks;
    {
        const WaitCursor waiting;
        const PreviewPicture small = m_preview.Small(ThumbnailSize(m_preview, m_window));
        for (const std::wstring& file : files)
        {
            looks.push_back({std::wstring(FileNameOf(file)), ThumbnailOf(file, small)});
        }
    }
    const HWND button = ::GetDlgItem(m_window, IDC_RECENT);
    if (const std::optional<std::size_t> chosen = ChooseRecentLook(m_window, button, looks))
    {
        Import({files[*chosen]});
    }
}

void EditorActions::CopyLook()
{
    if (PutOnClipboard(m_window, Wide(LookText(m_record))) != ERROR_SUCCESS)
    {
        Say(kNoClipboard, true);
        return;
    }
    Say(L"The look is copied as text: paste it into another editor or a message");
}

void EditorActions::PasteLook()
{
    if (m_controls.CancelDrag())
    {
        return;
    }
    const std::optional<std::wstring> text = TextOnClipboard(m_window);
    if (!text)
    {
        Say(kNoClipboard, true);
        return;
    }
    ImportedLook pasted;
    pasted.record = RecordOfText(Utf8(*text)).value_or(std::vector<std::uint8_t>());
    pasted.kind = "look record";
    pasted.title = LookDraft(pasted.record).Title();
    if (!m_draft.Merge(pasted, ""))
    {
        Say(L"The clipboard holds no whole look: copy one in an editor and paste again", true);
        return;
    }
    Say(L"The look is pasted");
    ShowNumbers();
    Changed();
    Did("paste of a look");
}

void EditorActions::SetCompare(Compare compare) noexcept
{
    m_picture.SetCompare(compare);
    for (const int button : {IDC_SHOW_GRADED, IDC_SHOW_SPLIT, IDC_SHOW_ORIGINAL})
    {
        ::InvalidateRect(::GetDlgItem(m_window, button), nullptr, FALSE);
    }
}

void EditorActions::Undo()
{
    if (m_controls.CancelDrag() || TakeBackTyping())
    {
        return;
    }
    const HistoryStep* const step = m_history.Undo();
    if (step == nullptr)
    {
        Say(L"There is nothing to undo");
        return;
    }
    BringBack(*step);
    Say(L"Undone: " + Wide(step->what));
}

void EditorActions::Redo()
{
    if (m_controls.CancelDrag())
    {
        return;
    }
    const HistoryStep* const step = m_history.Redo();
    if (step == nullptr)
    {
        Say(L"There is nothing to redo");
        return;
    }
    BringBack(*step);
    Say(L"Done again: " + Wide(step->what));
}

bool EditorActions::TakeBackTyping()
{
    if (!m_texts.focusedNumber)
    {
        return false;
    }
    const std::size_t index = *m_texts.focusedNumber;
    const Control control = kControls[index].control;
    const float value = m_draft.Value(control);
    if (m_history.IsTyping(control) || m_controls.NumberTyped(index) == NumberText(value))
    {
        return false; // what was typed is the last step, or there is nothing typed
    }
    m_controls.ShowText(control, value);
    ::SendMessageW(m_controls.Number(index), EM_SETSEL, 0, -1);
    MarkNumbers(index, {});
    Say(L"Undone: typing");
    return true;
}

void EditorActions::BringBack(const HistoryStep& step)
{
    if (step.swapsMemory && m_memory == m_history.Now()) // no other was stored since
    {
        m_memory = m_draft.State();
        m_showsStored = !m_showsStored;
        ShowMemory();
    }
    m_draft.Restore(m_history.Now());
    ShowNumbers();
    Changed();
    if (m_texts.focusedNumber)
    {
        ::SendMessageW(m_controls.Number(*m_texts.focusedNumber), EM_SETSEL, 0, -1);
    }
}

void EditorActions::StoreState()
{
    m_memory = m_draft.State();
    m_showsStored = false;
    ShowMemory();
    Say(L"This look is stored as A; F8 brings it back");
}

void EditorActions::SwapState()
{
    if (m_controls.CancelDrag() || !m_memory)
    {
        return;
    }
    LookState shown = m_draft.State();
    m_draft.Restore(*m_memory);
    m_memory = std::move(shown);
    m_showsStored = !m_showsStored;
    ShowMemory();
    ShowNumbers();
    Changed();
    Did("swap of A and B", true);
    Say(m_showsStored ? L"This is A, the look that was stored" : L"This is B");
}

void EditorActions::ShowMemory() noexcept
{
    m_controls.ShowMemory(m_memory.has_value(), m_showsStored);
}

void EditorActions::Did(std::string what, bool swapsMemory)
{
    m_history.Did({std::move(what), m_draft.State(), swapsMemory});
}

void EditorActions::DidInRun(Run::Kind kind, const ControlFacts& facts)
{
    m_history.DidInRun({kind, facts.control}, ::GetTickCount64(),
                       {DeedText(facts, kind == Run::Kind::StepsOfAll), m_draft.State(), false});
}

void EditorActions::Changed()
{
    PrepareLook();
    m_picture.Regrade(); // first: what the eye waits for
    m_scope.Follow();
    TellPixel();
    m_controls.Show(m_draft);
    if (m_texts.wrongNumber && ::GetFocus() != m_controls.Number(*m_texts.wrongNumber))
    {
        MarkNumbers(m_texts.focusedNumber, {}); // its box shows the number of the look again
    }
    std::wstring tables = L"None: import a LUT, or drop its file here";
    if (m_draft.HasTables())
    {
        const std::wstring title = Wide(m_draft.Title());
        tables = (title.empty() ? L"Without a name" : title) + L"  \u2013  " +
                 Wide(m_draft.TablesText());
    }
    if (m_texts.tables != tables)
    {
        m_texts.tables = tables;
        const RECT area = RectOf(m_layout.tables);
        ::InvalidateRect(m_window, &area, FALSE);
    }
}

void EditorActions::PrepareLook()
{
    m_draft.Write(RecordBytes(m_record.data(), kRecordSize));
    m_look.Read(m_record);
}

void EditorActions::ToggleScope(ScopeKind kind)
{
    m_scope.Toggle(kind);
    m_scopeControls.ShowChosen();
}

void EditorActions::TellPixel()
{
    const std::optional<PicturePixel> pixel = m_picture.PixelPointedAt();
    m_scopeControls.ShowPixel(pixel ? Wide(PixelText(m_preview, *pixel, m_look)) : L"");
}

void EditorActions::TellPicture()
{
    TellPixel();
    const RECT area = RectOf(m_layout.pictureFacts);
    ::InvalidateRect(m_window, &area, FALSE);
    m_texts.picture.clear();
    if (!m_preview.IsEmpty())
    {
        constexpr double kPercent = 100.0;
        m_texts.picture = std::to_wstring(std::lround(m_picture.Zoom() * kPercent)) + L" %, " +
                          std::to_wstring(m_preview.Size().width) + L" \u00D7 " +
                          std::to_wstring(m_preview.Size().height) +
                          (m_preview.IsLinear() ? L", linear light" : L"");
    }
}

// All as text, even the one that has the focus.
void EditorActions::ShowNumbers()
{
    for (const ControlFacts& facts : kControls)
    {
        m_controls.ShowText(facts.control, m_draft.Value(facts.control));
    }
    MarkNumbers(m_texts.focusedNumber, {});
}

void EditorActions::MarkNumbers(std::optional<std::size_t> focused,
                                std::optional<std::size_t> wrong) noexcept
{
    for (const auto& number : {m_texts.focusedNumber, m_texts.wrongNumber, focused, wrong})
    {
        if (number)
        {
            const RECT frame = RectOf(m_layout.controls[*number].frame);
            ::InvalidateRect(m_window, &frame, FALSE);
            ::InvalidateRect(m_controls.Number(*number), nullptr, FALSE);
        }
    }
    m_texts.focusedNumber = focused;
    m_texts.wrongNumber = wrong;
}

void EditorActions::Say(const std::wstring& text, bool wrong) noexcept
{
    m_statusIsWrong = wrong;
    m_controls.Say(text);
}

} // namespace ReferenceRenderer
