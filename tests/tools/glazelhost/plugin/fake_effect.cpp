#include "tests/tools/glazelhost/plugin/fake_effect.h"

#include "contract/host_interfaces.h"
#include "platform/atl/atlcomcli.h"
#include "platform/dxtransform/dxtrans.h"

#include <cstdlib>
#include <vector>

namespace
{

Behaviour FirstBehaviour()
{
    char number[8] = "";
    ::GetEnvironmentVariableA("FAKE_EFFECT", number, sizeof(number));
    return static_cast<Behaviour>(std::atoi(number));
}

Behaviour behaviour = FirstBehaviour();
FakeEffectNotes notes;

// At an address of this DLL.
void Crash()
{
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
}

class CFakeEffect final : public IDXTransform, public IPersistStreamInit
{
public:
    CFakeEffect() { ++notes.liveEffects; }

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override
    {
        *object = nullptr;
        if (riid == IID_IUnknown || riid == IID_IDXTransform || riid == IID_IDXBaseObject)
        {
            *object = static_cast<IDXTransform*>(this);
        }
        else if (riid == IID_IPersistStreamInit)
        {
            *object = static_cast<IPersistStreamInit*>(this);
        }
        else
        {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() noexcept override
    {
        const ULONG left = --m_references;
        if (left == 0)
        {
            delete this;
        }
        return left;
    }

    // IDXBaseObject
    HRESULT STDMETHODCALLTYPE GetGenerationId(ULONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IncrementGenerationId(BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetObjectSize(ULONG*) noexcept override { return E_NOTIMPL; }

    // IDXTransform
    HRESULT STDMETHODCALLTYPE Setup(IUnknown* const* inputs, ULONG inputCount,
                                    IUnknown* const* outputs, ULONG, DWORD) noexcept override
    {
        m_lock.Release();
        m_input.Release();
        m_output.Release();
        if (inputCount == 0)
        {
            return S_OK;
        }
        if (behaviour == Behaviour::FailsInSetup)
        {
            return E_INVALIDARG;
        }
        ++notes.setups;
        inputs[0]->QueryInterface(IID_IDXSurface, reinterpret_cast<void**>(&m_input));
        return outputs[0]->QueryInterface(IID_IDXSurface, reinterpret_cast<void**>(&m_output));
    }
    HRESULT STDMETHODCALLTYPE Execute(const GUID*, const DXBNDS*, const DXVEC*) noexcept override
    {
        NoteFrame();
        switch (behaviour)
        {
        case Behaviour::WritesNothing:
            return S_OK;
        case Behaviour::FailsInExecute:
            return DXTERR_UNINITIALIZED;
        case Behaviour::Crashes:
            Crash();
            break;
        case Behaviour::ShowsABox:
            ::MessageBoxA(nullptr, "out of\nfilm", nullptr, MB_OK);
            break;
        default:
            break;
        }
        return RenderPicture();
    }
    HRESULT STDMETHODCALLTYPE MapBoundsIn2Out(const DXBNDS*, ULONG, ULONG,
                                              DXBNDS*) noexcept override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE MapBoundsOut2In(ULONG, const DXBNDS*, ULONG,
                                              DXBNDS*) noexcept override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetMiscFlags(DWORD) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMiscFlags(DWORD*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetInOutInfo(BOOL, ULONG, DWORD*, GUID*, ULONG*,
                                           IUnknown**) noexcept override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetQuality(float) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetQuality(float*) noexcept override { return E_NOTIMPL; }

    // IPersistStreamInit
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsDirty() noexcept override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE Load(IStream* stream) noexcept override
    {
        std::vector<BYTE> bytes(1U << 18);
        ULONG read = 0;
        const HRESULT result = stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read);
        notes.loadedBytes = read;
        notes.firstByte = bytes[0];
        return FAILED(result) ? result : S_OK;
    }
    HRESULT STDMETHODCALLTYPE Save(IStream*, BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InitNew() noexcept override { return S_OK; }

private:
    ~CFakeEffect() { --notes.liveEffects; }

    void NoteFrame()
    {
        CComPtr<ISfFrameInformation> source;
        m_input->QueryInterface(IID_ISfFrameInformation, reinterpret_cast<void**>(&source));
        FrameInformation information;
        source->GetFrameInformation(&information, sizeof(information));
        notes.pixelAspect = information.pixelAspect;
        notes.framesPerSecond = information.framesPerSecond;
        notes.frameTime = information.frameTime;
    }

    HRESULT RenderPicture()
    {
        CComPtr<IDXARGBReadPtr> input;
        CComPtr<IDXARGBReadWritePtr> output;
        m_input->LockSurface(nullptr, 0, DXLOCKF_READ, IID_IDXARGBReadPtr,
                             reinterpret_cast<void**>(&input), nullptr);
        m_output->LockSurface(nullptr, 0, DXLOCKF_READWRITE, IID_IDXARGBReadWritePtr,
                              reinterpret_cast<void**>(&output), nullptr);
        if (!input || !output)
        {
            return E_FAIL;
        }
        DXNATIVETYPEINFO info{};
        notes.inputFormat = input->GetNativeType(&info);
        notes.inputPitch = info.lPitch;
        DXBNDS bounds{};
        m_input->GetBounds(&bounds);
        const auto width = static_cast<ULONG>(bounds.u.D[DXB_X].Max);
        const auto height = static_cast<ULONG>(bounds.u.D[DXB_Y].Max);
        std::vector<DXSAMPLE> row(width + 1);
        for (ULONG y = 0; y < height; ++y)
        {
            input->MoveToRow(y);
            output->MoveToRow(y);
            input->Unpack(row.data(), width, FALSE);
            for (DXSAMPLE& sample : row)
            {
                sample = DXSAMPLE(static_cast<DWORD>(sample) ^ 0x00FFFFFFU);
            }
            output->PackAndMove(row.data(),
                                width + (behaviour == Behaviour::WritesOutside ? 1U : 0U));
        }
        if (behaviour == Behaviour::OverrunsMemory)
        {
            output->MoveToXY(width - 1, height - 1);
            output->GetNativeType(&info);
            info.pCurrentData[4] = 1;
        }
        if (behaviour == Behaviour::KeepsItsLock)
        {
            m_lock = output;
        }
        return S_OK;
    }

    ULONG m_references = 0;
    CComPtr<IDXSurface> m_input;
    CComPtr<IDXSurface> m_output;
    CComPtr<IDXARGBReadWritePtr> m_lock;
};

// One object for the whole process: its references are not counted.
class CFakeFactory final : public IClassFactory
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override
    {
        const bool answers = riid == IID_IUnknown || riid == IID_IClassFactory;
        *object = answers ? static_cast<IClassFactory*>(this) : nullptr;
        return answers ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return 2; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID riid,
                                             void** object) noexcept override
    {
        *object = nullptr;
        if (behaviour == Behaviour::ShowsABoxInCreation)
        {
            ::MessageBoxW(nullptr, L"no hardware", nullptr, MB_OK);
        }
        if (behaviour == Behaviour::ShowsABoxInCreation || behaviour == Behaviour::FailsInCreation)
        {
            return E_INVALIDARG;
        }
        const CComPtr<IDXTransform> effect(new CFakeEffect);
        return effect->QueryInterface(riid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) noexcept override { return S_OK; }
};

CFakeFactory factory;

} // namespace

extern "C" HRESULT STDAPICALLTYPE FakeGetClassObject(REFCLSID, REFIID riid, void** object)
{
    return factory.QueryInterface(riid, object);
}

extern "C" HRESULT STDAPICALLTYPE FakeCanUnloadNow()
{
    return notes.liveEffects == 0 ? S_OK : S_FALSE;
}

extern "C" void SetBehaviour(std::int32_t next)
{
    behaviour = static_cast<Behaviour>(next);
}

extern "C" FakeEffectNotes* GetNotes()
{
    return &notes;
}
