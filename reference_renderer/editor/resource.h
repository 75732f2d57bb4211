// The windows of the look editor as other programs, such as its tests, find them.
#pragma once

namespace ReferenceRenderer
{

#define EDITOR_CLASS L"GlazelLookEditor"
#define EDITOR_SLIDER_CLASS L"GlazelLookSlider"
#define EDITOR_PAD_CLASS L"GlazelColourPad"
#define EDITOR_PICTURE_CLASS L"GlazelLookPicture"
#define EDITOR_SCOPE_CLASS L"GlazelLookScope"

// Children of the editor's window. The first three are counted on by the index of the Control, the
// pads by that in kPads, and the views by the View.
#define IDC_SLIDER 100
#define IDC_NUMBER 200
#define IDC_RESET 300
#define IDC_PAD 350
#define IDC_VIEW 390
#define IDC_PICTURE 400
#define IDC_SHOW_GRADED 401
#define IDC_SHOW_SPLIT 402
#define IDC_SHOW_ORIGINAL 403
#define IDC_SCOPE 404
#define IDC_PIXEL 405
#define IDC_IMPORT 410
#define IDC_REMOVE_TABLES 411
#define IDC_RESET_ALL 412
#define IDC_RECENT 413
#define IDC_EXPORT 414
#define IDC_STATUS 420
#define IDC_STORE_STATE 430
#define IDC_SWAP_STATE 431

#define IDC_SCOPE_BUTTON 450 // counted on by ScopeKind

// What keys do that no window stands for; WM_COMMANDs too.
#define IDC_UNDO 440
#define IDC_REDO 441
#define IDC_FIT 442
#define IDC_OWN_SIZE 443
#define IDC_PICTURE_ALONE 444
#define IDC_COPY_LOOK 445
#define IDC_PASTE_LOOK 446

// What the WM_COMMAND of a slider or a pad says.
#define SLIDER_MOVED 1
#define SLIDER_RESET 2
#define SLIDER_BEGAN 3     // a drag; before its first SLIDER_MOVED
#define SLIDER_CANCELLED 4 // the drag that was begun last: everything as before it
#define SLIDER_ENDED 5     // the drag that was begun last

// What the picture's WM_COMMAND says: another part of it is shown, or another size; the pointer is
// over another place of it, or has left.
#define PICTURE_VIEWED 1
#define PICTURE_POINTED 2

// Posted to the scope when it can show what was asked last, or something nearly as new.
#define SCOPE_ANSWERED (WM_APP + 1)

} // namespace ReferenceRenderer
