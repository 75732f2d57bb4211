// How many GDI objects and windows this process has.
#pragma once

namespace ReferenceRenderer
{

struct GuiObjects
{
    unsigned gdi = 0;
    unsigned user = 0;

    friend bool operator==(const GuiObjects&, const GuiObjects&) = default;
};

// The system's own counts where it keeps them. Where it does not (Wine answers 0): the used entries
// of the process's table of GDI objects, and its windows.
GuiObjects CountGuiObjects();

} // namespace ReferenceRenderer
