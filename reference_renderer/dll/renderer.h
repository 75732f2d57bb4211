// The renderer behind the entry points: the looks in use, the last product, the threads.
#pragma once

#include "contract/entry_points.h"
#include "reference_renderer/core/look_cache.h"
#include "reference_renderer/core/look_record.h"
#include "reference_renderer/core/table_coding.h"
#include "reference_renderer/core/tool_chain.h"
#include "reference_renderer/dll/icon_memory.h"
#include "reference_renderer/dll/row_workers.h"
#include "support/win32/slim_lock.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace ReferenceRenderer
{

// All operations: any thread, any number at a time; nothing escapes them. What they answer is said
// in contract/entry_points.h and docs/renderer-contract.md.
class Renderer
{
public:
    constexpr Renderer() noexcept = default;
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    void Attach() noexcept { m_icons.Prepare(); }
    // The library goes away and takes no part of this along.
    void Detach() noexcept;

    bool Start() noexcept { return m_workers.Start(); }
    // Gives back threads and memory. What was last produced is gone too; everything works on
    // afterwards, on the calling threads, and Start brings the threads back.
    void Stop() noexcept;

    std::int32_t RenderFrame(const FrameBufferDesc* source, const FrameBufferDesc* destination,
                             std::span<const std::uint8_t> record, std::uint32_t flags) noexcept;
    bool DrawIcon(std::span<const std::uint8_t> record, FrameBufferDesc& icon) noexcept;
    // `output` has room for as many bytes as `a` and may be `a` or `b` itself.
    void Interpolate(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b,
                     double fraction, std::uint8_t* output) noexcept;

    std::int32_t Edit(const FrameBufferDesc* preview, std::span<const std::uint8_t> record,
                      bool linear) noexcept;
    std::int32_t Import(std::string_view path, std::uint32_t options) noexcept;
    bool BeginToolChain() noexcept;
    std::int32_t AddTool(std::uint32_t tool) noexcept;
    void SetToolParameter(std::uint32_t tool, std::uint32_t parameter, double value) noexcept;
    std::uint32_t ProducedSize() const noexcept;
    // False when `buffer` is too small for what was produced, or nothing was.
    bool CopyProduced(std::span<std::uint8_t> buffer) const noexcept;

private:
    std::shared_ptr<const PreparedLook> FindLook(std::span<const std::uint8_t> record) noexcept;
    void Blend(const PreparedLook& a, const PreparedLook& b, double fraction,
               std::span<const std::uint8_t> option, RecordBytes output);
    void Produce(std::vector<std::uint8_t> bytes) noexcept;
    void ProduceChain(); // caller holds m_producedLock

    RowWorkers m_workers;
    IconMemory m_icons;

    SlimLock m_looksLock;
    LookCache m_looks;
    SlimLock m_blendLock;
    std::unique_ptr<TableEncoder> m_encoder;
    std::shared_ptr<PreparedLook> m_blend; // room to blend in

    mutable SlimLock m_producedLock; // guards all below
    std::vector<std::uint8_t> m_produced;
    ToolChain m_chain;
};

} // namespace ReferenceRenderer
