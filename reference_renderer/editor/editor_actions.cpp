// What the user does in the editor's window, and what follows from it.
#include "reference_renderer/editor/editor_window.h"

#include "reference_renderer/core/look_import.h"
#include "reference_renderer/editor/look_files.h"
#include "reference_renderer/editor/number_text.h"
#include "reference_renderer/editor/resource.h"
#include "reference_renderer/editor/windows_files.h"
#include "support/win32/utf8.h"

#include <cmath>
#include <new>

namespace ReferenceRenderer
{

namespace
{

std::optional<std::size_t> IndexIn(int id, int first) noexcept
{
    const int index = id - first;
    const bool within = index >= 0 && index < static_cast<int>(kControlCount);
    return within ? std::optional(static_cast<std::size_t>(index)) : std::nullopt;
}

std::wstring RangeText(const ControlFacts& facts)
{
    return Wide(std::string(facts.name) + " takes a number from " + ShortNumberText(facts.lowest) +
                " to " + ShortNumberText(facts.highest));
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

void EditorWindow::OnCommand(int id, int what, HWND from)
{
    if (const auto slider = IndexIn(id, IDC_SLIDER))
    {
        OnSlider(*slider, what);
        return;
    }
    if (const auto number = IndexIn(id, IDC_NUMBER))
    {
        OnNumber(*number, what);
        return;
    }
    // A button that paints itself says the second of two quick clicks in its own way.
    if (from != nullptr && what != BN_CLICKED && what != BN_DOUBLECLICKED)
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
    case IDOK:
        Accept();
        break;
    case IDCANCEL:
        End(false);
        break;
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
    case IDC_REMOVE_TABLES:
        RemoveTables();
        break;
    case IDC_RESET_ALL:
        ResetAll();
        break;
    default:
        break;
    }
}

void EditorWindow::Accept()
{
    if (m_texts.wrongNumber)
    {
        const std::size_t index = *m_texts.wrongNumber;
        Say(RangeText(kControls[index]), true);
        ::SetFocus(m_controls.Number(index));
        return;
    }
    End(true);
}

void EditorWindow::OnSlider(std::size_t index, int what)
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
        m_beforeDrag = m_draft.NumbersOf(facts.step);
        break;
    case SLIDER_CANCELLED:
        m_draft.SetNumbers(facts.step, m_beforeDrag);
        Changed();
        break;
    default:
        break;
    }
}

void EditorWindow::OnSliderMoved(std::size_t index)
{
    const ControlFacts& facts = kControls[index];
    const float value = m_controls.SliderValue(index);
    // In a drag from where it began: going step by step, what a limit cut off would not come back.
    const StepNumbers from =
        m_controls.IsSliderDragged(index) ? m_beforeDrag : m_draft.NumbersOf(facts.step);
    if (m_controls.SliderMovesAll(index) ? m_draft.SetTogether(facts.control, value, from)
                                         : m_draft.Set(facts.control, value))
    {
        Changed();
    }
}

void EditorWindow::OnNumber(std::size_t index, int what)
{
    switch (what)
    {
    case EN_CHANGE:
        if (!m_controls.IsWriting())
        {
            OnNumberTyped(index);
        }
        break;
    case EN_SETFOCUS:
        MarkNumbers(index, m_texts.wrongNumber);
        break;
    case EN_KILLFOCUS:
        if (m_texts.wrongNumber && ::GetFocus() == ::GetDlgItem(Window(), IDOK))
        {
            break; // it must not be taken back and the rest accepted in one click
        }
        MarkNumbers({}, {});
        m_controls.ShowText(kControls[index].control, m_draft.Value(kControls[index].control));
        break;
    default:
        break;
    }
}

void EditorWindow::OnNumberTyped(std::size_t index)
{
    const ControlFacts& facts = kControls[index];
    const std::string typed = m_controls.NumberTyped(index);
    const std::optional<float> value = TypedNumber(typed);
    if (!value || *value < facts.lowest || *value > facts.highest)
    {
        MarkNumbers(index, index);
        if (!typed.empty()) // nothing is not wrong yet
        {
            Say(RangeText(facts), true);
        }
        return;
    }
    MarkNumbers(index, {});
    if (m_statusIsWrong)
    {
        Say(L"");
    }
    // A value with more decimals than its text keeps them until the text says something else.
    if (NumberText(m_draft.Value(facts.control)) != NumberText(*value))
    {
        m_draft.Set(facts.control, *value);
    }
    Changed();
}

void EditorWindow::OnDrop(WPARAM drop)
{
    Import(TakeDroppedFiles(reinterpret_cast<HDROP>(drop)));
    ::SetForegroundWindow(Window());
}

void EditorWindow::Reset(Control control)
{
    m_draft.Reset(control);
    m_controls.ShowText(control, m_draft.Value(control)); // it may have the focus
    MarkNumbers(m_texts.focusedNumber, {});
    Changed();
}

void EditorWindow::ResetAll()
{
    m_draft.ResetAll();
    for (const ControlFacts& facts : kControls)
    {
        m_controls.ShowText(facts.control, m_draft.Value(facts.control));
    }
    MarkNumbers(m_texts.focusedNumber, {});
    Say(L"All numbers are neutral");
    Changed();
}

void EditorWindow::RemoveTables()
{
    m_draft.RemoveTables();
    Say(L"The LUT is removed");
    Changed();
}

void EditorWindow::AskWhatToImport()
{
    const LookFileAnswer answer = AskForLookFile(Window());
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

void EditorWindow::Import(const std::vector<std::wstring>& files)
{
    const WaitCursor waiting;
    std::wstring said;
    std::wstring failed;
    for (const std::wstring& file : files)
    {
        try
        {
            said = ImportOne(file);
        }
        catch (const ImportError& error)
        {
            failed = Wide(error.message);
        }
        catch (const std::bad_alloc&)
        {
            failed = L"There is not enough memory for the look; close other programs and try again";
        }
    }
    Say(failed.empty() ? said : failed, !failed.empty());
    for (const ControlFacts& facts : kControls)
    {
        m_controls.ShowText(facts.control, m_draft.Value(facts.control));
    }
    MarkNumbers(m_texts.focusedNumber, {});
    Changed();
}

std::wstring EditorWindow::ImportOne(const std::wstring& file)
{
    const std::string path = Utf8(file);
    const ImportedLook imported = ImportLook(path, RendererAPI::kImportRecord, WindowsFiles());
    if (!m_draft.Merge(imported, Utf8(FileStemOf(file))))
    {
        throw ImportError{RendererAPI::kImportMalformed,
                          path + ": makes no look that can be kept; export the look again"};
    }
    std::wstring said(FileNameOf(file));
    said += L" is imported: " + Wide(imported.contents);
    for (const std::string& warning : imported.warnings)
    {
        said += L"; " + Wide(warning);
    }
    return said;
}

void EditorWindow::SetCompare(Compare compare) noexcept
{
    m_picture.SetCompare(compare);
    for (const int button : {IDC_SHOW_GRADED, IDC_SHOW_SPLIT, IDC_SHOW_ORIGINAL})
    {
        ::InvalidateRect(::GetDlgItem(Window(), button), nullptr, FALSE);
    }
}

void EditorWindow::Changed()
{
    PrepareLook();
    m_picture.Regrade(); // first: what the eye waits for
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
        ::InvalidateRect(Window(), &area, FALSE);
    }
}

void EditorWindow::PrepareLook()
{
    m_draft.Write(RecordBytes(m_record.data(), kRecordSize));
    m_look.Read(m_record);
}

void EditorWindow::TellPicture()
{
    m_texts.picture.clear();
    if (!m_preview.IsEmpty())
    {
        constexpr double kPercent = 100.0;
        m_texts.picture = std::to_wstring(m_preview.Size().width) + L" \u00D7 " +
                          std::to_wstring(m_preview.Size().height) +
                          (m_preview.IsLinear() ? L", linear light" : L"") + L", " +
                          std::to_wstring(std::lround(m_picture.Zoom() * kPercent)) + L" %";
    }
}

void EditorWindow::MarkNumbers(std::optional<std::size_t> focused,
                               std::optional<std::size_t> wrong) noexcept
{
    for (const auto& number : {m_texts.focusedNumber, m_texts.wrongNumber, focused, wrong})
    {
        if (number)
        {
            const RECT frame = RectOf(m_layout.controls[*number].frame);
            ::InvalidateRect(Window(), &frame, FALSE);
            ::InvalidateRect(m_controls.Number(*number), nullptr, FALSE);
        }
    }
    m_texts.focusedNumber = focused;
    m_texts.wrongNumber = wrong;
}

void EditorWindow::Say(const std::wstring& text, bool wrong) noexcept
{
    m_statusIsWrong = wrong;
    m_controls.Say(text);
}

} // namespace ReferenceRenderer
