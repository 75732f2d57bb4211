#include "reference_renderer/dll/renderer.h"

#include "reference_renderer/core/import_report.h"
#include "reference_renderer/core/look_blend.h"
#include "reference_renderer/core/look_icon.h"
#include "reference_renderer/core/look_import.h"
#include "reference_renderer/dll/debugger_output.h"
#include "reference_renderer/editor/look_editor.h"
#include "reference_renderer/editor/windows_files.h"
#include "support/win32/utf8.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <string>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

using namespace RendererAPI;

std::vector<std::uint8_t> BytesOf(const std::string& text)
{
    return {text.begin(), text.end()};
}

ImportedLook ImportFile(std::string_view path, std::uint32_t options)
{
    if (!path.empty() && Wide(path, MB_ERR_INVALID_CHARS).empty())
    {
        throw ImportError{kImportBadArgument, "the path is not valid UTF-8; pass it as UTF-8"};
    }
    return ImportLook(path, options, WindowsFiles());
}

} // namespace

void Renderer::Detach() noexcept
{
    Stop();
    m_icons.Release();
}

void Renderer::Stop() noexcept
{
    m_workers.Stop();
    {
        const std::lock_guard guard(m_looksLock);
        m_looks = LookCache();
    }
    {
        const std::lock_guard guard(m_blendLock);
        m_encoder = nullptr;
        m_blend = nullptr;
    }
    Produce({});
}

std::shared_ptr<const PreparedLook>
Renderer::FindLook(std::span<const std::uint8_t> record) noexcept
{
    try
    {
        const std::lock_guard guard(m_looksLock);
        LookCache::Answer answer = m_looks.Find(record);
        if (answer.look == nullptr)
        {
            TellUnusableRecord(answer.state);
        }
        return std::move(answer.look);
    }
    catch (const std::bad_alloc&)
    {
        TellOutOfMemory();
        return nullptr;
    }
}

std::int32_t Renderer::RenderFrame(const FrameBufferDesc* source,
                                   const FrameBufferDesc* destination,
                                   std::span<const std::uint8_t> record,
                                   std::uint32_t flags) noexcept
{
    FrameJob job;
    const std::shared_ptr<const PreparedLook> look = FindLook(record);
    const std::int32_t result = DescribeFrame(source, destination, look.get(), flags, job);
    if (result != kFrameRendered)
    {
        return result;
    }
    m_workers.Run(job);
    return look != nullptr ? kFrameRendered : kFrameUnchanged;
}

bool Renderer::DrawIcon(std::span<const std::uint8_t> record, FrameBufferDesc& icon) noexcept
{
    const std::shared_ptr<const PreparedLook> look = FindLook(record);
    std::uint32_t* const pixels = look != nullptr ? m_icons.OfThisThread() : nullptr;
    const bool drawn = pixels != nullptr;
    if (drawn)
    {
        DrawLookIcon(*look, std::span<std::uint32_t, kIconPixels>(pixels, kIconPixels));
    }
    icon.pixels = pixels;
    icon.width = drawn ? kIconWidth : 0;
    icon.height = drawn ? kIconHeight : 0;
    icon.rowPitch = icon.width;
    return drawn;
}

void Renderer::Interpolate(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b,
                           double fraction, std::uint8_t* output) noexcept
{
    const double t = BlendFraction(fraction);
    const std::shared_ptr<const PreparedLook> lookA = FindLook(a);
    const std::shared_ptr<const PreparedLook> lookB = FindLook(b);
    if (lookA == nullptr || lookB == nullptr || t == 0.0)
    {
        std::memmove(output, a.data(), a.size());
        return;
    }
    // A's: the output may lie over either record.
    std::array<std::uint8_t, kOptionChunkEnd - kOptionChunk> option{};
    std::memcpy(option.data(), a.data() + kOptionChunk, option.size());
    try
    {
        if (t == 1.0)
        {
            std::memmove(output, b.data(), kRecordSize);
            std::memcpy(output + kOptionChunk, option.data(), option.size());
        }
        else
        {
            Blend(*lookA, *lookB, t, option, RecordBytes(output, kRecordSize));
        }
    }
    catch (const std::bad_alloc&)
    {
        TellOutOfMemory();
        std::memmove(output, a.data(), a.size());
    }
}

// The blend goes to the looks that are ready: the frame that it was made for comes next.
void Renderer::Blend(const PreparedLook& a, const PreparedLook& b, double fraction,
                     std::span<const std::uint8_t> option, RecordBytes output)
{
    const std::lock_guard guard(m_blendLock);
    if (m_encoder == nullptr)
    {
        m_encoder = std::make_unique<TableEncoder>(NodeCount(kStoredCubeSize));
    }
    if (m_blend == nullptr)
    {
        m_blend = std::make_shared<PreparedLook>();
    }
    m_blend->ReadBlend(a, b, fraction, *m_encoder);
    WriteRecord(m_blend->Stored(), output);
    std::copy(option.begin(), option.end(), output.begin() + kOptionChunk);
    const std::lock_guard looksGuard(m_looksLock);
    m_blend = m_looks.Keep(output, std::move(m_blend));
}

std::int32_t Renderer::Edit(const FrameBufferDesc* preview, std::span<const std::uint8_t> record,
                            bool linear) noexcept
{
    std::vector<std::uint8_t> accepted;
    const std::int32_t result = RunLookEditor(preview, record, linear, m_workers, accepted);
    if (result == kEditorAccepted)
    {
        Produce(std::move(accepted));
    }
    return result;
}

std::int32_t Renderer::Import(std::string_view path, std::uint32_t options) noexcept
{
    const bool describe = (options & kImportDescribe) != 0;
    try
    {
        Produce({}); // a failure must not leave an older look to be taken for this one
        ImportedLook imported;
        try
        {
            imported = ImportFile(path, options);
        }
        catch (const ImportError& error)
        {
            TellDebugger(error.message);
            Produce(describe ? BytesOf(DescribeAsJson(error.message))
                             : std::vector<std::uint8_t>());
            return error.code;
        }
        for (const std::string& warning : imported.warnings)
        {
            TellDebugger(std::string(path) + ": " + warning);
        }
        Produce(describe ? BytesOf(DescribeAsJson(imported)) : std::move(imported.record));
        return kImportDone;
    }
    catch (const std::bad_alloc&)
    {
        TellDebugger("no memory to import the look; close other programs and try again");
        return kImportOutOfMemory;
    }
}

bool Renderer::BeginToolChain() noexcept
{
    const std::lock_guard guard(m_producedLock);
    m_chain.Begin();
    try
    {
        ProduceChain();
        return true;
    }
    catch (const std::bad_alloc&)
    {
        m_produced.clear();
        TellOutOfMemory();
        return false;
    }
}

std::int32_t Renderer::AddTool(std::uint32_t tool) noexcept
{
    const std::lock_guard guard(m_producedLock);
    return m_chain.Add(tool);
}

void Renderer::SetToolParameter(std::uint32_t tool, std::uint32_t parameter, double value) noexcept
{
    const std::lock_guard guard(m_producedLock);
    try
    {
        if (m_chain.Set(tool, parameter, value))
        {
            ProduceChain();
        }
    }
    catch (const std::bad_alloc&)
    {
        m_produced.clear(); // rather nothing than the look without this change
        TellOutOfMemory();
    }
}

std::uint32_t Renderer::ProducedSize() const noexcept
{
    const std::shared_lock guard(m_producedLock);
    return static_cast<std::uint32_t>(m_produced.size());
}

bool Renderer::CopyProduced(std::span<std::uint8_t> buffer) const noexcept
{
    const std::shared_lock guard(m_producedLock);
    if (m_produced.empty() || buffer.size() < m_produced.size())
    {
        return false;
    }
    std::memcpy(buffer.data(), m_produced.data(), m_produced.size());
    return true;
}

void Renderer::Produce(std::vector<std::uint8_t> bytes) noexcept
{
    const std::lock_guard guard(m_producedLock);
    m_produced = std::move(bytes);
}

void Renderer::ProduceChain()
{
    m_producedLock.AssertHeld();
    const auto stored = std::make_unique<StoredLook>();
    StoreLook(m_chain.Result(), *stored);
    m_produced.resize(kRecordSize);
    WriteRecord(*stored, RecordBytes(m_produced.data(), kRecordSize));
}

} // namespace ReferenceRenderer
