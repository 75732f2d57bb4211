// The window classes of the look editor.
#pragma once

namespace ReferenceRenderer
{

// Registers them unless they are. False when the system refuses one; the next call tries again.
// Any thread.
bool RegisterEditorClasses() noexcept;

// When the library goes away: the system does not do it then.
void UnregisterEditorClasses() noexcept;

} // namespace ReferenceRenderer
