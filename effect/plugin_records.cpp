// The record operations of the effect, on records that own their block.
// A failed check ends an operation with the result of its last stream call, which may be a success:
// hosts rely on, for instance, an empty stream loading without an error.
#include "effect/plugin.h"

#include "binding/record_bytes.h"
#include "binding/renderer_binding.h"
#include "platform/runtime/foreign_call.h"
#include "support/exception_info.h"
#include "support/trace.h"

#include <cassert>
#include <cstring>

static_assert(kResultOk == S_OK && kResultOutOfMemory == E_OUTOFMEMORY);

namespace
{

// A record's block, apart from the record for as long as this lives: a stream that fills it may
// come back into the effect and change the record, which must not free what is being written to.
// What the record got meanwhile goes.
class BlockApart
{
public:
    explicit BlockApart(SessionData& record) noexcept : m_record(record)
    {
        m_block.SwapData(m_record);
    }
    ~BlockApart() { m_block.SwapData(m_record); }
    BlockApart(const BlockApart&) = delete;
    BlockApart& operator=(const BlockApart&) = delete;
    std::uint8_t* Data() const noexcept { return m_block.data; }

private:
    SessionData& m_record;
    SessionData m_block;
};

// What a stream has not delivered of a new block must not be whatever the heap held, because the
// block goes into the host's project. A block that is too large for that is left alone: a stream
// may promise gigabytes and give nothing.
void ClearUndelivered(std::uint8_t* block, ULONG size, ULONG delivered) noexcept
{
    if (delivered < size && size <= kMaxStoredBytes)
    {
        std::memset(block + delivered, 0, size - delivered);
    }
}

} // namespace

HRESULT STDMETHODCALLTYPE CPlugin::LoadPreset(LONG index) noexcept
{
    return CopyProps(&m_current, m_presets + index);
}

// The stream's whole length is taken, wherever it stands, and a short read goes unnoticed: the
// host's streams hold one record each and stand at its start.
HRESULT STDMETHODCALLTYPE CPlugin::ReadProps(IStream* stream, SessionData* record) noexcept
{
    assert(MayUse(record));
    if (stream == nullptr)
    {
        return E_POINTER;
    }
    HRESULT result = S_OK;
    RunSteps([&] {
        CheckPtr(record, "ReadProps null record!\n");
        STATSTG statistics{};
        result = CallForeign([&] { return stream->Stat(&statistics, STATFLAG_NONAME); });
        CheckHr(result, "ReadProps Stat failed!\n");
        const ULONG size = statistics.cbSize.LowPart;
        CheckThat(size != 0, -1, "ReadProps empty stream!\n");
        const bool isNew = record->size != size;
        CheckPtr(record->AllocateData(size), "ReadProps can't allocate record!\n");
        const BlockApart block(*record);
        ULONG bytesRead = 0;
        const bool returned = RunSteps([&] {
            result = CallForeign([&] { return stream->Read(block.Data(), size, &bytesRead); });
        });
        if (isNew)
        {
            ClearUndelivered(block.Data(), size, bytesRead);
        }
        if (returned)
        {
            Trace(0, "ReadProps  size = %d \n", bytesRead);
        }
    });
    if (record != nullptr)
    {
        record->GetFlag();
    }
    return result;
}

HRESULT STDMETHODCALLTYPE CPlugin::WriteProps(IStream* stream, SessionData* record) noexcept
{
    assert(MayUse(record));
    HRESULT result = S_OK;
    RunSteps([&] {
        CheckPtr(record, "WriteProps null record!\n");
        record->SetFlag(record->flag);
        if (record->data == nullptr || record->size == 0)
        {
            return;
        }
        if (record->size > kMaxStoredBytes)
        {
            // The host is told of success on purpose: an error here would keep it from saving the
            // rest of its project.
            Trace(0, "WriteProps max size exceeded: %d \n", record->size);
            return;
        }
        if (stream == nullptr)
        {
            result = E_POINTER;
            return;
        }
        const RecordBytes bytes(*record);
        ULONG bytesWritten = 0;
        result =
            CallForeign([&] { return stream->Write(bytes.Data(), bytes.Size(), &bytesWritten); });
        Trace(0, "WriteProps  size = %d \n", bytesWritten);
    });
    return result;
}

// An empty source changes only the option word: a preset without a look of its own must not take
// the user's look away.
HRESULT STDMETHODCALLTYPE CPlugin::CopyProps(SessionData* destination,
                                             const SessionData* source) noexcept
{
    RunSteps([&] {
        CheckPtr(destination, "CopyProps null destination!\n");
        CheckPtr(source, "CopyProps null source!\n");
        if (source->data != nullptr && source->size != 0)
        {
            std::uint8_t* const block = destination->AllocateData(source->size);
            if (block != nullptr)
            {
                std::memmove(block, source->data, source->size); // a record may be copied to itself
                Trace(0, "CopyProps  size = %d \n", source->size);
            }
        }
        destination->flag = source->flag;
    });
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CPlugin::InterpolateProps(SessionData* output, SessionData* from,
                                                    SessionData* to, double fraction) noexcept
{
    assert(MayUse(output) && MayUse(from) && MayUse(to));
    HRESULT result = S_OK;
    RunSteps([&] {
        CheckPtr(output, "InterpolateProps null output!\n");
        CheckPtr(from, "InterpolateProps null from!\n");
        CheckPtr(to, "InterpolateProps null to!\n");
        CheckPtr(from->data, "InterpolateProps empty from!\n");
        CheckPtr(to->data, "InterpolateProps empty to!\n");
        // What is not a number passes both bounds and is the renderer's to judge.
        if (fraction >= 1.0)
        {
            result = CopyProps(output, to);
        }
        else if (fraction <= 0.0 || from->size == 0 || from->size != to->size)
        {
            result = CopyProps(output, from); // also because two sizes cannot be blended
        }
        else
        {
            std::uint8_t* const block = output->AllocateClearedData(from->size);
            if (block != nullptr)
            {
                Trace(0, "InterpolateSessionData  size=%d n=%f\n", from->size, fraction);
                RendererAPI::Binding().InterpolateSessionData(from->data, from->size, to->data,
                                                              to->size, fraction, block);
            }
        }
        // The later keyframe takes the earlier one's option, and the output's stays as it was:
        // projects were made with this and must render as they did.
        to->SetFlag(from->GetFlag());
    });
    return result;
}
