#include "platform/dxtransform/band_batch.h"

#include <algorithm>

namespace
{

// Rows `first` to `last` (excluded), counted from the top of `bounds`.
CDXDBnds RowsOf(const CDXDBnds& bounds, LONG first, LONG last) noexcept
{
    CDXDBnds rows = bounds;
    rows[DXB_Y] = {bounds.Top() + first, bounds.Top() + last};
    return rows;
}

} // namespace

CDXTBandBatch::CDXTBandBatch(CDXBaseNTo1& transform, const CDXTWorkInfoNTo1& work, ULONG bands)
    : m_transform(transform), m_bands(bands)
{
    const LONG rows = work.DoBnds.Height();
    const LONG bandRows = rows / static_cast<LONG>(bands);
    LONG first = 0;
    for (Band& band : m_bands)
    {
        band.batch = this;
        band.work = work;
        const LONG last = &band == &m_bands.back() ? rows : first + bandRows;
        band.work.DoBnds = RowsOf(work.DoBnds, first, last);
        band.work.OutputBnds = RowsOf(work.OutputBnds, first, last);
        first = last;
    }
}

HRESULT CDXTBandBatch::RunInOrder() noexcept
{
    BOOL continueProcessing = TRUE;
    for (Band& band : m_bands)
    {
        band.work.hr = m_transform.RunBand(band.work, &continueProcessing);
    }
    return FirstFailure();
}

HRESULT CDXTBandBatch::RunByTaskManager(IDXTaskManager* taskManager, const GUID* requestId)
{
    const HRESULT made = MakeEvents();
    if (FAILED(made))
    {
        return made;
    }
    std::vector<DXTMTASKINFO> tasks;
    std::vector<HANDLE> events;
    std::vector<DWORD> ids(m_bands.size());
    tasks.reserve(m_bands.size());
    events.reserve(m_bands.size());
    for (Band& band : m_bands)
    {
        tasks.push_back({&RunTask, &band, nullptr, 0, requestId});
        events.push_back(band.finished.get());
    }
    const HRESULT scheduled = ForeignResult([&] {
        return taskManager->ScheduleTasks(tasks.data(), events.data(), ids.data(),
                                          static_cast<ULONG>(m_bands.size()), INFINITE);
    });
    WithdrawAndWait(scheduled);
    return FirstFailure();
}

HRESULT CDXTBandBatch::MakeEvents() noexcept
{
    for (Band& band : m_bands)
    {
        band.finished.reset(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
        band.ended.reset(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
        if (band.finished == nullptr || band.ended == nullptr)
        {
            return HRESULT_FROM_WIN32(::GetLastError());
        }
    }
    return S_OK;
}

void __stdcall CDXTBandBatch::RunTask(void* pTaskData, BOOL* pbContinueProcessing)
{
    Band& band = *static_cast<Band*>(pTaskData);
    State expected = State::Waiting;
    if (!band.state.compare_exchange_strong(expected, State::Running))
    {
        return;
    }
    band.work.hr = band.batch->m_transform.RunBand(band.work, pbContinueProcessing);
    void* const ended = band.ended.get();
    band.state = State::Done;
    ::SetEvent(ended); // the batch may be gone when this returns
}

// After ScheduleTasks, which is to wait for all tasks but fails or is cut short when they are
// cancelled: what has not begun will not, and what has is waited for, since it uses this memory.
void CDXTBandBatch::WithdrawAndWait(HRESULT scheduled) noexcept
{
    for (Band& band : m_bands)
    {
        State expected = State::Waiting;
        if (band.state.compare_exchange_strong(expected, State::Done))
        {
            band.work.hr = FAILED(scheduled) ? scheduled : E_ABORT;
            ::SetEvent(band.ended.get());
        }
    }
    for (const Band& band : m_bands)
    {
        ::WaitForSingleObject(band.ended.get(), INFINITE);
    }
}

HRESULT CDXTBandBatch::FirstFailure() const noexcept
{
    const auto failed = std::find_if(m_bands.begin(), m_bands.end(),
                                     [](const Band& band) { return FAILED(band.work.hr); });
    return failed != m_bands.end() ? failed->work.hr : S_OK;
}
