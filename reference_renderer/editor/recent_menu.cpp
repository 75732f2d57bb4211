#include "reference_renderer/editor/recent_menu.h"

#include <memory>
#include <type_traits>

namespace ReferenceRenderer
{

namespace
{

struct MenuDestroyer
{
    void operator()(HMENU menu) const noexcept { ::DestroyMenu(menu); }
};

using MenuHandle = std::unique_ptr<std::remove_pointer_t<HMENU>, MenuDestroyer>;

// In a menu, "&" underlines the letter behind it.
std::wstring MenuText(const std::wstring& name)
{
    std::wstring text;
    for (const wchar_t letter : name)
    {
        text += letter == L'&' ? L"&&" : std::wstring(1, letter);
    }
    return text;
}

} // namespace

std::optional<std::size_t> ChooseRecentLook(HWND owner, HWND button,
                                            std::span<const RecentLook> looks)
{
    const MenuHandle menu(::CreatePopupMenu());
    for (std::size_t i = 0; menu && i < looks.size(); ++i)
    {
        std::wstring text =
            MenuText(looks[i].name) + (looks[i].picture ? L"" : L" (cannot be read)");
        MENUITEMINFOW item{};
        item.cbSize = sizeof item;
        item.fMask = MIIM_ID | MIIM_STRING | MIIM_STATE | MIIM_BITMAP;
        item.wID = static_cast<UINT>(i) + 1; // 0 is that nothing was chosen
        item.fState = looks[i].picture ? MFS_ENABLED : MFS_GRAYED;
        item.dwTypeData = text.data();
        item.hbmpItem = looks[i].picture ? looks[i].picture->Get() : nullptr;
        ::InsertMenuItemW(menu.get(), item.wID, FALSE, &item);
    }
    RECT box{};
    ::GetWindowRect(button, &box);
    TPMPARAMS around{sizeof around, box}; // stay clear of the button
    const BOOL chosen = ::TrackPopupMenuEx(menu.get(), TPM_RETURNCMD | TPM_NONOTIFY | TPM_VERTICAL,
                                           box.left, box.bottom, owner, &around);
    return chosen > 0 ? std::optional(static_cast<std::size_t>(chosen) - 1) : std::nullopt;
}

} // namespace ReferenceRenderer
