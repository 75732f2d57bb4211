// Counts the frame of a preview before and after a look, for the scopes: its own codes, as the
// renderer makes them, none averaged, and all of it, whichever part is shown. Counting is quick
// where each n-th pixel of each n-th row will do for the moment, about kMostCoarsePixels of them.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/scope_reader_test.cpp.
#pragma once

#include "reference_renderer/editor/preview_picture.h"
#include "reference_renderer/editor/scope_picture.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace ReferenceRenderer
{

// What a scope is to show, and in which room.
struct ScopeView
{
    ScopeKind kind = ScopeKind::Parade;
    Geometry::Extent size;
    int dpi = 96;

    friend bool operator==(const ScopeView&, const ScopeView&) = default;
};

// One thread at a time.
class ScopeReader
{
public:
    // `picture`, borrowed, is not empty when it is counted.
    explicit ScopeReader(const PreviewPicture& picture) noexcept : m_picture(picture) {}

    // 1 where Detail::Coarse counts all that there is.
    std::size_t Step() const noexcept;
    // Counts every pixel for Detail::Fine. False when `stop` became true meanwhile: there is
    // nothing to draw then. Throws std::bad_alloc.
    bool Count(const ScopeView& view, const PreparedLook& look, Detail detail,
               const std::atomic<bool>& stop);
    // What was counted last: fills `pixels` as DrawScope does. Throws std::bad_alloc.
    void Draw(std::span<std::uint32_t> pixels) const;
    const ScopeBins& After() const noexcept { return *m_after; }

private:
    ScopeView m_view;
    const PreviewPicture& m_picture;
    std::vector<std::byte> m_sampled; // what ReadRow gives of the coarse rows, once it was read
    std::vector<std::byte> m_row;
    std::vector<std::byte> m_codes;
    const std::optional<ScopeBins>* m_before = nullptr; // one of those below
    std::optional<ScopeBins> m_befores[2];              // by Detail, whole ones alone
    std::optional<ScopeBins> m_after;
};

} // namespace ReferenceRenderer
