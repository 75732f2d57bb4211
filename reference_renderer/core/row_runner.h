// Who renders the rows of a job, on as many threads as it likes. Pure: no windows.h.
#pragma once

#include "reference_renderer/core/frame_render.h"

namespace ReferenceRenderer
{

class RowRunner
{
public:
    // Returns when every row is rendered. Any thread.
    virtual void Run(const FrameJob& job) noexcept = 0;

protected:
    ~RowRunner() = default; // never deleted through this
};

} // namespace ReferenceRenderer
