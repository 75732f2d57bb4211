// The editor of the built renderer library on a small picture.
#pragma once

#include "contract/frame_buffer_desc.h"
#include "reference_renderer/core/look_record.h"
#include "tests/reference_renderer/dll/loaded_renderer.h"
#include "tests/reference_renderer/editor/open_editor.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ReferenceRenderer
{

using Bytes = std::vector<std::uint8_t>;

// Puts what the editor keeps in the registry aside for as long as this lives: a test begins
// without.
class EmptyMemory
{
public:
    EmptyMemory();
    ~EmptyMemory();
    EmptyMemory(const EmptyMemory&) = delete;
    EmptyMemory& operator=(const EmptyMemory&) = delete;
};

class EditorTest : public testing::Test
{
protected:
    EditorTest();

    // Opens DoModalUI2 on m_preview.
    OpenEditor Open(const Bytes& record = {}, std::uint32_t linear = 0);
    // What the editor produced, decoded.
    std::unique_ptr<StoredLook> Produced();
    // A pixel on the display, where the picture shows it; the shares count from its top left.
    static COLORREF PixelShown(const ShownEditor& editor, double x, double y);
    // A file of the tests' own, deleted with the test; its path.
    std::wstring WriteFile(const std::string& name, const std::string& text);
    ~EditorTest() override;

    LoadedRenderer m_library;
    Bytes m_pixels; // 64 x 36, middle grey
    FrameBufferDesc m_preview;

private:
    EmptyMemory m_memory;
    std::vector<std::wstring> m_files;
};

} // namespace ReferenceRenderer
