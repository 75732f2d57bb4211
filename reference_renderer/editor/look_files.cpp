#include "reference_renderer/editor/look_files.h"

#include "reference_renderer/core/import_formats.h"
#include "reference_renderer/editor/export_format.h"
#include "support/win32/utf8.h"

#include <memory>
#include <type_traits>
#include <utility>

#include <commdlg.h>

namespace ReferenceRenderer
{

namespace
{

struct DropFinisher
{
    void operator()(HDROP drop) const noexcept { ::DragFinish(drop); }
};

using DropHandle = std::unique_ptr<std::remove_pointer_t<HDROP>, DropFinisher>;

// Pairs of a text and patterns, each ended by 0; one more 0 ends the whole.
std::wstring LookFilter()
{
    std::wstring shown;
    std::wstring patterns;
    for (const ImportFormat& format : ImportFormats())
    {
        const std::wstring pattern =
            L"*" + std::wstring(format.ending.begin(), format.ending.end());
        shown += (shown.empty() ? L"" : L", ") + pattern;
        patterns += (patterns.empty() ? L"" : L";") + pattern;
    }
    return L"Looks (" + shown + L")" + L'\0' + patterns + L'\0' +
           std::wstring(L"All files\0*.*\0", 14);
}

std::wstring ExportFilter()
{
    std::wstring filter;
    for (const ExportFormat& format : kExportFormats)
    {
        filter += Wide(format.shown) + L'\0' + L"*" + Wide(format.ending) + L'\0';
    }
    return filter;
}

constexpr std::size_t kLongestPath = 32768;

} // namespace

ExportAnswer AskWhereToExport(HWND owner, const std::wstring& name)
{
    std::wstring path = name;
    path.resize(kLongestPath);
    OPENFILENAMEW question{};
    question.lStructSize = sizeof question;
    question.hwndOwner = owner;
    const std::wstring filter = ExportFilter();
    question.lpstrFilter = filter.c_str();
    question.nFilterIndex = 1;
    question.lpstrFile = path.data();
    question.nMaxFile = static_cast<DWORD>(path.size());
    question.lpstrTitle = L"Export the look";
    question.Flags = OFN_EXPLORER | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    if (!::GetSaveFileNameW(&question))
    {
        return {{}, 0, ::CommDlgExtendedError()};
    }
    path.resize(path.find(L'\0'));
    return {std::move(path), question.nFilterIndex > 0 ? question.nFilterIndex - 1U : 0U, 0};
}

bool MayReplace(HWND owner, const std::wstring& path)
{
    const std::wstring question =
        std::wstring(FileNameOf(path)) + L" is there already. Replace it?";
    return ::MessageBoxW(owner, question.c_str(), L"Export the look",
                         MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2) == IDYES;
}

LookFileAnswer AskForLookFile(HWND owner)
{
    std::wstring path(kLongestPath, L'\0');
    OPENFILENAMEW question{};
    question.lStructSize = sizeof question;
    question.hwndOwner = owner;
    const std::wstring filter = LookFilter();
    question.lpstrFilter = filter.c_str();
    question.lpstrFile = path.data();
    question.nMaxFile = static_cast<DWORD>(path.size());
    question.lpstrTitle = L"Import a look";
    // The current folder is the host's.
    question.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    if (!::GetOpenFileNameW(&question))
    {
        return {{}, ::CommDlgExtendedError()};
    }
    path.resize(path.find(L'\0'));
    return {std::move(path)};
}

std::vector<std::wstring> TakeDroppedFiles(HDROP drop)
{
    constexpr UINT kCount = 0xFFFFFFFF; // asks for the number of files
    const DropHandle handle(drop);
    std::vector<std::wstring> files(::DragQueryFileW(drop, kCount, nullptr, 0));
    for (UINT i = 0; i < files.size(); ++i)
    {
        const UINT length = ::DragQueryFileW(drop, i, nullptr, 0);
        files[i].resize(length);
        ::DragQueryFileW(drop, i, files[i].data(), length + 1);
    }
    return files;
}

std::wstring_view FileNameOf(std::wstring_view path) noexcept
{
    const std::size_t slash = path.find_last_of(L"\\/");
    return slash == std::wstring_view::npos ? path : path.substr(slash + 1);
}

std::wstring_view FileStemOf(std::wstring_view path) noexcept
{
    const std::wstring_view name = FileNameOf(path);
    return name.substr(0, name.find_last_of(L'.')); // npos takes all
}

} // namespace ReferenceRenderer
