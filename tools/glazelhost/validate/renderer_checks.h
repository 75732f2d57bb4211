// The groups of checks of renderers; the table in renderer_groups.cpp says what each asks.
#pragma once

#include "tools/glazelhost/validate/judged_renderer.h"

namespace GlazelHost
{

// A renderer that was started, as an effect does it.
struct StartedRenderer
{
    explicit StartedRenderer(Check& check) : renderer(check.File()), isUsable(renderer.Start(check))
    {
    }

    JudgedRenderer renderer;
    bool isUsable;
};

inline constexpr std::byte kUntouched{0xA5}; // what nobody should write over

void CheckRendererExports(Check& check);
void CheckRendererStart(Check& check);
void CheckRendererImport(Check& check, const JudgedRenderer& renderer, const Record& look);
void CheckRendererRecord(Check& check, const JudgedRenderer& renderer, const Record& look);
void CheckRendererBlend(Check& check, const JudgedRenderer& renderer, const Record& look);
void CheckRendererFrames(Check& check, const JudgedRenderer& renderer, const Record& look);
void CheckRendererInPlace(Check& check, const JudgedRenderer& renderer, const Record& look);
void CheckRendererDeterminism(Check& check, const JudgedRenderer& renderer, const Record& look);
void CheckRendererConcurrency(Check& check, const JudgedRenderer& renderer, const Record& look);
void CheckRendererThumbnail(Check& check, const JudgedRenderer& renderer, const Record& look);
void CheckRendererFrameErrors(Check& check, const JudgedRenderer& renderer, const Record& look);
void CheckRendererImportErrors(Check& check);
void CheckRendererHostileRecords(Check& check);
void CheckRendererUnload(Check& check);
void CheckRendererHostilePixels(Check& check, const JudgedRenderer& renderer, const Record& look);
void CheckRendererNoDesktop(Check& check);

} // namespace GlazelHost
